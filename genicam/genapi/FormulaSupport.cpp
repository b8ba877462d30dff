// Formula declarations, compilation and evaluation over nodes.
#include "FormulaSupport.h"

#include <cstring>
#include <deque>
#include <string>

#include "EnumerationNodes.h"
#include "NodeMap.h"
#include "formula/FormulaCompiler.h"

namespace GenApi {
namespace impl {

bool FormulaVariables::Parse(const XmlElem& e, NodeImpl* owner, NameTable& names,
                             Arena& arena) {
  if (e.id != Elem::pVariable && e.id != Elem::Constant && e.id != Elem::Expression)
    return false;
  const char* name = e.Attr("Name");
  if (!name || *name == '\0')
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' lacks its Name attribute", owner->Name(),
                             e.name);
  if (e.id == Elem::pVariable) {
    names_.push_back(arena, name);
    Ref ref;
    ref.SetName(e.Target(names));
    vars_.push_back(arena, ref);
  } else if (e.id == Elem::Constant) {
    constants_.push_back(arena, Named{name, e.text});
  } else {
    expressions_.push_back(arena, Named{name, e.text});
  }
  return true;
}

void FormulaVariables::CollectLinks(NodeImpl* owner, LinkSink& sink) {
  for (Ref& r : vars_) sink.Link(owner, r, LinkClass::Reading, Elem::pVariable, kPolyInteger);
}

formula::DeclarationViews FormulaVariables::Views(const char* extra, Scratch& scratch) const {
  scratch.variables.assign(names_.begin(), names_.end());
  if (extra) scratch.variables.emplace_back(extra);
  scratch.constants.clear();
  for (const Named& c : constants_) scratch.constants.push_back({c.name, c.text});
  scratch.expressions.clear();
  for (const Named& x : expressions_) scratch.expressions.push_back({x.name, x.text});
  return formula::DeclarationViews{scratch.variables.data(), scratch.variables.size(),
                                   scratch.constants.data(), scratch.constants.size(),
                                   scratch.expressions.data(), scratch.expressions.size()};
}

namespace {

uint64_t Mix(uint64_t h, const char* text) {
  return (h ^ HashText(text)) * 0x9E3779B97F4A7C15ull;
}

bool SameText(const char* a, const char* b) { return a == b || std::strcmp(a, b) == 0; }

}  // namespace

uint64_t FormulaVariables::Hash() const {
  uint64_t h = names_.size() | (constants_.size() << 16) | (expressions_.size() << 32);
  for (const char* n : names_) h = Mix(h, n);
  for (const Named& c : constants_) h = Mix(Mix(h, c.name), c.text);
  for (const Named& x : expressions_) h = Mix(Mix(h, x.name), x.text);
  return h;
}

bool FormulaVariables::SameAs(const FormulaVariables& other) const {
  if (names_.size() != other.names_.size() || constants_.size() != other.constants_.size() ||
      expressions_.size() != other.expressions_.size())
    return false;
  for (size_t i = 0; i < names_.size(); ++i)
    if (!SameText(names_[i], other.names_[i])) return false;
  const auto same = [](const Named& a, const Named& b) {
    return SameText(a.name, b.name) && SameText(a.text, b.text);
  };
  for (size_t i = 0; i < constants_.size(); ++i)
    if (!same(constants_[i], other.constants_[i])) return false;
  for (size_t i = 0; i < expressions_.size(); ++i)
    if (!same(expressions_[i], other.expressions_[i])) return false;
  return true;
}

EAccessMode FormulaVariables::Mode() const {
  EAccessMode mode = RO;
  for (const Ref& r : vars_) {
    const EAccessMode m = r.node()->AccessModeLocked();
    if (m == NI) return NI;
    if (!IsReadable(m)) mode = NA;
  }
  return mode;
}

namespace {

// Reads the variables of a formula from the nodes behind them.
class NodeVariableSource : public formula::IVariableSource {
 public:
  NodeVariableSource(const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache,
                     double extra)
      : owner_(owner), vars_(vars), ignoreCache_(ignoreCache), extra_(extra) {}

  int64_t GetInteger(const formula::VariableRef& ref) override {
    NodeImpl* n = vars_.Node(ref.index);
    if (!n) return RoundExtra();
    CallGuard guard(owner_);
    switch (ref.property) {
      case formula::VariableProperty::Value: return n->GetInt(false, ignoreCache_);
      case formula::VariableProperty::Min: return n->IntMin();
      case formula::VariableProperty::Max: return n->IntMax();
      case formula::VariableProperty::Inc: return n->IntInc();
      case formula::VariableProperty::EntryValue: return EntryValue(n, ref.entryName);
      case formula::VariableProperty::AccessMode: return n->AccessModeLocked();
      case formula::VariableProperty::Visibility: return n->GetVisibility();
      case formula::VariableProperty::CachingMode: return n->GetCachingMode();
    }
    return 0;
  }

  double GetFloat(const formula::VariableRef& ref) override {
    NodeImpl* n = vars_.Node(ref.index);
    if (!n) return extra_;
    CallGuard guard(owner_);
    switch (ref.property) {
      case formula::VariableProperty::Value: return n->GetFloat(false, ignoreCache_);
      case formula::VariableProperty::Min: return n->FloatMin();
      case formula::VariableProperty::Max: return n->FloatMax();
      default: return static_cast<double>(GetInteger(ref));
    }
  }

 private:
  int64_t RoundExtra() const {
    if (!(extra_ > -9.2e18 && extra_ < 9.2e18)) return extra_ < 0 ? INT64_MIN : INT64_MAX;
    return static_cast<int64_t>(extra_ < 0 ? extra_ - 0.5 : extra_ + 0.5);
  }

  int64_t EntryValue(NodeImpl* n, const std::string& entry) const {
    auto* e = dynamic_cast<EnumerationNode*>(n);
    if (!e)
      throw RUNTIME_EXCEPTION_NODE(owner_->Name(), "GetValue")(
          "Node '%s' : variable '%s' is no enumeration", owner_->Name(),
          n->Name());
    EnumEntryNode* found = e->EntryByXmlName(entry);
    if (!found)
      throw RUNTIME_EXCEPTION_NODE(owner_->Name(), "GetValue")(
          "Node '%s' : enumeration '%s' has no entry '%s'", owner_->Name(),
          n->Name(), entry.c_str());
    return found->GetValue();
  }

  const NodeImpl* owner_;
  const FormulaVariables& vars_;
  bool ignoreCache_;
  double extra_;
};

}  // namespace

#ifdef VQ_HAVE_FORMULA

// Open addressing over formulas by text, arithmetic and declarations.
class FormulaTable {
 public:
  struct Entry {
    uint64_t hash = 0;
    bool integer = false;
    const char* text = nullptr;
    const FormulaVariables* vars = nullptr;
    const char* extra = nullptr;
    std::optional<formula::Formula> formula;
    const char* error = nullptr;
    std::vector<uint32_t> literalConstants;  // shapes only: see Formula::WithLiterals
  };

  // The entry for a formula, and whether it was made just now (still to fill);
  // varsHash is vars.Hash(). A new entry keeps text as given; it must outlive
  // the table.
  Entry& Find(bool integer, const char* text, const FormulaVariables& vars, uint64_t varsHash,
              const char* extra, bool& created) {
    if (2 * (entries_.size() + 1) > slots_.size()) Grow();
    const uint64_t hash = Mix(Mix(varsHash + integer, text), extra ? extra : "\1");
    const size_t mask = slots_.size() - 1;
    size_t i = hash & mask;
    for (; slots_[i] != 0; i = (i + 1) & mask) {
      Entry& e = entries_[slots_[i] - 1];
      if (e.hash == hash && e.integer == integer && SameText(e.text, text) &&
          (e.extra == extra || (e.extra && extra && SameText(e.extra, extra))) &&
          e.vars->SameAs(vars)) {
        created = false;
        return e;
      }
    }
    Entry& e = entries_.emplace_back();
    e.hash = hash;
    e.integer = integer;
    e.text = text;
    e.vars = &vars;
    e.extra = extra;
    slots_[i] = static_cast<uint32_t>(entries_.size());
    created = true;
    return e;
  }

 private:
  void Grow() {
    slots_.assign(slots_.empty() ? 1024 : 2 * slots_.size(), 0);
    const size_t mask = slots_.size() - 1;
    for (uint32_t n = 0; n < entries_.size(); ++n) {
      size_t i = entries_[n].hash & mask;
      while (slots_[i] != 0) i = (i + 1) & mask;
      slots_[i] = n + 1;
    }
  }

  std::deque<Entry> entries_;  // stable: callers hold entries across later finds
  std::vector<uint32_t> slots_;  // entry index + 1; 0 marks a free slot
};

// The formulas compiled while a description loads, by text; and by shape, the
// text with its numeric literals masked. Descriptions repeat one formula with
// other addresses or limits (a selector table per register, say): a text of
// a shape met before takes the program compiled for it with its own literals
// in the constants, and is not compiled again.
class FormulaCache {
 public:
  using Entry = FormulaTable::Entry;

  Entry& Find(bool integer, const char* text, const FormulaVariables& vars, const char* extra,
              bool& created) {
    shape_ = nullptr;
    varsHash_ = vars.Hash();
    return texts_.Find(integer, text, vars, varsHash_, extra, created);
  }

  // After Find missed the text: the program of a text of a shape compiled
  // before, if any. Otherwise the shape is remembered, for Learn to give it
  // the program about to be compiled.
  std::optional<formula::Formula> FromShape(bool integer, const char* text,
                                            const FormulaVariables& vars, const char* extra) {
    shape_ = nullptr;
    if (!formula::detail::ShapeOf(text, shapeText_, literals_)) return std::nullopt;
    bool created = false;
    Entry& e = shapes_.Find(integer, shapeText_.c_str(), vars, varsHash_, extra, created);
    if (created) {
      e.text = shapeTexts_.emplace_back(shapeText_).c_str();
      shape_ = &e;
      return std::nullopt;
    }
    if (!e.formula || e.literalConstants.size() != literals_.size()) return std::nullopt;
    return e.formula->WithLiterals(e.literalConstants.data(), literals_.data(), literals_.size());
  }

  // Makes the program just compiled (with buffers) the one of its shape,
  // when the compiler met the literals where the shape has them.
  void Learn(const formula::Formula& compiled) {
    if (!shape_) return;
    const auto& uses = buffers.literals;
    if (uses.size() != literals_.size()) return;
    for (size_t i = 0; i < uses.size(); ++i)
      if (uses[i].position != literals_[i].position) return;
    shape_->literalConstants.resize(uses.size());
    for (size_t i = 0; i < uses.size(); ++i) shape_->literalConstants[i] = uses[i].constant;
    shape_->formula = compiled;
    shape_ = nullptr;
  }

  // Reused for every compilation.
  FormulaVariables::Scratch declarations;
  formula::detail::CompileScratch buffers;

 private:
  FormulaTable texts_;
  FormulaTable shapes_;
  std::deque<std::string> shapeTexts_;
  uint64_t varsHash_ = 0;   // of the declarations Find was last given
  Entry* shape_ = nullptr;  // the shape FromShape found new, until Learn
  std::string shapeText_;
  std::vector<formula::detail::Literal> literals_;
};

FormulaCacheScope::FormulaCacheScope(NodeMap& map) : map_(map), cache_(new FormulaCache) {
  map_.SetFormulaCache(cache_.get());
}

FormulaCacheScope::~FormulaCacheScope() { map_.SetFormulaCache(nullptr); }

void FormulaProgram::Compile(const NodeImpl* owner, const char* element, const char* text,
                             const FormulaVariables& vars, const char* extra, bool integer) {
  element_ = element;
  if (!text) text = "";
  FormulaCache* cache = owner->Map()->GetFormulaCache();
  FormulaVariables::Scratch local;
  FormulaCache::Entry* entry = nullptr;
  if (cache) {
    bool created = false;
    entry = &cache->Find(integer, text, vars, extra, created);
    if (!created) {
      formula_ = entry->formula;
      error_ = entry->error;
      return;
    }
    formula_ = cache->FromShape(integer, text, vars, extra);
    if (formula_) {
      entry->formula = formula_;
      return;
    }
  }
  try {
    formula_ = formula::Formula::Compile(
        std::string_view(text), vars.Views(extra, cache ? cache->declarations : local),
        integer ? formula::Arithmetic::Integer : formula::Arithmetic::Float,
        cache ? &cache->buffers : nullptr);
  } catch (const formula::FormulaError& e) {
    error_ = owner->Map()->Memory().Copy(e.what());
  }
  if (entry) {
    entry->formula = formula_;
    entry->error = error_;
    if (formula_) cache->Learn(*formula_);
  }
}

bool FormulaProgram::Compiled() const { return formula_.has_value(); }

namespace {

// Runs a compiled formula against the node's variables; a missing formula and evaluation errors
// become GenICam exceptions naming the node and the element.
template <typename Evaluate>
auto RunProgram(const std::optional<formula::Formula>& program, const char* element,
                const char* error, const NodeImpl* owner, const FormulaVariables& vars,
                bool ignoreCache, double extra, Evaluate&& evaluate) {
  if (error)
    throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : element '%s' does not compile: %s", owner->Name(), element, error);
  if (!program)
    throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : element '%s' is missing", owner->Name(), element);
  NodeVariableSource source(owner, vars, ignoreCache, extra);
  try {
    return evaluate(*program, source);
  } catch (const formula::FormulaError& e) {
    throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : element '%s': %s", owner->Name(), element, e.what());
  }
}

}  // namespace

int64_t FormulaProgram::EvaluateInt(const NodeImpl* owner, const FormulaVariables& vars,
                                    bool ignoreCache, double extra) const {
  return RunProgram(formula_, element_, error_, owner, vars, ignoreCache, extra,
                    [](const formula::Formula& program, formula::IVariableSource& source) {
                      return program.GetArithmetic() == formula::Arithmetic::Integer
                                 ? program.EvaluateInteger(source)
                                 : static_cast<int64_t>(program.EvaluateFloat(source));
                    });
}

double FormulaProgram::EvaluateFloat(const NodeImpl* owner, const FormulaVariables& vars,
                                     bool ignoreCache, double extra) const {
  return RunProgram(formula_, element_, error_, owner, vars, ignoreCache, extra,
                    [](const formula::Formula& program, formula::IVariableSource& source) {
                      return program.GetArithmetic() == formula::Arithmetic::Float
                                 ? program.EvaluateFloat(source)
                                 : static_cast<double>(program.EvaluateInteger(source));
                    });
}

#else  // no formula engine in this build

void FormulaProgram::Compile(const NodeImpl*, const char* element, const char*,
                             const FormulaVariables&, const char*, bool) {
  element_ = element;
}
bool FormulaProgram::Compiled() const { return false; }
int64_t FormulaProgram::EvaluateInt(const NodeImpl* owner, const FormulaVariables&, bool,
                                    double) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name(), "GetValue")(
      "Node '%s' : formulas are not available in this build", owner->Name());
}
double FormulaProgram::EvaluateFloat(const NodeImpl* owner, const FormulaVariables&, bool,
                                     double) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name(), "GetValue")(
      "Node '%s' : formulas are not available in this build", owner->Name());
}

#endif

}  // namespace impl
}  // namespace GenApi
