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
  // Builds in work (emptied first), which may hold a previous program.
  CodeBuilder(Arithmetic arithmetic, Code& work);

  Arithmetic GetArithmetic() const { return code_.arithmetic; }
  // Constants of the program's arithmetic so far: the index the next one gets.
  std::size_t Constants() const {
    return code_.arithmetic == Arithmetic::Integer ? code_.integerConstants.size()
                                                   : code_.floatConstants.size();
  }

  void Emit(OpCode op, std::size_t position, Function function = Function::None) {
    Append(op, function, position, 0);
  }
  void PushInteger(std::int64_t value, std::size_t position) {
    Append(OpCode::PushConstant, Function::None, position,
           static_cast<std::int64_t>(code_.integerConstants.size()));
    code_.integerConstants.push_back(value);
  }
  void PushFloat(double value, std::size_t position) {
    Append(OpCode::PushConstant, Function::None, position,
           static_cast<std::int64_t>(code_.floatConstants.size()));
    code_.floatConstants.push_back(value);
  }
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
  // Fills the new instruction field by field in place: an Instruction built
  // on the stack and copied whole makes the processor wait for its parts.
  void Append(OpCode op, Function function, std::size_t position, std::int64_t operand) {
    if (code_.instructions.size() >= kMaxInstructions) ThrowTooLarge();
    Instruction& in = code_.instructions.emplace_back();
    in.op = op;
    in.function = function;
    in.position = static_cast<std::uint32_t>(position);
    in.operand = static_cast<std::int32_t>(operand);
    Adjust(StackEffect(op));
  }
  void Adjust(int effect) {
    if (effect < 0 && height_ < static_cast<std::size_t>(-effect)) {
      height_ = 0;  // only while splicing, where the height is set afterwards
      return;
    }
    height_ = static_cast<std::size_t>(static_cast<long long>(height_) + effect);
    if (height_ > code_.maxStack) code_.maxStack = height_;
  }
  [[noreturn]] static void ThrowTooLarge();

  Code& code_;
  std::size_t height_ = 0;
};

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
