// Appends instructions to a program while tracking the value-stack height,
// so the evaluator can size its stack once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "FormulaCode.h"

namespace GenApi {
namespace formula {
namespace detail {

// Programs larger than this are rejected (guards against expressions that
// expand each other exponentially).
constexpr std::size_t kMaxInstructions = std::size_t{1} << 20;

class CodeBuilder {
 public:
  explicit CodeBuilder(Arithmetic arithmetic);

  Arithmetic GetArithmetic() const { return code_.arithmetic; }
  void Reserve(std::size_t instructions) {
    code_.instructions.reserve(instructions);
    code_.integerConstants.reserve(instructions / 2);
  }

  void Emit(OpCode op, std::size_t position, Function function = Function::None);
  void PushInteger(std::int64_t value, std::size_t position);
  void PushFloat(double value, std::size_t position);
  void PushVariable(const VariableRef& ref, std::size_t position);

  // Emits a jump with an open target; PatchJumpToHere() closes it.
  std::size_t EmitJump(OpCode op, std::size_t position);
  void PatchJumpToHere(std::size_t jumpIndex);

  // Stack height at this point; branches of ?:, && and || restart from a saved height.
  std::size_t Height() const { return height_; }
  void SetHeight(std::size_t height) { height_ = height; }

  // Appends a complete program computing one value (a compiled Expression).
  void Splice(const Code& fragment, std::size_t position);

  Code Finish();

 private:
  void Append(const Instruction& instruction);
  void Adjust(int effect);

  Code code_;
  std::size_t height_ = 0;
};

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
