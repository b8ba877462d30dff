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
  Invalid,  // text the language does not have; reading it throws the lexer's error
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

// The tokens of a formula, read in one pass: End after the last, or Invalid
// where the text stops making sense. The parser reads them in order; reaching
// the Invalid token throws the FormulaError that names the offending character
// and its position, so errors surface where a token-at-a-time reader would
// raise them.
class TokenList {
 public:
  // The tokens are kept in storage, which may hold a previous formula's.
  TokenList(std::string_view text, std::vector<Token>& storage);
  const Token& operator[](std::size_t index) const { return tokens_[index]; }
  [[noreturn]] void ThrowInvalid() const;

 private:
  std::vector<Token>& tokens_;
  std::string error_;  // the lexer's message for the Invalid token
};

// Readable name of a token kind for messages ("')'", "end of formula").
std::string Describe(const Token& token);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
