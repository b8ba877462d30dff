// The formula engine: values of formulas (operators, precedence,
// associativity, literals, functions, the integer/float differences),
// variables with property suffixes, Constants and Expressions read through a
// fake source that records what the formula asked for, and texts the compiler
// must refuse with a message naming the problem and where it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "FakeVariables.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;
using GenApi::formula::VariableProperty;
using GenApi::formula::VariableRef;
using genapi_test::FakeVariables;
using ::testing::HasSubstr;

constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
constexpr double kPi = 3.14159265358979323846;

// The message of the FormulaError a call throws; "" when it returns.
template <class Call>
std::string ErrorOf(Call&& call) {
  try {
    call();
  } catch (const FormulaError& e) {
    return e.what();
  }
  return "";
}

int64_t EvalInt(const std::string& text) {
  FakeVariables none;
  return Formula::Compile(text, FormulaDeclarations{}, Arithmetic::Integer).EvaluateInteger(none);
}

double EvalFloat(const std::string& text) {
  FakeVariables none;
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
  FakeVariables none;
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

std::string Repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// Long flat chains need no deep recursion; right-leaning sums grow the value
// stack (100 pending operands).
TEST(FormulaEvaluation, LongChainsAndDeepStacks) {
  EXPECT_EQ(EvalInt("1" + Repeat("+1", 20000)), 20001);
  EXPECT_EQ(EvalInt(Repeat("(", 200) + "2" + Repeat(")", 200)), 2);
  const std::string rightLeaning = Repeat("1+(", 100) + "1" + Repeat(")", 100);
  EXPECT_EQ(EvalInt(rightLeaning), 101);
  EXPECT_NEAR(EvalFloat(rightLeaning), 101, 1e-9);
}

FormulaDeclarations Variables() {
  FormulaDeclarations declarations;
  declarations.variables = {"A", "B", "Sel", "FROM", "x.y"};
  return declarations;
}

FormulaDeclarations WithNames() {
  FormulaDeclarations declarations = Variables();
  declarations.constants = {{"TEN", "10"}, {"HALF", " 0.5 "}, {"MASK", "0xFF"}, {"NEGATIVE", "-3"},
                            {"A", "999"},  {"BAD", "1 +"},    {"USESVAR", "A"}};
  declarations.expressions = {
      {"SUM", "A + B"}, {"TWICE", "SUM * 2"}, {"SCALED", "A * TEN"}, {"P", "Q + 1"},
      {"Q", "P + 1"},   {"SELF", "SELF"},     {"BROKEN", "A +* B"},  {"SAFE", "B = 0 ? 0 : A / B"}};
  return declarations;
}

struct SuffixCase {
  const char* text;
  std::size_t index;
  VariableProperty property;
  const char* entry;
};

class VariableSuffix : public ::testing::TestWithParam<SuffixCase> {};

TEST_P(VariableSuffix, ResolvesToOneReference) {
  const SuffixCase& c = GetParam();
  const Formula formula = Formula::Compile(c.text, Variables(), Arithmetic::Integer);
  ASSERT_EQ(formula.References().size(), 1U);
  const VariableRef& ref = formula.References()[0];
  EXPECT_EQ(ref.index, c.index);
  EXPECT_EQ(ref.property, c.property);
  EXPECT_EQ(ref.entryName, c.entry);
  FakeVariables source;
  source.Set(c.index, 42, c.property, c.entry);
  EXPECT_EQ(formula.EvaluateInteger(source), 42);
}

INSTANTIATE_TEST_SUITE_P(
    All, VariableSuffix,
    ::testing::Values(SuffixCase{"A", 0, VariableProperty::Value, ""},
                      SuffixCase{"A.Value", 0, VariableProperty::Value, ""},
                      SuffixCase{"B.Min", 1, VariableProperty::Min, ""},
                      SuffixCase{"B.Max", 1, VariableProperty::Max, ""},
                      SuffixCase{"B.Inc", 1, VariableProperty::Inc, ""},
                      SuffixCase{"A.AccessMode", 0, VariableProperty::AccessMode, ""},
                      SuffixCase{"A.Visibility", 0, VariableProperty::Visibility, ""},
                      SuffixCase{"A.CachingMode", 0, VariableProperty::CachingMode, ""},
                      SuffixCase{"Sel.Entry.Continuous", 2, VariableProperty::EntryValue,
                                 "Continuous"},
                      SuffixCase{"Sel.Entry.Mode_2", 2, VariableProperty::EntryValue, "Mode_2"},
                      SuffixCase{"FROM", 3, VariableProperty::Value, ""},
                      SuffixCase{"x.y", 4, VariableProperty::Value, ""},
                      SuffixCase{"x.y.Max", 4, VariableProperty::Max, ""}));

TEST(FormulaVariables, ReferencesAreDistinctAndOrdered) {
  const Formula formula = Formula::Compile("A + A.Value + B.Max + A + B.Max + B * Sel.Entry.On",
                                           Variables(), Arithmetic::Integer);
  const auto& refs = formula.References();
  ASSERT_EQ(refs.size(), 4U);
  EXPECT_EQ(refs[0].index, 0U);
  EXPECT_EQ(refs[1].property, VariableProperty::Max);
  EXPECT_EQ(refs[2].index, 1U);
  EXPECT_EQ(refs[2].property, VariableProperty::Value);
  EXPECT_EQ(refs[3].entryName, "On");
  const auto viaExpressions = Formula::Compile("TWICE + SUM + A", WithNames(), Arithmetic::Integer);
  ASSERT_EQ(viaExpressions.References().size(), 2U);
  EXPECT_EQ(viaExpressions.References()[0].index, 0U);
  EXPECT_EQ(viaExpressions.References()[1].index, 1U);
}

TEST(FormulaVariables, EachArithmeticAsksItsOwnGetter) {
  FakeVariables source;
  source.Set(0, 7.5);
  source.Set(1, 2);
  EXPECT_EQ(Formula::Compile("A / B", Variables(), Arithmetic::Integer).EvaluateInteger(source), 3);
  EXPECT_EQ(source.integerReads, 2);
  EXPECT_EQ(source.floatReads, 0);
  EXPECT_DOUBLE_EQ(Formula::Compile("A / B", Variables(), Arithmetic::Float).EvaluateFloat(source),
                   3.75);
  EXPECT_EQ(source.floatReads, 2);
}

TEST(FormulaVariables, UntakenBranchesReadNothing) {
  FakeVariables source;
  source.Set(0, 0);
  const auto formula =
      Formula::Compile("A && B || (A ? Sel : A = 0)", Variables(), Arithmetic::Integer);
  EXPECT_EQ(formula.EvaluateInteger(source), 1);
  EXPECT_EQ(source.integerReads, 3);  // B and Sel are never asked for
}

TEST(FormulaVariables, NamesAreCaseSensitiveButFunctionsAreNot) {
  FormulaDeclarations declarations;
  declarations.variables = {"BLADE", "E", "SIN"};
  EXPECT_THROW(Formula::Compile("100*Blade", declarations, Arithmetic::Float), FormulaError);
  FakeVariables source;
  source.Set(0, 2);
  source.Set(1, 10);
  source.Set(2, 3);
  // A variable wins over a built-in constant, and a name without '(' is never a function.
  EXPECT_DOUBLE_EQ(
      Formula::Compile("E + SIN + sin(0)", declarations, Arithmetic::Float).EvaluateFloat(source),
      13);
  EXPECT_NEAR(Formula::Compile("e", declarations, Arithmetic::Float).EvaluateFloat(source),
              2.718281828, 1e-9);
  EXPECT_EQ(Formula::Compile("blade", FormulaDeclarations{{"blade"}, {}, {}}, Arithmetic::Integer)
                .References()
                .size(),
            1U);
}

TEST(FormulaVariables, SourceExceptionsPassThrough) {
  FakeVariables source;  // knows no values
  const auto formula = Formula::Compile("A + 1", Variables(), Arithmetic::Integer);
  EXPECT_THROW(formula.EvaluateInteger(source), std::out_of_range);
}

struct NamedCase {
  const char* text;
  double expected;
};

class NamedValue : public ::testing::TestWithParam<NamedCase> {};

TEST_P(NamedValue, FloatKnife) {
  FakeVariables source;
  source.Set(0, 4);
  source.Set(1, 0);
  EXPECT_DOUBLE_EQ(
      Formula::Compile(GetParam().text, WithNames(), Arithmetic::Float).EvaluateFloat(source),
      GetParam().expected)
      << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    ConstantsAndExpressions, NamedValue,
    ::testing::Values(NamedCase{"TEN * 2", 20}, NamedCase{"HALF * 4", 2},
                      NamedCase{"MASK & 0x0F", 15}, NamedCase{"NEGATIVE", -3},
                      NamedCase{"A", 4},  // the variable wins over a constant of the same name
                      NamedCase{"SUM", 4}, NamedCase{"TWICE + SUM", 12}, NamedCase{"SCALED", 40},
                      NamedCase{"SAFE", 0}, NamedCase{"SUM ? TWICE : 1/0", 8}));

TEST(FormulaNames, IntegerConstantsTruncate) {
  FakeVariables source;
  EXPECT_EQ(
      Formula::Compile("HALF + TEN", WithNames(), Arithmetic::Integer).EvaluateInteger(source), 10);
}

TEST(FormulaNames, BadDefinitionsAreReportedWhereUsed) {
  const auto error = [](const char* text) {
    return ErrorOf([&] { Formula::Compile(text, WithNames(), Arithmetic::Integer); });
  };
  EXPECT_THAT(error("P"),
              HasSubstr("in expression 'P': in expression 'Q': expression 'P' refers to itself"));
  EXPECT_THAT(error("SELF"), HasSubstr("refers to itself"));
  EXPECT_THAT(error("1 + BROKEN"), HasSubstr("in expression 'BROKEN': expected a number"));
  EXPECT_THAT(error("BAD"), HasSubstr("in constant 'BAD'"));
  EXPECT_THAT(error("USESVAR"), HasSubstr("unknown identifier 'A'"));
  EXPECT_EQ(error("TEN + SUM"), "");  // unused broken definitions do not matter
}

// Each level of E quadruples the code, each level of C nests one deeper: both
// are bounded.
TEST(FormulaNames, ExpressionBlowUpAndChainsAreBounded) {
  FormulaDeclarations declarations;
  declarations.variables = {"X"};
  declarations.expressions = {{"E0", "X"}, {"C0", "X"}};
  for (int i = 1; i <= 20; ++i) {
    const std::string e = "E" + std::to_string(i - 1);
    declarations.expressions.push_back({"E" + std::to_string(i), e + "+" + e + "+" + e + "+" + e});
    declarations.expressions.push_back(
        {"C" + std::to_string(i), "C" + std::to_string(i - 1) + "+1"});
  }
  FakeVariables source;
  source.Set(0, 1);
  const auto eval = [&](const char* text) {
    return Formula::Compile(text, declarations, Arithmetic::Integer).EvaluateInteger(source);
  };
  EXPECT_EQ(eval("E5"), 1024);
  EXPECT_EQ(eval("C10"), 11);
  EXPECT_THAT(ErrorOf([&] { eval("E12"); }), HasSubstr("too large"));
  EXPECT_THAT(ErrorOf([&] { eval("C20"); }), HasSubstr("expressions nested deeper than 16"));
}

TEST(FormulaNames, CopiesShareTheProgram) {
  FakeVariables source;
  source.Set(0, 3);
  Formula original = Formula::Compile("A * 2", Variables(), Arithmetic::Integer);
  Formula copy = original;
  original = Formula::Compile("A * 3", Variables(), Arithmetic::Integer);
  EXPECT_EQ(copy.EvaluateInteger(source), 6);
  EXPECT_EQ(original.EvaluateInteger(source), 9);
}

FormulaDeclarations Declared() {
  FormulaDeclarations declarations;
  declarations.variables = {"A", "B"};
  return declarations;
}

std::string CompileError(const std::string& text, Arithmetic arithmetic) {
  return ErrorOf([&] { Formula::Compile(text, Declared(), arithmetic); });
}

struct Rejection {
  const char* text;
  const char* messagePart;  // a fragment the message must contain
};

void PrintTo(const Rejection& c, std::ostream* os) { *os << c.text; }

class RejectedInBothKnives : public ::testing::TestWithParam<Rejection> {};

TEST_P(RejectedInBothKnives, WithMessage) {
  for (Arithmetic arithmetic : {Arithmetic::Integer, Arithmetic::Float}) {
    EXPECT_THAT(CompileError(GetParam().text, arithmetic), HasSubstr(GetParam().messagePart))
        << "formula [" << GetParam().text << "]";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Syntax, RejectedInBothKnives,
    ::testing::Values(
        Rejection{"A==B", "'==' is not an operator (equality is '=') at position 2"},
        Rejection{"!A", "'!' is not an operator (use '<>' or '= 0') at position 1"},
        Rejection{"A != B", "'!' is not an operator (use '<>' or '= 0') at position 3"},
        Rejection{"A + $", "unexpected character '$' at position 5"},
        Rejection{"#1", "unexpected character '#'"},
        Rejection{"1}", "unexpected character '}' at position 2"},
        Rejection{"A\x01", "unexpected character 0x01"},
        Rejection{"(1", "expected ')' but found end of formula at position 3"},
        Rejection{"1)", "unexpected ')' after a complete expression at position 2"},
        Rejection{"((1)", "expected ')'"}, Rejection{"", "empty formula"},
        Rejection{"   \t\n", "empty formula"},
        Rejection{"1 2 3", "unexpected '2' after a complete expression at position 3"},
        Rejection{"A B", "unexpected 'B'"}, Rejection{"1,2", "unexpected ','"},
        Rejection{"0x", "hexadecimal number without digits at position 1"},
        Rejection{"0xG1", "hexadecimal number without digits"},
        Rejection{"0x1G", "malformed number '0x1G'"},
        Rejection{"0x10000000000000000", "wider than 64 bits"},
        Rejection{"12abc", "malformed number"}, Rejection{"1.5.3", "malformed number"},
        Rejection{"1..2", "malformed number"}, Rejection{"2E", "malformed number"},
        Rejection{"\"abc\"", "quoted strings are not allowed at position 1"},
        Rejection{"'a'", "quoted strings are not allowed"},
        Rejection{"SGN()", "function 'SGN' takes 1 argument(s), not 0 at position 1"},
        Rejection{"SGN(A,B)", "takes 1 argument(s), not 2"},
        Rejection{"NEG(A,B)", "takes 1 argument(s), not 2"},
        Rejection{"SGN(1,)", "expected a number, name or '(' but found ')'"},
        Rejection{"FOO(1)", "unknown function 'FOO' at position 1"},
        Rejection{"A + UNKNOWN", "unknown identifier 'UNKNOWN' at position 5"},
        Rejection{"a", "unknown identifier 'a'"}, Rejection{"A.Foo", "unknown identifier 'A.Foo'"},
        Rejection{"A.Entry.", "unknown identifier"}, Rejection{"1 +", "found end of formula"},
        Rejection{"* 2", "found '*' at position 1"}, Rejection{"1 ? 2", "expected ':'"},
        Rejection{"1 ? : 2", "found ':'"}, Rejection{"()", "found ')'"},
        Rejection{".", "unexpected character '.'"}, Rejection{"A ** ", "end of formula"},
        Rejection{"ROUND(A,B,A)", "function 'ROUND' takes 1 or 2 argument(s), not 3"}));

TEST(FormulaRejection, MessageQuotesTheFormula) {
  EXPECT_THAT(CompileError("A + $", Arithmetic::Integer), HasSubstr("in formula \"A + $\""));
  const std::string longText = "A +" + std::string(200, ' ') + "$";
  const std::string message = CompileError(longText, Arithmetic::Integer);
  EXPECT_THAT(message, HasSubstr("position 204"));
  EXPECT_LT(message.size(), 160U) << "long formulas are shortened in messages";
}

TEST(FormulaRejection, LiteralTooLargeOnlyForIntegers) {
  EXPECT_THAT(CompileError("99999999999999999999", Arithmetic::Integer), HasSubstr("does not fit"));
  EXPECT_EQ(CompileError("99999999999999999999", Arithmetic::Float), "");
}

TEST(FormulaRejection, NestingAndLengthAreBounded) {
  EXPECT_EQ(CompileError(Repeat("(", 250) + "1" + Repeat(")", 250), Arithmetic::Integer), "");
  const std::pair<std::string, const char*> cases[] = {
      {Repeat("(", 300) + "1" + Repeat(")", 300), "nested deeper than 256"},
      {Repeat("(", 50000), "nested"},
      {Repeat("-", 300) + "1", "nested"},
      {"2" + Repeat("**2", 300), "nested"},
      {"1" + Repeat("?1:1", 300), "nested"},
      {Repeat("SGN(", 300) + "1" + Repeat(")", 300), "nested"},
      {"1" + Repeat("+1", 32 * 1024 + 1), "longer than 65536"},
  };
  for (const auto& [text, fragment] : cases)
    for (Arithmetic arithmetic : {Arithmetic::Integer, Arithmetic::Float})
      EXPECT_THAT(CompileError(text, arithmetic), HasSubstr(fragment)) << text.substr(0, 20);
}

TEST(FormulaRejection, EvaluationErrorsNameTheOperation) {
  FakeVariables zeros(true);
  const struct {
    const char* text;
    Arithmetic arithmetic;
    const char* message;
  } cases[] = {
      {"1 + A / B", Arithmetic::Integer, "division by zero at position 7"},
      {"A % 0", Arithmetic::Integer, "remainder by zero at position 3"},
      {"0 ** -1", Arithmetic::Integer, "zero raised to a negative power at position 3"},
      {"1 / A", Arithmetic::Float, "division by zero at position 3"},
      {"2.5 % B", Arithmetic::Float, "remainder by zero at position 5"},
      {"0 ** -1", Arithmetic::Float, ""},  // pow gives infinity
  };
  for (const auto& c : cases) {
    const Formula formula = Formula::Compile(c.text, Declared(), c.arithmetic);
    EXPECT_EQ(ErrorOf([&] {
                c.arithmetic == Arithmetic::Integer ? void(formula.EvaluateInteger(zeros))
                                                    : void(formula.EvaluateFloat(zeros));
              }),
              c.message)
        << c.text;
  }
}

TEST(FormulaRejection, MovedFromFormulaFailsCleanly) {
  FakeVariables zeros(true);
  Formula formula = Formula::Compile("A", Declared(), Arithmetic::Integer);
  Formula taken = std::move(formula);
  EXPECT_EQ(taken.References().size(), 1U);
  EXPECT_THROW(formula.EvaluateInteger(zeros), FormulaError);  // NOLINT(bugprone-use-after-move)
  EXPECT_THROW(formula.EvaluateFloat(zeros), FormulaError);
  EXPECT_TRUE(formula.References().empty());
}

}  // namespace
