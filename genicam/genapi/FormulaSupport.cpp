// Formula declarations, compilation and evaluation over nodes.
#include "FormulaSupport.h"

#include <unordered_map>

#include "EnumerationNodes.h"
#include "NodeMap.h"

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
    ref.SetName(names.Intern(e.Text()));
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

formula::FormulaDeclarations FormulaVariables::Declarations(const char* extra) const {
  formula::FormulaDeclarations d;
  d.variables.reserve(names_.size() + 1);
  for (const char* n : names_) d.variables.emplace_back(n);
  if (extra) d.variables.emplace_back(extra);
  for (const Named& c : constants_) d.constants.emplace_back(c.name, c.text);
  for (const Named& x : expressions_) d.expressions.emplace_back(x.name, x.text);
  return d;
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

class FormulaCache {
 public:
  struct Entry {
    std::optional<formula::Formula> formula;
    const char* error = nullptr;
  };
  std::unordered_map<std::string, Entry> entries;
  std::string key;  // reused for every look-up
};

void FormulaVariables::AppendKey(std::string& key, const char* extra) const {
  for (const char* n : names_) (key += '\1') += n;
  if (extra) (key += '\1') += extra;
  for (const Named& c : constants_) (((key += '\2') += c.name) += '=') += c.text;
  for (const Named& x : expressions_) (((key += '\3') += x.name) += '=') += x.text;
}

FormulaCacheScope::FormulaCacheScope(NodeMap& map) : map_(map), cache_(new FormulaCache) {
  map_.SetFormulaCache(cache_.get());
}

FormulaCacheScope::~FormulaCacheScope() { map_.SetFormulaCache(nullptr); }

void FormulaProgram::Compile(const NodeImpl* owner, const char* element, const char* text,
                             const FormulaVariables& vars, const char* extra, bool integer) {
  element_ = element;
  if (!text) text = "";
  FormulaCache* cache = owner->Map()->GetFormulaCache();
  FormulaCache::Entry* entry = nullptr;
  if (cache) {
    std::string& key = cache->key;
    key.assign(integer ? "I" : "F").append(text);
    vars.AppendKey(key, extra);
    auto found = cache->entries.find(key);
    if (found != cache->entries.end()) {
      formula_ = found->second.formula;
      error_ = found->second.error;
      return;
    }
    entry = &cache->entries[key];
  }
  try {
    formula_ = formula::Formula::Compile(text, vars.Declarations(extra),
                                         integer ? formula::Arithmetic::Integer
                                                 : formula::Arithmetic::Float);
  } catch (const formula::FormulaError& e) {
    error_ = owner->Map()->Memory().Copy(e.what());
  }
  if (entry) {
    entry->formula = formula_;
    entry->error = error_;
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
