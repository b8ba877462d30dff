// Values of formulas without variables: operators, precedence, associativity,
// literals, functions and the integer/float differences.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "../../genicam/genapi/formula/Formula.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::IVariableSource;
using GenApi::formula::VariableRef;

constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
constexpr double kPi = 3.14159265358979323846;

class NoVariables : public IVariableSource {
 public:
  int64_t GetInteger(const VariableRef&) override { throw std::logic_error("no variables"); }
  double GetFloat(const VariableRef&) override { throw std::logic_error("no variables"); }
};

int64_t EvalInt(const std::string& text) {
  NoVariables none;
  return Formula::Compile(text, FormulaDeclarations{}, Arithmetic::Integer).EvaluateInteger(none);
}

double EvalFloat(const std::string& text) {
  NoVariables none;
  return Formula::Compile(text, FormulaDeclarations{}, Arithmetic::Float).EvaluateFloat(none);
}

struct IntCase {
  const char* text;
  int64_t expected;
};

void PrintTo(const IntCase& c, std::ostream* os) { *os << c.text; }

class IntegerFormula : public ::testing::TestWithParam<IntCase> {};

TEST_P(IntegerFormula, Evaluates) {
  EXPECT_EQ(EvalInt(GetParam().text), GetParam().expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Operators, IntegerFormula,
    ::testing::Values(
        IntCase{"1+2*3", 7}, IntCase{"(1+2)*3", 9}, IntCase{"10-4-3", 3}, IntCase{"100/10/5", 2},
        IntCase{"7/2", 3}, IntCase{"-7/2", -3}, IntCase{"-7%2", -1}, IntCase{"7%-2", 1},
        IntCase{"-1 % -2", -1}, IntCase{"~255", -256}, IntCase{"~0", -1}, IntCase{"2**10*2", 2048},
        IntCase{"2**3**2", 512}, IntCase{"-2**2", 4}, IntCase{"-(2**2)", -4}, IntCase{"2*-3", -6},
        IntCase{"2**-1", 0}, IntCase{"1**-5", 1}, IntCase{"(-1)**-3", -1}, IntCase{"(-2)**3", -8},
        IntCase{"0**0", 1}, IntCase{"+5", 5}, IntCase{"- -5", 5}, IntCase{"~~7", 7},
        IntCase{"1<<4", 16}, IntCase{"256>>4", 16}, IntCase{"-16>>2", -4}, IntCase{"5 = 5", 1},
        IntCase{"5 <> 5", 0}, IntCase{"4 <= 4", 1}, IntCase{"4 >= 5", 0}, IntCase{"3 < 4", 1},
        IntCase{"3 > 4", 0}, IntCase{"0xF0 & 0x3C", 0x30}, IntCase{"0xF0 | 0x0F", 0xFF},
        IntCase{"0xFF ^ 0x0F", 0xF0}, IntCase{"-5 && 7", 1}, IntCase{"0 || -3", 1},
        IntCase{"0 && 1", 0}, IntCase{"0 || 0", 0}, IntCase{"SGN(-5)", -1}, IntCase{"sgn(0)", 0},
        IntCase{"Sgn(9)", 1}, IntCase{"NEG(4)", -4}, IntCase{"neg(-4)", 4},
        IntCase{"  1 +\n\t2 ", 3}, IntCase{"(~(~0xC2000221|0xFEFFFFFF)) ? 2:0", 0}));

INSTANTIATE_TEST_SUITE_P(Precedence, IntegerFormula,
                         ::testing::Values(IntCase{"1 << 2 + 1", 8},        // + above <<
                                           IntCase{"1 + 2 << 1", 6},        //
                                           IntCase{"2 = 1 < 2", 0},         // < above =
                                           IntCase{"6 & 3 = 2", 0},         // = above &
                                           IntCase{"5 & 3 + 1", 4},         // + above &
                                           IntCase{"6 ^ 3 & 5", 7},         // & above ^
                                           IntCase{"1 | 2 ^ 3", 1},         // ^ above |
                                           IntCase{"1 | 0 && 0", 0},        // | above &&
                                           IntCase{"1 || 1 && 0", 1},       // && above ||
                                           IntCase{"1 + 1 ? 10 : 20", 10},  // ?: lowest
                                           IntCase{"3 > 2 > 1", 0},         // left associative
                                           IntCase{"2 * 3 ** 2", 18},       // ** above *
                                           IntCase{"1 ? 2 : 0 ? 3 : 4", 2},
                                           IntCase{"0 ? 2 : 0 ? 3 : 4", 4},
                                           IntCase{"0 ? 2 : 1 ? 3 : 4", 3},
                                           IntCase{"1 ? 0 ? 5 : 6 : 7", 6},
                                           IntCase{"16 >> 2 >> 1", 2}, IntCase{"20 % 7 % 4", 2}));

INSTANTIATE_TEST_SUITE_P(ShortCircuit, IntegerFormula,
                         ::testing::Values(IntCase{"0 && 1/0", 0}, IntCase{"1 || 1/0", 1},
                                           IntCase{"1 ? 5 : 1/0", 5}, IntCase{"0 ? 1/0 : 6", 6},
                                           IntCase{"0 && 1/0 || 1", 1}));

// Real cameras use float functions in integer knives: they run in double and truncate.
INSTANTIATE_TEST_SUITE_P(
    FloatFunctionsInIntegerKnives, IntegerFormula,
    ::testing::Values(IntCase{"ABS(-5)", 5}, IntCase{"abs(0x8000000000000000)", kMin},
                      IntCase{"SQRT(17)", 4}, IntCase{"ROUND(7)", 7},
                      IntCase{"ROUND(1234, -2)", 1200}, IntCase{"ROUND(5, 1)", 5},
                      IntCase{"FLOOR(-3)", -3}, IntCase{"LN(1)", 0}, IntCase{"EXP(1)", 2},
                      IntCase{"PI", 3}, IntCase{"e * 10", 20}, IntCase{"SQRT(-1)", 0}));

INSTANTIATE_TEST_SUITE_P(Literals, IntegerFormula,
                         ::testing::Values(IntCase{"010", 10}, IntCase{"010 + 0x10", 26},
                                           IntCase{"0X1f", 31}, IntCase{"0xFFFFFFFFFFFFFFFF", -1},
                                           IntCase{"0x8000000000000000", kMin},
                                           IntCase{"0x00000000000000000001", 1},
                                           IntCase{"18446744073709551615", -1},
                                           IntCase{"3.7 * 2", 6}, IntCase{"1e3", 1000}));

INSTANTIATE_TEST_SUITE_P(
    DefinedOverflow, IntegerFormula,
    ::testing::Values(IntCase{"0x7FFFFFFFFFFFFFFF + 1", kMin}, IntCase{"-0x8000000000000000", kMin},
                      IntCase{"0x8000000000000000 - 1", std::numeric_limits<int64_t>::max()},
                      IntCase{"9223372036854775807 * 2", -2},
                      IntCase{"0x8000000000000000 / -1", kMin},
                      IntCase{"0x8000000000000000 % -1", 0}, IntCase{"2**63", kMin},
                      IntCase{"3**200", static_cast<int64_t>(0x5BFAFF1EAAF8B0A1ULL)},
                      IntCase{"NEG(0x8000000000000000)", kMin}, IntCase{"1<<63", kMin},
                      IntCase{"1<<64", 0}, IntCase{"1<<1000", 0}, IntCase{"-1>>64", -1},
                      IntCase{"5>>100", 0}, IntCase{"8<<-2", 2}, IntCase{"2>>-3", 16},
                      IntCase{"1<<-0x8000000000000000", 0}, IntCase{"-1>>-0x8000000000000000", 0}));

struct FloatCase {
  const char* text;
  double expected;
};

void PrintTo(const FloatCase& c, std::ostream* os) { *os << c.text; }

class FloatFormula : public ::testing::TestWithParam<FloatCase> {};

TEST_P(FloatFormula, Evaluates) {
  EXPECT_NEAR(EvalFloat(GetParam().text), GetParam().expected, 1e-9) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Operators, FloatFormula,
    ::testing::Values(FloatCase{"10.2+10+0x10+010", 46.2}, FloatCase{"25.2 % 7", 4.2},
                      FloatCase{"-25.2 % 7", -4.2}, FloatCase{"7/2", 3.5},
                      FloatCase{"2**0.5", std::sqrt(2.0)}, FloatCase{"-2**2", 4},
                      FloatCase{"2**3**2", 512}, FloatCase{"2**-1", 0.5}, FloatCase{"1.5e3", 1500},
                      FloatCase{".5", 0.5}, FloatCase{"1.e2", 100}, FloatCase{"2.5E-1", 0.25},
                      FloatCase{"~255", -256}, FloatCase{"0xFF & 0x0F", 15},
                      FloatCase{"1 << 4", 16}, FloatCase{"-5 && 7", 1}, FloatCase{"2.5 > 2", 1},
                      FloatCase{"0.5 = 0.5", 1}, FloatCase{"0.5 <> 0.25", 1},
                      FloatCase{"0xFFFFFFFF00000000 & 0xFFFFFFFFFFFFFFFF", -4294967296.0},
                      FloatCase{"18446744073709551615 & 0xFF", 255},
                      FloatCase{"0 ? 1/0 : 2.5", 2.5}, FloatCase{"1.5 + 1.5 ? 3.5 : 0", 3.5}));

INSTANTIATE_TEST_SUITE_P(
    Functions, FloatFormula,
    ::testing::Values(FloatCase{"ROUND(-20.11, 1)", -20.1}, FloatCase{"ROUND(5.5)", 6},
                      FloatCase{"ROUND(-5.5)", -6}, FloatCase{"ROUND(45.4545, -1)", 50},
                      FloatCase{"ROUND(45.4545, 2)", 45.45}, FloatCase{"round(2.5, 1e6)", 2.5},
                      FloatCase{"ROUND(2.5, -1e6)", 0}, FloatCase{"TRUNC(-2.7)", -2},
                      FloatCase{"FLOOR(-2.5)", -3}, FloatCase{"CEIL(2.1)", 3},
                      FloatCase{"FRAC(3.25)", 0.25}, FloatCase{"FRAC(-1.25)", -0.25},
                      FloatCase{"ABS(-3.5)", 3.5}, FloatCase{"SQRT(16)", 4}, FloatCase{"EXP(0)", 1},
                      FloatCase{"LN(E)", 1}, FloatCase{"LG(1000)", 3},
                      FloatCase{"e", 2.718281828459045}, FloatCase{"pi", kPi}, FloatCase{"Pi", kPi},
                      FloatCase{"SIN(PI/2)", 1}, FloatCase{"cos(0)", 1}, FloatCase{"TAN(0)", 0},
                      FloatCase{"ATAN(1)*4", kPi}, FloatCase{"ASIN(1)", kPi / 2},
                      FloatCase{"ACOS(1)", 0}, FloatCase{"sgn(-2.5)", -1},
                      FloatCase{"NEG(2.5)", -2.5},
                      FloatCase{"SQRT(ABS(-16)) + ROUND(SIN(0), 3)", 4}));

TEST(FormulaEvaluation, FloatResultsKeepInfinityAndNan) {
  EXPECT_TRUE(std::isnan(EvalFloat("SQRT(-1)")));
  EXPECT_TRUE(std::isinf(EvalFloat("LN(0)")));
  EXPECT_TRUE(std::isinf(EvalFloat("1e400")));
  EXPECT_EQ(EvalFloat("1e-400"), 0.0);
  EXPECT_TRUE(std::isinf(EvalFloat("1" + std::string(400, '0'))));
  EXPECT_EQ(EvalFloat("0." + std::string(400, '0') + "1"), 0.0);
}

TEST(FormulaEvaluation, CrossArithmeticResultsConvert) {
  NoVariables none;
  const FormulaDeclarations none_declared;
  auto floatFormula = Formula::Compile("7.9", none_declared, Arithmetic::Float);
  EXPECT_EQ(floatFormula.EvaluateInteger(none), 7);
  EXPECT_EQ(Formula::Compile("-7.9", none_declared, Arithmetic::Float).EvaluateInteger(none), -7);
  EXPECT_EQ(Formula::Compile("1e300", none_declared, Arithmetic::Float).EvaluateInteger(none),
            std::numeric_limits<int64_t>::max());
  EXPECT_THROW(Formula::Compile("SQRT(-1)", none_declared, Arithmetic::Float).EvaluateInteger(none),
               GenApi::formula::FormulaError);
  auto intFormula = Formula::Compile("7/2", none_declared, Arithmetic::Integer);
  EXPECT_EQ(intFormula.EvaluateFloat(none), 3.0);
  EXPECT_EQ(intFormula.GetArithmetic(), Arithmetic::Integer);
  EXPECT_EQ(floatFormula.GetArithmetic(), Arithmetic::Float);
}

TEST(FormulaEvaluation, LongFlatChainsNeedNoDeepRecursion) {
  std::string sum = "1";
  for (int i = 0; i < 20000; ++i) sum += "+1";
  EXPECT_EQ(EvalInt(sum), 20001);
  std::string nested;
  for (int i = 0; i < 200; ++i) nested += "(";
  nested += "2";
  for (int i = 0; i < 200; ++i) nested += ")";
  EXPECT_EQ(EvalInt(nested), 2);
}

TEST(FormulaEvaluation, DeepStackInsideNesting) {
  // Right-leaning sums grow the value stack: 100 pending operands.
  std::string text;
  for (int i = 0; i < 100; ++i) text += "1+(";
  text += "1";
  for (int i = 0; i < 100; ++i) text += ")";
  EXPECT_EQ(EvalInt(text), 101);
  EXPECT_NEAR(EvalFloat(text), 101, 1e-9);
}

}  // namespace
