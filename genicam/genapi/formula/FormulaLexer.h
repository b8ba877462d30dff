// Splits formula text into tokens. Rejects characters and spellings the
// language does not have (==, !, $, #, quotes, malformed numbers).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi {
namespace formula {
namespace detail {

enum class TokenKind : std::uint8_t {
  End,
  Number,
  Identifier,
  LeftParen,
  RightParen,
  Comma,
  Question,
  Colon,
  Plus,
  Minus,
  Star,
  Slash,
  Percent,
  StarStar,
  Amp,
  AmpAmp,
  Pipe,
  PipePipe,
  Caret,
  Tilde,
  ShiftLeft,
  ShiftRight,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  Equal,
  NotEqual,
};

struct Token {
  TokenKind kind = TokenKind::End;
  bool integerValid = true;  // false for decimal integers beyond 64 bits
  std::uint32_t position = 0;  // 1-based
  std::string_view text;
  // Numbers: the value as each arithmetic sees it. Hex literals are 64-bit
  // patterns; decimal literals keep their value (float) and truncate (integer).
  std::int64_t integerValue = 0;
  double floatValue = 0.0;
};

// Hands out the tokens of a formula one at a time, End after the last.
// Next() throws FormulaError naming the offending character and its position.
class TokenStream {
 public:
  explicit TokenStream(std::string_view text) : text_(text) {}
  Token Next();

 private:
  std::string_view text_;
  std::size_t pos_ = 0;
};

// Readable name of a token kind for messages ("')'", "end of formula").
std::string Describe(const Token& token);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
