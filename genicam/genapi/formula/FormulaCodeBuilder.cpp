#include "FormulaCodeBuilder.h"

#include <algorithm>
#include <limits>
#include <string>

namespace GenApi {
namespace formula {
namespace detail {

int StackEffect(OpCode op) {
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

CodeBuilder::CodeBuilder(Arithmetic arithmetic) { code_.arithmetic = arithmetic; }

void CodeBuilder::Adjust(int effect) {
  if (effect < 0 && height_ < static_cast<std::size_t>(-effect)) {
    height_ = 0;  // only while splicing, where the height is set afterwards
    return;
  }
  height_ = static_cast<std::size_t>(static_cast<long long>(height_) + effect);
  code_.maxStack = std::max(code_.maxStack, height_);
}

void CodeBuilder::Append(const Instruction& instruction) {
  if (code_.instructions.size() >= kMaxInstructions) {
    throw FormulaError("formula too large (more than " + std::to_string(kMaxInstructions) +
                       " operations after expanding expressions)");
  }
  code_.instructions.push_back(instruction);
  Adjust(StackEffect(instruction.op));
}

void CodeBuilder::Emit(OpCode op, std::size_t position, Function function) {
  Instruction instruction;
  instruction.op = op;
  instruction.function = function;
  instruction.position = static_cast<std::uint32_t>(position);
  Append(instruction);
}

void CodeBuilder::PushInteger(std::int64_t value, std::size_t position) {
  Instruction instruction;
  instruction.op = OpCode::PushConstant;
  instruction.position = static_cast<std::uint32_t>(position);
  instruction.operand = static_cast<std::int32_t>(code_.integerConstants.size());
  code_.integerConstants.push_back(value);
  Append(instruction);
}

void CodeBuilder::PushFloat(double value, std::size_t position) {
  Instruction instruction;
  instruction.op = OpCode::PushConstant;
  instruction.position = static_cast<std::uint32_t>(position);
  instruction.operand = static_cast<std::int32_t>(code_.floatConstants.size());
  code_.floatConstants.push_back(value);
  Append(instruction);
}

void CodeBuilder::PushVariable(const VariableRef& ref, std::size_t position) {
  auto& refs = code_.references;
  auto found = std::find_if(refs.begin(), refs.end(), [&](const VariableRef& known) {
    return known.index == ref.index && known.property == ref.property &&
           known.entryName == ref.entryName;
  });
  if (found == refs.end()) found = refs.insert(refs.end(), ref);
  Instruction instruction;
  instruction.op = OpCode::PushVariable;
  instruction.position = static_cast<std::uint32_t>(position);
  instruction.operand = static_cast<std::int32_t>(found - refs.begin());
  Append(instruction);
}

std::size_t CodeBuilder::EmitJump(OpCode op, std::size_t position) {
  Emit(op, position);
  return code_.instructions.size() - 1;
}

void CodeBuilder::PatchJumpToHere(std::size_t jumpIndex) {
  const std::size_t distance = code_.instructions.size() - jumpIndex - 1;
  code_.instructions[jumpIndex].operand = static_cast<std::int32_t>(distance);
}

void CodeBuilder::Splice(const Code& fragment, std::size_t position) {
  const std::size_t base = height_;
  for (const Instruction& source : fragment.instructions) {
    if (source.op == OpCode::PushVariable) {
      PushVariable(fragment.references[static_cast<std::size_t>(source.operand)], position);
    } else if (source.op == OpCode::PushConstant) {
      const auto index = static_cast<std::size_t>(source.operand);
      if (code_.arithmetic == Arithmetic::Integer) {
        PushInteger(fragment.integerConstants[index], position);
      } else {
        PushFloat(fragment.floatConstants[index], position);
      }
    } else {
      Instruction instruction = source;  // jumps are relative and stay valid
      instruction.position = static_cast<std::uint32_t>(position);
      Append(instruction);
    }
    height_ = base;  // the fragment's own maximum below is exact; the running sum is not
  }
  code_.maxStack = std::max(code_.maxStack, base + fragment.maxStack);
  height_ = base + 1;
}

// The program is kept as long as the node map: no spare capacity.
Code CodeBuilder::Finish() {
  code_.instructions.shrink_to_fit();
  code_.integerConstants.shrink_to_fit();
  code_.floatConstants.shrink_to_fit();
  code_.references.shrink_to_fit();
  return std::move(code_);
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
