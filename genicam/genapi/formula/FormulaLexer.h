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

enum class TokenKind {
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
  std::size_t position = 0;  // 1-based
  std::string_view text;
  // Numbers: the value as each arithmetic sees it. Hex literals are 64-bit
  // patterns; decimal literals keep their value (float) and truncate (integer).
  std::int64_t integerValue = 0;
  bool integerValid = true;  // false for decimal integers beyond 64 bits
  double floatValue = 0.0;
};

// Throws FormulaError naming the offending character and its position.
std::vector<Token> Tokenize(std::string_view text);

// Readable name of a token kind for messages ("')'", "end of formula").
std::string Describe(const Token& token);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
