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

// A numeric literal of a formula: where it starts (1-based) and its value in
// each arithmetic, as the lexer reads it.
struct Literal {
  std::uint32_t position = 0;
  std::int64_t integerValue = 0;
  double floatValue = 0.0;
};

// The character that stands for a literal's characters in a shape; the
// language has no use for it.
constexpr char kLiteralMark = '#';

// Writes into shape the text with every character of its numeric literals
// replaced by kLiteralMark, and lists the literals in order. Texts of one
// shape tokenise alike, literal for literal, so they compile to one program
// but for the constants of their literals. False, with nothing to rely on,
// when the text holds a literal only the full lexer reads (fractions,
// exponents, decimals of more than 15 digits) or the mark itself.
bool ShapeOf(std::string_view text, std::string& shape, std::vector<Literal>& literals);

// Readable name of a token kind for messages ("')'", "end of formula").
std::string Describe(const Token& token);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
