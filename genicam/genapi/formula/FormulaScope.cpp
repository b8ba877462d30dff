#include "FormulaScope.h"

#include "FormulaCompiler.h"

namespace GenApi {
namespace formula {
namespace detail {
namespace {

struct Suffix {
  std::string_view text;
  VariableProperty property;
};

constexpr Suffix kSuffixes[] = {
    {".Value", VariableProperty::Value},
    {".Min", VariableProperty::Min},
    {".Max", VariableProperty::Max},
    {".Inc", VariableProperty::Inc},
    {".AccessMode", VariableProperty::AccessMode},
    {".Visibility", VariableProperty::Visibility},
    {".CachingMode", VariableProperty::CachingMode},
};

constexpr std::string_view kEntryInfix = ".Entry.";

bool EndsWith(std::string_view text, std::string_view suffix) {
  return text.size() > suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

const DeclarationViews& NoDeclarations() {
  static const DeclarationViews empty;
  return empty;
}

}  // namespace

struct Scope::Entry {
  bool compiling = true;
  Code code;
};

Scope::Scope(const DeclarationViews& declarations, Arithmetic arithmetic)
    : declarations_(declarations), arithmetic_(arithmetic) {}

Scope::~Scope() = default;

bool Scope::FindVariableIndex(std::string_view name, std::size_t& index) const {
  const std::string_view* variables = declarations_.variables;
  for (std::size_t i = 0; i < declarations_.variableCount; ++i) {
    if (variables[i] == name) {
      index = i;
      return true;
    }
  }
  return false;
}

bool Scope::FindVariable(std::string_view identifier, VariableRef& ref) const {
  std::size_t index = 0;
  if (FindVariableIndex(identifier, index)) {
    ref = VariableRef{index, VariableProperty::Value, {}};
    return true;
  }
  for (const Suffix& suffix : kSuffixes) {
    if (EndsWith(identifier, suffix.text) &&
        FindVariableIndex(identifier.substr(0, identifier.size() - suffix.text.size()), index)) {
      ref = VariableRef{index, suffix.property, {}};
      return true;
    }
  }
  for (auto at = identifier.find(kEntryInfix); at != std::string_view::npos;
       at = identifier.find(kEntryInfix, at + 1)) {
    const std::string_view entry = identifier.substr(at + kEntryInfix.size());
    if (!entry.empty() && FindVariableIndex(identifier.substr(0, at), index)) {
      ref = VariableRef{index, VariableProperty::EntryValue, std::string(entry)};
      return true;
    }
  }
  return false;
}

const Code* Scope::FindConstant(std::string_view name) { return Resolve(constants_, name, true); }

const Code* Scope::FindExpression(std::string_view name) {
  return Resolve(expressions_, name, false);
}

const Code* Scope::Resolve(std::map<std::string, Entry, std::less<>>& cache, std::string_view name,
                           bool isConstant) {
  const char* kind = isConstant ? "constant" : "expression";
  auto cached = cache.find(name);
  if (cached != cache.end()) {
    if (cached->second.compiling) {
      throw FormulaError(std::string(kind) + " '" + std::string(name) + "' refers to itself");
    }
    return &cached->second.code;
  }
  const NamedText* list = isConstant ? declarations_.constants : declarations_.expressions;
  const std::size_t count =
      isConstant ? declarations_.constantCount : declarations_.expressionCount;
  const std::string_view* text = nullptr;
  for (std::size_t i = 0; i < count; ++i) {
    if (list[i].name == name) {
      text = &list[i].text;
      break;
    }
  }
  if (text == nullptr) return nullptr;
  if (nesting_ >= kMaxExpressionNesting) {
    throw FormulaError("expressions nested deeper than " + std::to_string(kMaxExpressionNesting));
  }
  auto& entry = cache.emplace(std::string(name), Entry{}).first->second;
  ++nesting_;
  try {
    if (isConstant) {
      Scope bare(NoDeclarations(), arithmetic_);  // a constant is a plain number
      entry.code = CompileCode(*text, bare, arithmetic_);
    } else {
      entry.code = CompileCode(*text, *this, arithmetic_);
    }
  } catch (const FormulaError& error) {
    --nesting_;
    cache.erase(std::string(name));
    throw FormulaError("in " + std::string(kind) + " '" + std::string(name) + "': " + error.what());
  }
  --nesting_;
  entry.compiling = false;
  return &entry.code;
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
