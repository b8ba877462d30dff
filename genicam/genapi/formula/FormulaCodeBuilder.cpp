#include "FormulaCodeBuilder.h"

#include <algorithm>
#include <limits>
#include <string>

namespace GenApi {
namespace formula {
namespace detail {

CodeBuilder::CodeBuilder(Arithmetic arithmetic, Code& work) : code_(work) {
  code_.arithmetic = arithmetic;
  code_.instructions.clear();
  code_.integerConstants.clear();
  code_.floatConstants.clear();
  code_.references.clear();
  code_.maxStack = 0;
}

void CodeBuilder::ThrowTooLarge() {
  throw FormulaError("formula too large (more than " + std::to_string(kMaxInstructions) +
                     " operations after expanding expressions)");
}

void CodeBuilder::PushVariable(const VariableRef& ref, std::size_t position) {
  auto& refs = code_.references;
  auto found = std::find_if(refs.begin(), refs.end(), [&](const VariableRef& known) {
    return known.index == ref.index && known.property == ref.property &&
           known.entryName == ref.entryName;
  });
  if (found == refs.end()) found = refs.insert(refs.end(), ref);
  Append(OpCode::PushVariable, Function::None, position, found - refs.begin());
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
      // Jumps are relative and stay valid.
      Append(source.op, source.function, position, source.operand);
    }
    height_ = base;  // the fragment's own maximum below is exact; the running sum is not
  }
  code_.maxStack = std::max(code_.maxStack, base + fragment.maxStack);
  height_ = base + 1;
}

// The program is kept as long as the node map: copies without spare capacity.
Code CodeBuilder::Finish() {
  Code code;
  code.arithmetic = code_.arithmetic;
  code.instructions = code_.instructions;
  code.integerConstants = code_.integerConstants;
  code.floatConstants = code_.floatConstants;
  code.references = code_.references;
  code.maxStack = code_.maxStack;
  return code;
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
