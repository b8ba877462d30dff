// Formula declarations, compilation and evaluation over nodes.
#include "FormulaSupport.h"

#include "EnumerationNodes.h"
#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool FormulaVariables::Parse(const XmlElem& e, const std::string& node) {
  const std::string* name = e.Attr("Name");
  if (e.name != "pVariable" && e.name != "Constant" && e.name != "Expression") return false;
  if (!name || name->empty())
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' lacks its Name attribute", node.c_str(),
                             e.name.c_str());
  if (e.name == "pVariable") {
    names_.push_back(*name);
    vars_.push_back(Ref{e.text, nullptr});
  } else if (e.name == "Constant") {
    constants_.emplace_back(*name, e.text);
  } else {
    expressions_.emplace_back(*name, e.text);
  }
  return true;
}

void FormulaVariables::CollectLinks(NodeImpl* owner, LinkSink& sink) {
  for (Ref& r : vars_) sink.Link(owner, r, LinkClass::Reading, "pVariable");
}

formula::FormulaDeclarations FormulaVariables::Declarations(const char* extra) const {
  formula::FormulaDeclarations d;
  d.variables = names_;
  if (extra) d.variables.push_back(extra);
  d.constants = constants_;
  d.expressions = expressions_;
  return d;
}

EAccessMode FormulaVariables::Mode() const {
  EAccessMode mode = RO;
  for (const Ref& r : vars_) {
    const EAccessMode m = r.node->AccessModeLocked();
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
      throw RUNTIME_EXCEPTION_NODE(owner_->Name().c_str(), "GetValue")(
          "Node '%s' : variable '%s' is no enumeration", owner_->Name().c_str(),
          n->Name().c_str());
    EnumEntryNode* found = e->EntryByXmlName(entry);
    if (!found)
      throw RUNTIME_EXCEPTION_NODE(owner_->Name().c_str(), "GetValue")(
          "Node '%s' : enumeration '%s' has no entry '%s'", owner_->Name().c_str(),
          n->Name().c_str(), entry.c_str());
    return found->GetValue();
  }

  const NodeImpl* owner_;
  const FormulaVariables& vars_;
  bool ignoreCache_;
  double extra_;
};

}  // namespace

#ifdef VQ_HAVE_FORMULA

void FormulaProgram::Compile(const NodeImpl* owner, const char* element, const std::string& text,
                             const FormulaVariables& vars, const char* extra, bool integer) {
  element_ = element;
  try {
    formula_ = formula::Formula::Compile(
        text, vars.Declarations(extra),
        integer ? formula::Arithmetic::Integer : formula::Arithmetic::Float);
  } catch (const formula::FormulaError& e) {
    throw LOGICAL_ERROR_EXCEPTION("Node '%s' : element '%s' does not compile: %s",
                                  owner->Name().c_str(), element, e.what());
  }
}

bool FormulaProgram::Compiled() const { return formula_.has_value(); }

namespace {

// Runs a compiled formula against the node's variables; a missing formula and evaluation errors
// become GenICam exceptions naming the node and the element.
template <typename Evaluate>
auto RunProgram(const std::optional<formula::Formula>& program, const char* element,
                const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache, double extra,
                Evaluate&& evaluate) {
  if (!program)
    throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
        "Node '%s' : element '%s' is missing", owner->Name().c_str(), element);
  NodeVariableSource source(owner, vars, ignoreCache, extra);
  try {
    return evaluate(*program, source);
  } catch (const formula::FormulaError& e) {
    throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
        "Node '%s' : element '%s': %s", owner->Name().c_str(), element, e.what());
  }
}

}  // namespace

int64_t FormulaProgram::EvaluateInt(const NodeImpl* owner, const FormulaVariables& vars,
                                    bool ignoreCache, double extra) const {
  return RunProgram(formula_, element_, owner, vars, ignoreCache, extra,
                    [](const formula::Formula& program, formula::IVariableSource& source) {
                      return program.GetArithmetic() == formula::Arithmetic::Integer
                                 ? program.EvaluateInteger(source)
                                 : static_cast<int64_t>(program.EvaluateFloat(source));
                    });
}

double FormulaProgram::EvaluateFloat(const NodeImpl* owner, const FormulaVariables& vars,
                                     bool ignoreCache, double extra) const {
  return RunProgram(formula_, element_, owner, vars, ignoreCache, extra,
                    [](const formula::Formula& program, formula::IVariableSource& source) {
                      return program.GetArithmetic() == formula::Arithmetic::Float
                                 ? program.EvaluateFloat(source)
                                 : static_cast<double>(program.EvaluateInteger(source));
                    });
}

#else  // no formula engine in this build

void FormulaProgram::Compile(const NodeImpl*, const char* element, const std::string&,
                             const FormulaVariables&, const char*, bool) {
  element_ = element;
}
bool FormulaProgram::Compiled() const { return false; }
int64_t FormulaProgram::EvaluateInt(const NodeImpl* owner, const FormulaVariables&, bool,
                                    double) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
      "Node '%s' : formulas are not available in this build", owner->Name().c_str());
}
double FormulaProgram::EvaluateFloat(const NodeImpl* owner, const FormulaVariables&, bool,
                                     double) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
      "Node '%s' : formulas are not available in this build", owner->Name().c_str());
}

#endif

}  // namespace impl
}  // namespace GenApi
