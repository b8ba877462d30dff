// Glue between formula nodes and the formula compiler: the declarations a
// node's elements make, and the variable source that reads the nodes.
#pragma once

#include <optional>

#include "Node.h"
#include "formula/Formula.h"

namespace GenApi {
namespace impl {

// pVariable / Constant / Expression elements of one formula node.
class FormulaVariables {
 public:
  bool Parse(const XmlElem& e, const std::string& node);
  void CollectLinks(NodeImpl* owner, LinkSink& sink);
  // Declarations for one formula; `extra` (FROM or TO) is appended as the
  // last variable when given.
  formula::FormulaDeclarations Declarations(const char* extra) const;
  // NI when a variable is NI, NA when one is otherwise unreadable, else RO.
  EAccessMode Mode() const;
  size_t Count() const { return vars_.size(); }
  NodeImpl* Node(size_t index) const { return index < vars_.size() ? vars_[index].node : nullptr; }

 private:
  std::vector<std::string> names_;
  std::vector<Ref> vars_;
  std::vector<std::pair<std::string, std::string>> constants_, expressions_;
};

// One compiled formula of a node.
class FormulaProgram {
 public:
  void Compile(const NodeImpl* owner, const char* element, const std::string& text,
               const FormulaVariables& vars, const char* extra, bool integer);
  // `extra` is the value of FROM/TO when the formula declares it.
  int64_t EvaluateInt(const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache,
                      double extra = 0) const;
  double EvaluateFloat(const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache,
                       double extra = 0) const;
  bool Compiled() const;

 private:
  const char* element_ = "Formula";
#ifdef VQ_HAVE_FORMULA
  std::optional<formula::Formula> formula_;
#endif
};

}  // namespace impl
}  // namespace GenApi
