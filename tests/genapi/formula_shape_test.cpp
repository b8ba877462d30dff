// The shape of a formula: its text with the numeric literals masked. Texts of
// one shape must tokenise alike; anything the masking cannot vouch for is
// refused, so that the text is compiled on its own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../genicam/genapi/formula/FormulaLexer.h"

namespace {

using GenApi::formula::detail::Literal;
using GenApi::formula::detail::ShapeOf;

struct ShapeCase {
  const char* text;
  const char* shape;  // null: refused
  std::vector<int64_t> values;
};

TEST(FormulaShape, MasksPlainLiteralsAndRefusesTheRest) {
  const ShapeCase cases[] = {
      {"(SEL=0)?0x221700:0x1F", "(SEL=#)?########:####", {0, 0x221700, 0x1F}},
      {"P1+P2.Max+ 12", "P1+P2.Max+ ##", {12}},  // digits of names stay
      {"010*2", "###*#", {10, 2}},              // decimal despite the leading zero
      {"0xFFFFFFFFFFFFFFFF", "##################", {-1}},
      {"999999999999999", "###############", {999999999999999}},
      {"", "", {}},
      {"1.5*X", nullptr, {}},
      {"X*.5", nullptr, {}},
      {"1e3", nullptr, {}},
      {"1000000000000000", nullptr, {}},  // 16 digits: the lexer's long path
      {"0x10000000000000000", nullptr, {}},
      {"0x", nullptr, {}},
      {"12AB", nullptr, {}},
      {"1#2", nullptr, {}},  // the mark itself
  };
  for (const ShapeCase& c : cases) {
    std::string shape;
    std::vector<Literal> literals;
    const bool shaped = ShapeOf(c.text, shape, literals);
    ASSERT_EQ(shaped, c.shape != nullptr) << c.text;
    if (!shaped) continue;
    EXPECT_EQ(shape, c.shape) << c.text;
    ASSERT_EQ(literals.size(), c.values.size()) << c.text;
    for (size_t i = 0; i < literals.size(); ++i) {
      EXPECT_EQ(literals[i].integerValue, c.values[i]) << c.text;
      EXPECT_EQ(literals[i].floatValue, static_cast<double>(c.values[i])) << c.text;
      EXPECT_EQ(shape[literals[i].position - 1], '#') << c.text;
    }
  }
}

}  // namespace
