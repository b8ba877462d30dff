#include "FormulaEvaluator.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "FormulaFunctions.h"
#include "FormulaNumeric.h"

namespace GenApi {
namespace formula {
namespace detail {
namespace {

[[noreturn]] void FailAt(const char* what, std::uint32_t position) {
  throw FormulaError(std::string(what) + " at position " + std::to_string(position));
}

// Value stack sized once from the program; small programs stay off the heap.
template <typename T>
class ValueStack {
 public:
  explicit ValueStack(std::size_t capacity) {
    if (capacity > inline_.size()) {
      heap_.resize(capacity);
      data_ = heap_.data();
    }
  }
  void Push(T value) { data_[size_++] = value; }
  T Pop() { return data_[--size_]; }
  T& Top() { return data_[size_ - 1]; }

 private:
  std::array<T, 32> inline_{};
  std::vector<T> heap_;
  T* data_ = inline_.data();
  std::size_t size_ = 0;
};

// Comparison operators yield 1 or 0 in the operands' type; any other operator leaves a as is.
template <typename T>
T CompareOrKeep(OpCode op, T a, T b) {
  switch (op) {
    case OpCode::Less:
      return a < b;
    case OpCode::LessEqual:
      return a <= b;
    case OpCode::Greater:
      return a > b;
    case OpCode::GreaterEqual:
      return a >= b;
    case OpCode::Equal:
      return a == b;
    case OpCode::NotEqual:
      return a != b;
    default:
      return a;
  }
}

// Integer knives: int64 with wrapping overflow.
struct IntegerRules {
  using Value = std::int64_t;

  static Value Constant(const Code& code, std::int32_t index) {
    return code.integerConstants[static_cast<std::size_t>(index)];
  }
  static Value Fetch(IVariableSource& source, const VariableRef& ref) {
    return source.GetInteger(ref);
  }
  static Value Unary(OpCode op, Value a) {
    if (op == OpCode::Negate) return WrappingNegate(a);
    if (op == OpCode::BitNot) return ~a;
    return a != 0 ? 1 : 0;  // ToBool
  }
  static Value Call(const Instruction& in, Value a, Value b) {
    return in.op == OpCode::Call2 ? CallInteger(in.function, a, b) : CallInteger(in.function, a);
  }

  static Value Binary(const Instruction& in, Value a, Value b) {
    switch (in.op) {
      case OpCode::Add:
        return WrappingAdd(a, b);
      case OpCode::Subtract:
        return WrappingSubtract(a, b);
      case OpCode::Multiply:
        return WrappingMultiply(a, b);
      case OpCode::Divide:
        if (b == 0) FailAt("division by zero", in.position);
        return TruncatingDivide(a, b);
      case OpCode::Remainder:
        if (b == 0) FailAt("remainder by zero", in.position);
        return TruncatingRemainder(a, b);
      case OpCode::Power:
        if (a == 0 && b < 0) FailAt("zero raised to a negative power", in.position);
        return WrappingPower(a, b);
      case OpCode::ShiftLeft:
        return ShiftLeftBy(a, b);
      case OpCode::ShiftRight:
        return ShiftRightBy(a, b);
      case OpCode::BitAnd:
        return a & b;
      case OpCode::BitOr:
        return a | b;
      case OpCode::BitXor:
        return a ^ b;
      default:
        return CompareOrKeep(in.op, a, b);
    }
  }
};

// Float knives: double; bitwise operators and shifts work on the integer bit patterns.
struct FloatRules {
  using Value = double;

  static Value Constant(const Code& code, std::int32_t index) {
    return code.floatConstants[static_cast<std::size_t>(index)];
  }
  static Value Fetch(IVariableSource& source, const VariableRef& ref) {
    return source.GetFloat(ref);
  }
  static Value Unary(OpCode op, Value a) {
    if (op == OpCode::Negate) return -a;
    if (op == OpCode::BitNot) return static_cast<double>(~DoubleToBits(a));
    return a != 0 ? 1.0 : 0.0;  // ToBool
  }
  static Value Call(const Instruction& in, Value a, Value b) {
    return in.op == OpCode::Call2 ? CallFloat(in.function, a, b) : CallFloat(in.function, a);
  }
  static Value Bits(std::int64_t value) { return static_cast<double>(value); }

  static Value Binary(const Instruction& in, Value a, Value b) {
    switch (in.op) {
      case OpCode::Add:
        return a + b;
      case OpCode::Subtract:
        return a - b;
      case OpCode::Multiply:
        return a * b;
      case OpCode::Divide:
        if (b == 0) FailAt("division by zero", in.position);
        return a / b;
      case OpCode::Remainder:
        if (b == 0) FailAt("remainder by zero", in.position);
        return std::fmod(a, b);
      case OpCode::Power:
        return std::pow(a, b);
      case OpCode::ShiftLeft:
        return Bits(ShiftLeftBy(DoubleToBits(a), DoubleToBits(b)));
      case OpCode::ShiftRight:
        return Bits(ShiftRightBy(DoubleToBits(a), DoubleToBits(b)));
      case OpCode::BitAnd:
        return Bits(DoubleToBits(a) & DoubleToBits(b));
      case OpCode::BitOr:
        return Bits(DoubleToBits(a) | DoubleToBits(b));
      case OpCode::BitXor:
        return Bits(DoubleToBits(a) ^ DoubleToBits(b));
      default:
        return CompareOrKeep(in.op, a, b);
    }
  }
};

template <typename Rules>
typename Rules::Value Run(const Code& code, IVariableSource& source) {
  using Value = typename Rules::Value;
  ValueStack<Value> stack(code.maxStack);
  const std::size_t count = code.instructions.size();
  for (std::size_t pc = 0; pc < count; ++pc) {
    const Instruction& in = code.instructions[pc];
    switch (in.op) {
      case OpCode::PushConstant:
        stack.Push(Rules::Constant(code, in.operand));
        break;
      case OpCode::PushVariable:
        stack.Push(Rules::Fetch(source, code.references[static_cast<std::size_t>(in.operand)]));
        break;
      case OpCode::Negate:
      case OpCode::BitNot:
      case OpCode::ToBool:
        stack.Top() = Rules::Unary(in.op, stack.Top());
        break;
      case OpCode::Call1:
        stack.Top() = Rules::Call(in, stack.Top(), Value{});
        break;
      case OpCode::Call2: {
        const Value b = stack.Pop();
        stack.Top() = Rules::Call(in, stack.Top(), b);
        break;
      }
      case OpCode::Jump:
        pc += static_cast<std::size_t>(in.operand);
        break;
      case OpCode::JumpIfZero:
        if (stack.Pop() == 0) pc += static_cast<std::size_t>(in.operand);
        break;
      default: {
        const Value b = stack.Pop();
        stack.Top() = Rules::Binary(in, stack.Top(), b);
        break;
      }
    }
  }
  return stack.Pop();
}

}  // namespace

std::int64_t RunInteger(const Code& code, IVariableSource& source) {
  return Run<IntegerRules>(code, source);
}

double RunFloat(const Code& code, IVariableSource& source) { return Run<FloatRules>(code, source); }

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
