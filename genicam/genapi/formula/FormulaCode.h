// The compiled form of a formula: a flat postfix program with relative jumps,
// run on a value stack whose size is known at compile time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Formula.h"

namespace GenApi {
namespace formula {
namespace detail {

enum class OpCode : std::uint8_t {
  PushConstant,  // operand: index into the constant pool of the program's arithmetic
  PushVariable,  // operand: index into references
  Negate,
  BitNot,
  ToBool,  // 0 stays 0, anything else becomes 1
  Add,
  Subtract,
  Multiply,
  Divide,
  Remainder,
  Power,
  ShiftLeft,
  ShiftRight,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  Equal,
  NotEqual,
  BitAnd,
  BitOr,
  BitXor,
  Call1,       // function of one argument (Instruction::function)
  Call2,       // function of two arguments
  Jump,        // pc += operand (after the usual increment)
  JumpIfZero,  // pops; jumps when the popped value is zero
};

enum class Function : std::uint8_t {
  None,
  Sgn,
  Neg,
  Atan,
  Cos,
  Sin,
  Tan,
  Abs,
  Exp,
  Ln,
  Lg,
  Sqrt,
  Trunc,
  Floor,
  Ceil,
  Round,
  Asin,
  Acos,
  Frac,
};

struct Instruction {
  OpCode op = OpCode::PushConstant;
  Function function = Function::None;
  std::uint32_t position = 0;  // 1-based character position in the source, for messages
  std::int32_t operand = 0;
};

struct Code {
  Arithmetic arithmetic = Arithmetic::Integer;
  std::vector<Instruction> instructions;
  std::vector<std::int64_t> integerConstants;  // used by integer programs
  std::vector<double> floatConstants;          // used by float programs
  std::vector<VariableRef> references;
  std::size_t maxStack = 0;
};

// Stack effect of one instruction (pushes minus pops).
inline int StackEffect(OpCode op) {
  switch (op) {
    case OpCode::PushConstant:
    case OpCode::PushVariable:
      return 1;
    case OpCode::Negate:
    case OpCode::BitNot:
    case OpCode::ToBool:
    case OpCode::Call1:
    case OpCode::Jump:
      return 0;
    default:
      return -1;  // binary operators, Call2, JumpIfZero
  }
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
