// Entry point of the compiler: text to Code.
#pragma once

#include <string_view>
#include <vector>

#include "FormulaCode.h"
#include "FormulaLexer.h"
#include "FormulaScope.h"

namespace GenApi {
namespace formula {
namespace detail {

// Longer formula texts are rejected before parsing.
constexpr std::size_t kMaxFormulaLength = 64 * 1024;
// Nesting of parentheses, function calls, unary operators and right-associative chains.
constexpr int kMaxNestingDepth = 256;

// Buffers a compilation works in. Kept from one compilation to the next, they
// spare the allocations; the compiled Code gets copies of exactly its size.
struct CompileScratch {
  std::vector<Token> tokens;
  Code code;
  // After a compilation: each numeric literal of the text in order, with the
  // constant it became (see Formula::WithLiterals).
  struct LiteralUse {
    std::uint32_t position;
    std::uint32_t constant;
  };
  std::vector<LiteralUse> literals;
};

// Compiles `text` with the names of `scope`. Throws FormulaError with the
// problem and its position.
Code CompileCode(std::string_view text, Scope& scope, Arithmetic arithmetic,
                 CompileScratch* scratch = nullptr);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
