// Glue between formula nodes and the formula compiler: the declarations a
// node's elements make, and the variable source that reads the nodes.
#pragma once

#include <memory>
#include <optional>

#include "NameTable.h"
#include "Node.h"
#include "formula/Formula.h"

namespace GenApi {
namespace impl {

// pVariable / Constant / Expression elements of one formula node.
class FormulaVariables {
 public:
  bool Parse(const XmlElem& e, NodeImpl* owner, NameTable& names, Arena& arena);
  void CollectLinks(NodeImpl* owner, LinkSink& sink);
  // Declarations for one formula; `extra` (FROM or TO) is appended as the
  // last variable when given.
  formula::FormulaDeclarations Declarations(const char* extra) const;
  // Appends what the declarations consist of, as part of a cache key.
  void AppendKey(std::string& key, const char* extra) const;
  // NI when a variable is NI, NA when one is otherwise unreadable, else RO.
  EAccessMode Mode() const;
  size_t Count() const { return vars_.size(); }
  NodeImpl* Node(size_t index) const {
    return index < vars_.size() ? vars_[index].node() : nullptr;
  }

 private:
  struct Named {
    const char* name;
    const char* text;
  };
  ArenaVec<const char*> names_;
  ArenaVec<Ref> vars_;
  ArenaVec<Named> constants_, expressions_;
};

// Compiled formulas of one load by formula text and declarations: real
// descriptions repeat many formulas, each is compiled once and the nodes
// share its program (or its error).
class FormulaCache;

// Makes a cache for the formulas compiled while it lives.
class FormulaCacheScope {
 public:
  explicit FormulaCacheScope(NodeMap& map);
  ~FormulaCacheScope();
  FormulaCacheScope(const FormulaCacheScope&) = delete;
  FormulaCacheScope& operator=(const FormulaCacheScope&) = delete;

 private:
  NodeMap& map_;
  std::unique_ptr<FormulaCache> cache_;
};

// One formula of a node, compiled once when the description loads. A formula
// that does not compile only breaks its node: the error is kept and thrown
// (LogicalErrorException naming node and element) whenever the node is read.
class FormulaProgram {
 public:
  void Compile(const NodeImpl* owner, const char* element, const char* text,
               const FormulaVariables& vars, const char* extra, bool integer);
  // `extra` is the value of FROM/TO when the formula declares it.
  int64_t EvaluateInt(const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache,
                      double extra = 0) const;
  double EvaluateFloat(const NodeImpl* owner, const FormulaVariables& vars, bool ignoreCache,
                       double extra = 0) const;
  bool Compiled() const;
  // Why the formula does not compile, or null.
  const char* Error() const { return error_; }

 private:
  const char* element_ = "Formula";
  const char* error_ = nullptr;  // why the formula does not compile; kept in the map's arena
#ifdef VQ_HAVE_FORMULA
  std::optional<formula::Formula> formula_;
#endif
};

}  // namespace impl
}  // namespace GenApi
