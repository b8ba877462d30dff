// Formula compile and evaluate costs, on formulas shaped like the ones cameras ship.
#include <benchmark/benchmark.h>

#include <string>

#include "../genicam/genapi/formula/Formula.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::IVariableSource;
using GenApi::formula::VariableRef;

class CountingSource : public IVariableSource {
 public:
  int64_t GetInteger(const VariableRef& ref) override { return static_cast<int64_t>(ref.index); }
  double GetFloat(const VariableRef& ref) override { return 1.5 + static_cast<double>(ref.index); }
};

FormulaDeclarations Declarations() {
  FormulaDeclarations declarations;
  declarations.variables = {"SEL1", "SEL2", "VALUE", "FROM", "TO", "TIMEBASE"};
  return declarations;
}

// A selector table of the kind large descriptions use: nested && / || with ?:.
std::string SelectorTable() {
  std::string text;
  for (int i = 0; i < 8; ++i) {
    text += "((SEL1 = " + std::to_string(i % 2) + ") && (SEL2 = " + std::to_string(i) + ")) ? " +
            std::to_string(0x100 + i * 4) + " : ";
  }
  return text + "0";
}

const char* const kShortInteger = "(VALUE + 1) * 2";
const char* const kConverterFloat = "ROUND(TO * TIMEBASE / 1000, 3) + (FROM > 0 ? LN(FROM) : 0)";

void BM_FormulaCompileShort(benchmark::State& state) {
  const auto declarations = Declarations();
  for (auto _ : state) {
    benchmark::DoNotOptimize(Formula::Compile(kShortInteger, declarations, Arithmetic::Integer));
  }
}
BENCHMARK(BM_FormulaCompileShort);

void BM_FormulaCompileSelectorTable(benchmark::State& state) {
  const auto declarations = Declarations();
  const std::string text = SelectorTable();
  for (auto _ : state) {
    benchmark::DoNotOptimize(Formula::Compile(text, declarations, Arithmetic::Integer));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_FormulaCompileSelectorTable);

void BM_FormulaEvaluateShortInteger(benchmark::State& state) {
  const auto formula = Formula::Compile(kShortInteger, Declarations(), Arithmetic::Integer);
  CountingSource source;
  for (auto _ : state) benchmark::DoNotOptimize(formula.EvaluateInteger(source));
}
BENCHMARK(BM_FormulaEvaluateShortInteger);

void BM_FormulaEvaluateSelectorTable(benchmark::State& state) {
  const auto formula = Formula::Compile(SelectorTable(), Declarations(), Arithmetic::Integer);
  CountingSource source;
  for (auto _ : state) benchmark::DoNotOptimize(formula.EvaluateInteger(source));
}
BENCHMARK(BM_FormulaEvaluateSelectorTable);

void BM_FormulaEvaluateConverterFloat(benchmark::State& state) {
  const auto formula = Formula::Compile(kConverterFloat, Declarations(), Arithmetic::Float);
  CountingSource source;
  for (auto _ : state) benchmark::DoNotOptimize(formula.EvaluateFloat(source));
}
BENCHMARK(BM_FormulaEvaluateConverterFloat);

}  // namespace
