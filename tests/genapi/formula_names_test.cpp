// Variables with property suffixes, Constants and Expressions, read through a
// fake variable source that records what the formula asked for.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "../../genicam/genapi/formula/Formula.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;
using GenApi::formula::IVariableSource;
using GenApi::formula::VariableProperty;
using GenApi::formula::VariableRef;

using Key = std::tuple<std::size_t, VariableProperty, std::string>;

// Answers from a table; every request is logged.
class FakeSource : public IVariableSource {
 public:
  void Set(std::size_t index, double value, VariableProperty property = VariableProperty::Value,
           const std::string& entry = "") {
    values_[Key{index, property, entry}] = value;
  }
  int64_t GetInteger(const VariableRef& ref) override {
    ++integerReads;
    return static_cast<int64_t>(Lookup(ref));
  }
  double GetFloat(const VariableRef& ref) override {
    ++floatReads;
    return Lookup(ref);
  }
  int integerReads = 0;
  int floatReads = 0;

 private:
  double Lookup(const VariableRef& ref) {
    auto found = values_.find(Key{ref.index, ref.property, ref.entryName});
    if (found == values_.end()) throw std::out_of_range("no value for variable");
    return found->second;
  }
  std::map<Key, double> values_;
};

FormulaDeclarations Variables() {
  FormulaDeclarations declarations;
  declarations.variables = {"A", "B", "Sel", "FROM", "x.y"};
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
  FakeSource source;
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
}

TEST(FormulaVariables, EachArithmeticAsksItsOwnGetter) {
  FakeSource source;
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
  FakeSource source;
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
  FakeSource source;
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
  FakeSource source;  // knows no values
  const auto formula = Formula::Compile("A + 1", Variables(), Arithmetic::Integer);
  EXPECT_THROW(formula.EvaluateInteger(source), std::out_of_range);
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

struct NamedCase {
  const char* text;
  double expected;
};

class NamedValue : public ::testing::TestWithParam<NamedCase> {};

TEST_P(NamedValue, FloatKnife) {
  FakeSource source;
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
  FakeSource source;
  EXPECT_EQ(
      Formula::Compile("HALF + TEN", WithNames(), Arithmetic::Integer).EvaluateInteger(source), 10);
}

TEST(FormulaNames, ExpressionReferencesCountOnce) {
  const auto formula = Formula::Compile("TWICE + SUM + A", WithNames(), Arithmetic::Integer);
  ASSERT_EQ(formula.References().size(), 2U);
  EXPECT_EQ(formula.References()[0].index, 0U);
  EXPECT_EQ(formula.References()[1].index, 1U);
}

TEST(FormulaNames, BadDefinitionsAreReportedWhereUsed) {
  const auto error = [](const char* text) -> std::string {
    try {
      Formula::Compile(text, WithNames(), Arithmetic::Integer);
    } catch (const FormulaError& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_NE(
      error("P").find("in expression 'P': in expression 'Q': expression 'P' refers to itself"),
      std::string::npos)
      << error("P");
  EXPECT_NE(error("SELF").find("refers to itself"), std::string::npos);
  EXPECT_NE(error("1 + BROKEN").find("in expression 'BROKEN': expected a number"),
            std::string::npos);
  EXPECT_NE(error("BAD").find("in constant 'BAD'"), std::string::npos);
  EXPECT_NE(error("USESVAR").find("unknown identifier 'A'"), std::string::npos);
  EXPECT_EQ(error("TEN + SUM"), "");  // unused broken definitions do not matter
}

TEST(FormulaNames, ExpressionBlowUpIsBounded) {
  FormulaDeclarations declarations;
  declarations.variables = {"X"};
  declarations.expressions.push_back({"E0", "X"});
  for (int i = 1; i <= 12; ++i) {
    const std::string p = "E" + std::to_string(i - 1);
    declarations.expressions.push_back({"E" + std::to_string(i), p + "+" + p + "+" + p + "+" + p});
  }
  FakeSource source;
  source.Set(0, 1);
  EXPECT_EQ(Formula::Compile("E5", declarations, Arithmetic::Integer).EvaluateInteger(source),
            1024);
  // Each level quadruples the code: the size limit stops the blow-up.
  try {
    Formula::Compile("E12", declarations, Arithmetic::Integer);
    ADD_FAILURE() << "expected a failure";
  } catch (const FormulaError& e) {
    EXPECT_NE(std::string(e.what()).find("too large"), std::string::npos) << e.what();
  }
}

TEST(FormulaNames, ExpressionChainsAreBounded) {
  FormulaDeclarations declarations;
  declarations.variables = {"X"};
  declarations.expressions.push_back({"C0", "X"});
  for (int i = 1; i <= 20; ++i) {
    declarations.expressions.push_back(
        {"C" + std::to_string(i), "C" + std::to_string(i - 1) + "+1"});
  }
  FakeSource source;
  source.Set(0, 1);
  EXPECT_EQ(Formula::Compile("C10", declarations, Arithmetic::Integer).EvaluateInteger(source), 11);
  try {
    Formula::Compile("C20", declarations, Arithmetic::Integer);
    ADD_FAILURE() << "expected a failure";
  } catch (const FormulaError& e) {
    EXPECT_NE(std::string(e.what()).find("expressions nested deeper than 16"), std::string::npos)
        << e.what();
  }
}

TEST(FormulaNames, CopiesShareTheProgram) {
  FakeSource source;
  source.Set(0, 3);
  Formula original = Formula::Compile("A * 2", Variables(), Arithmetic::Integer);
  Formula copy = original;
  original = Formula::Compile("A * 3", Variables(), Arithmetic::Integer);
  EXPECT_EQ(copy.EvaluateInteger(source), 6);
  EXPECT_EQ(original.EvaluateInteger(source), 9);
}

}  // namespace
