// Texts the compiler must refuse, with a message naming the problem and where
// it is, and evaluations that must fail cleanly.
#include <gtest/gtest.h>

#include <string>

#include "../../genicam/genapi/formula/Formula.h"
#include "ZeroVariables.h"

namespace {

using GenApi::formula::Arithmetic;
using GenApi::formula::Formula;
using GenApi::formula::FormulaDeclarations;
using GenApi::formula::FormulaError;

FormulaDeclarations Declared() {
  FormulaDeclarations declarations;
  declarations.variables = {"A", "B"};
  return declarations;
}

std::string CompileError(const std::string& text, Arithmetic arithmetic) {
  try {
    Formula::Compile(text, Declared(), arithmetic);
  } catch (const FormulaError& error) {
    return error.what();
  }
  return "";
}

struct Rejection {
  const char* text;
  const char* messagePart;  // a fragment the message must contain
};

void PrintTo(const Rejection& rejection, std::ostream* os) { *os << rejection.text; }

class RejectedInBothKnives : public ::testing::TestWithParam<Rejection> {};

TEST_P(RejectedInBothKnives, WithMessage) {
  for (Arithmetic arithmetic : {Arithmetic::Integer, Arithmetic::Float}) {
    const std::string message = CompileError(GetParam().text, arithmetic);
    EXPECT_NE(message.find(GetParam().messagePart), std::string::npos)
        << "formula [" << GetParam().text << "] gave [" << message << "]";
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
        Rejection{".", "unexpected character '.'"}, Rejection{"A ** ", "end of formula"}));

TEST(FormulaRejection, MessageQuotesTheFormula) {
  EXPECT_NE(CompileError("A + $", Arithmetic::Integer).find("in formula \"A + $\""),
            std::string::npos);
  const std::string longText = "A +" + std::string(200, ' ') + "$";
  const std::string message = CompileError(longText, Arithmetic::Integer);
  EXPECT_NE(message.find("position 204"), std::string::npos) << message;
  EXPECT_LT(message.size(), 160U) << "long formulas are shortened in messages";
}

TEST(FormulaRejection, ArgumentCountAndLiteralRange) {
  for (Arithmetic arithmetic : {Arithmetic::Integer, Arithmetic::Float}) {
    EXPECT_NE(CompileError("ROUND(A,B,A)", arithmetic).find("takes 1 or 2 argument(s), not 3"),
              std::string::npos);
  }
  EXPECT_NE(CompileError("99999999999999999999", Arithmetic::Integer).find("does not fit"),
            std::string::npos);
  EXPECT_EQ(CompileError("99999999999999999999", Arithmetic::Float), "");
}

TEST(FormulaRejection, NestingIsBounded) {
  const auto nested = [](int depth) {
    return std::string(static_cast<std::size_t>(depth), '(') + "1" +
           std::string(static_cast<std::size_t>(depth), ')');
  };
  EXPECT_EQ(CompileError(nested(250), Arithmetic::Integer), "");
  EXPECT_NE(CompileError(nested(300), Arithmetic::Integer).find("nested deeper than 256"),
            std::string::npos);
  EXPECT_NE(CompileError(std::string(100000 / 2, '('), Arithmetic::Integer).find("nested"),
            std::string::npos);
  EXPECT_NE(CompileError(std::string(300, '-') + "1", Arithmetic::Float).find("nested"),
            std::string::npos);
  std::string powers = "2";
  for (int i = 0; i < 300; ++i) powers += "**2";
  EXPECT_NE(CompileError(powers, Arithmetic::Float).find("nested"), std::string::npos);
  std::string conditionals = "1";
  for (int i = 0; i < 300; ++i) conditionals += "?1:1";
  EXPECT_NE(CompileError(conditionals, Arithmetic::Integer).find("nested"), std::string::npos);
  std::string calls = "1";
  for (int i = 0; i < 300; ++i) calls = "SGN(" + calls + ")";
  EXPECT_NE(CompileError(calls, Arithmetic::Integer).find("nested"), std::string::npos);
}

TEST(FormulaRejection, LengthIsBounded) {
  std::string text = "1";
  while (text.size() <= 64 * 1024) text += "+1";
  EXPECT_NE(CompileError(text, Arithmetic::Integer).find("longer than 65536"), std::string::npos);
}

TEST(FormulaRejection, EvaluationErrorsNameTheOperation) {
  genapi_test::ZeroVariables zeros;
  const auto evalError = [&](const char* text, Arithmetic arithmetic) -> std::string {
    const Formula formula = Formula::Compile(text, Declared(), arithmetic);
    try {
      if (arithmetic == Arithmetic::Integer) {
        formula.EvaluateInteger(zeros);
      } else {
        formula.EvaluateFloat(zeros);
      }
    } catch (const FormulaError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(evalError("1 + A / B", Arithmetic::Integer), "division by zero at position 7");
  EXPECT_EQ(evalError("A % 0", Arithmetic::Integer), "remainder by zero at position 3");
  EXPECT_EQ(evalError("0 ** -1", Arithmetic::Integer),
            "zero raised to a negative power at position 3");
  EXPECT_EQ(evalError("1 / A", Arithmetic::Float), "division by zero at position 3");
  EXPECT_EQ(evalError("2.5 % B", Arithmetic::Float), "remainder by zero at position 5");
  EXPECT_EQ(evalError("0 ** -1", Arithmetic::Float), "");  // pow gives infinity
}

TEST(FormulaRejection, MovedFromFormulaFailsCleanly) {
  genapi_test::ZeroVariables zeros;
  Formula formula = Formula::Compile("A", Declared(), Arithmetic::Integer);
  Formula taken = std::move(formula);
  EXPECT_EQ(taken.References().size(), 1U);
  EXPECT_THROW(formula.EvaluateInteger(zeros), FormulaError);  // NOLINT(bugprone-use-after-move)
  EXPECT_THROW(formula.EvaluateFloat(zeros), FormulaError);
  EXPECT_TRUE(formula.References().empty());
}

}  // namespace
