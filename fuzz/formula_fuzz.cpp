// Fuzz target for the formula compiler and evaluator.
// Input: first byte picks the arithmetic; the rest, split at newlines, is the
// formula followed by Expression texts L1, L2, ... (which may use each other).
// Compile errors and evaluation errors are FormulaError; anything else, or a
// reference outside the declared variables, is a defect.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "../genicam/genapi/formula/Formula.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;
using GenApi::formula::IVariableSource;
using GenApi::formula::VariableRef;

// Values that reach every branch: zero (division), negatives, large magnitudes.
class PatternSource : public IVariableSource {
 public:
  explicit PatternSource(std::size_t variableCount) : count_(variableCount) {}
  int64_t GetInteger(const VariableRef& ref) override {
    Check(ref);
    static const int64_t kValues[] = {0, 1, -1, 7, INT64_MIN, INT64_MAX, 64, -3};
    return kValues[(ref.index + static_cast<std::size_t>(ref.property) + ref.entryName.size()) % 8];
  }
  double GetFloat(const VariableRef& ref) override {
    Check(ref);
    static const double kValues[] = {0.0, 1.5, -2.25, 1e308, -1e-300, 3.0, 0.5, -7.0};
    return kValues[(ref.index + static_cast<std::size_t>(ref.property) + ref.entryName.size()) % 8];
  }

 private:
  void Check(const VariableRef& ref) const {
    if (ref.index >= count_) std::abort();  // compiler produced a bad variable slot
  }
  std::size_t count_;
};

FormulaDeclarations Declarations(const std::string& body, std::string& formula) {
  FormulaDeclarations declarations;
  declarations.variables = {"A", "B", "Sel", "FROM", "TO", "x.y"};
  declarations.constants = {{"TEN", "10"}, {"HEX", "0xFF"}, {"HALF", "0.5"}, {"BAD", "1+"}};
  std::size_t start = 0;
  int line = 0;
  while (start <= body.size()) {
    std::size_t end = body.find('\n', start);
    if (end == std::string::npos) end = body.size();
    const std::string text = body.substr(start, end - start);
    if (line == 0) {
      formula = text;
    } else if (line <= 8) {
      declarations.expressions.emplace_back("L" + std::to_string(line), text);
    }
    ++line;
    start = end + 1;
  }
  return declarations;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Arithmetic arithmetic = (data[0] & 1) ? Arithmetic::Float : Arithmetic::Integer;
  const std::string body(reinterpret_cast<const char*>(data + 1), size - 1);
  std::string text;
  const FormulaDeclarations declarations = Declarations(body, text);
  try {
    const Formula formula = Formula::Compile(text, declarations, arithmetic);
    for (const VariableRef& ref : formula.References()) {
      if (ref.index >= declarations.variables.size()) std::abort();
    }
    PatternSource source(declarations.variables.size());
    try {
      formula.EvaluateInteger(source);
    } catch (const FormulaError&) {
    }
    try {
      formula.EvaluateFloat(source);
    } catch (const FormulaError&) {
    }
  } catch (const FormulaError&) {
  }
  return 0;
}
