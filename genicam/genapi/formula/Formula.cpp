#include "Formula.h"

#include <string>

#include "FormulaCode.h"
#include "FormulaCompiler.h"
#include "FormulaEvaluator.h"
#include "FormulaLexer.h"
#include "FormulaNumeric.h"
#include "FormulaScope.h"

namespace GenApi {
namespace formula {

struct Formula::Program : detail::Code {
  explicit Program(detail::Code code) : detail::Code(std::move(code)) {}
};

namespace {

constexpr std::size_t kQuotedTextLimit = 60;

std::string Quoted(std::string_view text) {
  if (text.size() <= kQuotedTextLimit) return "\"" + std::string(text) + "\"";
  return "\"" + std::string(text.substr(0, kQuotedTextLimit)) + "...\"";
}

}  // namespace

Formula Formula::Compile(const std::string& text, const FormulaDeclarations& declarations,
                         Arithmetic arithmetic, detail::CompileScratch* scratch) {
  const std::vector<std::string_view> variables(declarations.variables.begin(),
                                                declarations.variables.end());
  std::vector<NamedText> constants, expressions;
  for (const auto& [name, body] : declarations.constants) constants.push_back({name, body});
  for (const auto& [name, body] : declarations.expressions) expressions.push_back({name, body});
  return Compile(text, DeclarationViews{variables.data(), variables.size(), constants.data(),
                                        constants.size(), expressions.data(), expressions.size()},
                 arithmetic, scratch);
}

Formula Formula::Compile(std::string_view text, const DeclarationViews& declarations,
                         Arithmetic arithmetic, detail::CompileScratch* scratch) {
  try {
    detail::Scope scope(declarations, arithmetic);
    return Formula(
        std::make_shared<const Program>(detail::CompileCode(text, scope, arithmetic, scratch)));
  } catch (const FormulaError& error) {
    throw FormulaError(std::string(error.what()) + " in formula " + Quoted(text));
  }
}

Formula Formula::WithLiterals(const std::uint32_t* constants, const detail::Literal* literals,
                              std::size_t count) const {
  if (!program_) throw FormulaError("formula used after being moved from");
  auto program = std::make_shared<Program>(*program_);
  for (std::size_t i = 0; i < count; ++i) {
    if (program->arithmetic == Arithmetic::Integer)
      program->integerConstants.at(constants[i]) = literals[i].integerValue;
    else
      program->floatConstants.at(constants[i]) = literals[i].floatValue;
  }
  return Formula(std::move(program));
}

Formula::Formula(std::shared_ptr<const Program> program) : program_(std::move(program)) {}

Formula::~Formula() = default;

int64_t Formula::EvaluateInteger(IVariableSource& source) const {
  if (!program_) throw FormulaError("formula used after being moved from");
  if (program_->arithmetic == Arithmetic::Integer) return detail::RunInteger(*program_, source);
  const double value = detail::RunFloat(*program_, source);
  if (std::isnan(value)) throw FormulaError("formula result is not a number");
  return detail::SaturateToInteger(value);
}

double Formula::EvaluateFloat(IVariableSource& source) const {
  if (!program_) throw FormulaError("formula used after being moved from");
  if (program_->arithmetic == Arithmetic::Float) return detail::RunFloat(*program_, source);
  return static_cast<double>(detail::RunInteger(*program_, source));
}

Arithmetic Formula::GetArithmetic() const {
  return program_ ? program_->arithmetic : Arithmetic::Integer;
}

const std::vector<VariableRef>& Formula::References() const {
  static const std::vector<VariableRef> kNone;
  return program_ ? program_->references : kNone;
}

}  // namespace formula
}  // namespace GenApi
