// Resolves the names a formula uses: declared variables (with their
// .Value/.Min/.Max/... suffixes), Constants and Expressions. Constants are
// evaluated and Expressions compiled once, on first use.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "FormulaCode.h"

namespace GenApi {
namespace formula {
namespace detail {

// Expressions may use other expressions; chains deeper than this are rejected.
constexpr int kMaxExpressionNesting = 16;

class Scope {
 public:
  Scope(const DeclarationViews& declarations, Arithmetic arithmetic);
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  // A declared variable, optionally with a property suffix.
  bool FindVariable(std::string_view identifier, VariableRef& ref) const;

  // Constants and expressions with this exact name; null when there is none.
  // Throws FormulaError when the named text itself does not compile.
  const Code* FindConstant(std::string_view name);
  const Code* FindExpression(std::string_view name);

 private:
  struct Entry;
  const Code* Resolve(std::map<std::string, Entry, std::less<>>& cache, std::string_view name,
                      bool isConstant);
  bool FindVariableIndex(std::string_view name, std::size_t& index) const;

  const DeclarationViews& declarations_;
  Arithmetic arithmetic_;
  std::map<std::string, Entry, std::less<>> constants_;
  std::map<std::string, Entry, std::less<>> expressions_;
  int nesting_ = 0;
};

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
