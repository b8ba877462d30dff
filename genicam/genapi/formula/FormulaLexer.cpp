#include "FormulaLexer.h"

#include <charconv>
#include <cstring>
#include <cstdio>
#include <limits>

#include "Formula.h"
#include "FormulaNumeric.h"

namespace GenApi {
namespace formula {
namespace detail {
namespace {

// Character classes, one table look-up per character.
enum CharClass : std::uint8_t {
  kDigit = 1,
  kHexDigit = 2,
  kIdentifierStart = 4,
  kIdentifierChar = 8,
  kSpace = 16,
};

struct CharClasses {
  std::uint8_t bits[256] = {};
  constexpr CharClasses() {
    for (int c = '0'; c <= '9'; ++c) bits[c] = kDigit | kHexDigit | kIdentifierChar;
    for (int c = 'a'; c <= 'z'; ++c) bits[c] = kIdentifierStart | kIdentifierChar;
    for (int c = 'A'; c <= 'Z'; ++c) bits[c] = kIdentifierStart | kIdentifierChar;
    for (int c = 'a'; c <= 'f'; ++c) bits[c] |= kHexDigit;
    for (int c = 'A'; c <= 'F'; ++c) bits[c] |= kHexDigit;
    bits[int('_')] = kIdentifierStart | kIdentifierChar;
    bits[int('.')] = kIdentifierChar;
    bits[int(' ')] = bits[int('\t')] = bits[int('\r')] = bits[int('\n')] = kSpace;
  }
};
constexpr CharClasses kClasses;

bool Is(char c, CharClass cls) { return (kClasses.bits[static_cast<unsigned char>(c)] & cls) != 0; }
bool IsDigit(char c) { return Is(c, kDigit); }
bool IsHexDigit(char c) { return Is(c, kHexDigit); }
bool IsIdentifierStart(char c) { return Is(c, kIdentifierStart); }
bool IsIdentifierChar(char c) { return Is(c, kIdentifierChar); }
bool IsSpace(char c) { return Is(c, kSpace); }

// The value of a hex digit: the low four bits, plus 9 for letters.
int HexDigitValue(char c) { return (c & 0xF) + (c > '9' ? 9 : 0); }

[[noreturn]] void FailAt(const std::string& what, std::size_t position) {
  throw FormulaError(what + " at position " + std::to_string(position));
}

std::string Printable(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (byte >= 0x20 && byte < 0x7F) return std::string("'") + c + "'";
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "0x%02X", static_cast<unsigned>(byte));
  return buffer;
}

// Decimal integers of up to this many digits fit a double exactly.
constexpr std::size_t kExactDigits = 15;

// Reads one token at pos, moving pos past it.
class Lexer {
 public:
  Lexer(std::string_view text, std::size_t& pos) : text_(text), pos_(pos) {}

  Token Run() {
    while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
    if (pos_ < text_.size()) return Next();
    Token end;
    end.kind = TokenKind::End;
    end.position = static_cast<std::uint32_t>(text_.size() + 1);
    return end;
  }

 private:
  char At(std::size_t index) const { return index < text_.size() ? text_[index] : '\0'; }

  Token Make(TokenKind kind, std::size_t length) {
    Token token;
    token.kind = kind;
    token.position = static_cast<std::uint32_t>(pos_ + 1);
    token.text = text_.substr(pos_, length);
    pos_ += length;
    return token;
  }

  Token Next() {
    const char c = text_[pos_];
    if (IsDigit(c) || (c == '.' && IsDigit(At(pos_ + 1)))) return Number();
    if (IsIdentifierStart(c)) return Identifier();
    return Symbol(c);
  }

  Token Identifier() {
    std::size_t end = pos_;
    while (end < text_.size() && IsIdentifierChar(text_[end])) ++end;
    return Make(TokenKind::Identifier, end - pos_);
  }

  Token Number() {
    if (text_[pos_] == '0' && (At(pos_ + 1) == 'x' || At(pos_ + 1) == 'X')) return HexNumber();
    return DecimalNumber();
  }

  void RejectTrailingIdentifierChars(std::size_t end) const {
    if (end < text_.size() && IsIdentifierChar(text_[end])) {
      FailAt("malformed number '" + std::string(text_.substr(pos_, end - pos_ + 1)) + "'",
             pos_ + 1);
    }
  }

  Token HexNumber() {
    std::size_t end = pos_ + 2;
    std::uint64_t bits = 0;
    while (end < text_.size() && IsHexDigit(text_[end])) {
      if (bits > (std::numeric_limits<std::uint64_t>::max() >> 4)) {
        FailAt("hexadecimal number wider than 64 bits", pos_ + 1);
      }
      bits = (bits << 4) | static_cast<std::uint64_t>(HexDigitValue(text_[end]));
      ++end;
    }
    if (end == pos_ + 2) FailAt("hexadecimal number without digits", pos_ + 1);
    RejectTrailingIdentifierChars(end);
    Token token = Make(TokenKind::Number, end - pos_);
    token.integerValue = static_cast<std::int64_t>(bits);
    token.floatValue = static_cast<double>(token.integerValue);
    return token;
  }

  std::size_t SkipDigits(std::size_t index) const {
    while (index < text_.size() && IsDigit(text_[index])) ++index;
    return index;
  }

  Token DecimalNumber() {
    std::size_t end = SkipDigits(pos_);
    bool isInteger = true;
    if (At(end) == '.') {
      isInteger = false;
      end = SkipDigits(end + 1);
    }
    const char e = At(end);
    if (e == 'e' || e == 'E') {
      std::size_t exponent = end + 1;
      if (At(exponent) == '+' || At(exponent) == '-') ++exponent;
      if (IsDigit(At(exponent))) {
        isInteger = false;
        end = SkipDigits(exponent);
      }
    }
    RejectTrailingIdentifierChars(end);
    Token token = Make(TokenKind::Number, end - pos_);
    if (isInteger && token.text.size() <= kExactDigits) {
      // Short integers are exact in both arithmetics; no general parse needed.
      std::int64_t value = 0;
      for (char digit : token.text) value = value * 10 + (digit - '0');
      token.integerValue = value;
      token.floatValue = static_cast<double>(value);
      return token;
    }
    token.floatValue = ParseFloatLiteral(token.text);
    if (isInteger) {
      token.integerValid = ParseDecimalBits(token.text, token.integerValue);
    } else {
      token.integerValue = SaturateToInteger(token.floatValue);
    }
    return token;
  }

  static double ParseFloatLiteral(std::string_view text) {
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
      return DecimalMagnitude(text) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return value;
  }

  // Rough power of ten of a decimal literal, enough to tell overflow from underflow.
  static long DecimalMagnitude(std::string_view text) {
    std::size_t i = 0;
    long magnitude = 0;
    bool seenNonZero = false;
    for (; i < text.size() && IsDigit(text[i]); ++i) {
      if (seenNonZero || text[i] != '0') {
        if (seenNonZero) ++magnitude;
        seenNonZero = true;
      }
    }
    if (i < text.size() && text[i] == '.') {
      for (++i; i < text.size() && IsDigit(text[i]); ++i) {
        if (!seenNonZero) {
          --magnitude;
          seenNonZero = text[i] != '0';
        }
      }
    }
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
      ++i;
      const bool negative = i < text.size() && text[i] == '-';
      if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
      long exponent = 0;
      for (; i < text.size() && IsDigit(text[i]); ++i) {
        if (exponent < 100000) exponent = exponent * 10 + (text[i] - '0');
      }
      magnitude += negative ? -exponent : exponent;
    }
    return magnitude;
  }

  // Decimal integers up to 2^64-1 are read as 64-bit patterns.
  static bool ParseDecimalBits(std::string_view text, std::int64_t& value) {
    std::uint64_t bits = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), bits);
    if (result.ec != std::errc()) return false;
    value = static_cast<std::int64_t>(bits);
    return true;
  }

  Token Symbol(char c) {
    const char next = At(pos_ + 1);
    switch (c) {
      case '(':
        return Make(TokenKind::LeftParen, 1);
      case ')':
        return Make(TokenKind::RightParen, 1);
      case ',':
        return Make(TokenKind::Comma, 1);
      case '?':
        return Make(TokenKind::Question, 1);
      case ':':
        return Make(TokenKind::Colon, 1);
      case '+':
        return Make(TokenKind::Plus, 1);
      case '-':
        return Make(TokenKind::Minus, 1);
      case '/':
        return Make(TokenKind::Slash, 1);
      case '%':
        return Make(TokenKind::Percent, 1);
      case '^':
        return Make(TokenKind::Caret, 1);
      case '~':
        return Make(TokenKind::Tilde, 1);
      case '*':
        return next == '*' ? Make(TokenKind::StarStar, 2) : Make(TokenKind::Star, 1);
      case '&':
        return next == '&' ? Make(TokenKind::AmpAmp, 2) : Make(TokenKind::Amp, 1);
      case '|':
        return next == '|' ? Make(TokenKind::PipePipe, 2) : Make(TokenKind::Pipe, 1);
      case '<':
        if (next == '<') return Make(TokenKind::ShiftLeft, 2);
        if (next == '=') return Make(TokenKind::LessEqual, 2);
        if (next == '>') return Make(TokenKind::NotEqual, 2);
        return Make(TokenKind::Less, 1);
      case '>':
        if (next == '>') return Make(TokenKind::ShiftRight, 2);
        if (next == '=') return Make(TokenKind::GreaterEqual, 2);
        return Make(TokenKind::Greater, 1);
      case '=':
        if (next == '=') FailAt("'==' is not an operator (equality is '=')", pos_ + 1);
        return Make(TokenKind::Equal, 1);
      case '!':
        FailAt("'!' is not an operator (use '<>' or '= 0')", pos_ + 1);
      case '"':
      case '\'':
        FailAt("quoted strings are not allowed", pos_ + 1);
      default:
        FailAt("unexpected character " + Printable(c), pos_ + 1);
    }
  }

  std::string_view text_;
  std::size_t& pos_;
};

// Kinds of the one-character tokens and of the first character of the
// two-character ones; End for characters that start something else.
struct SymbolTokens {
  TokenKind kind[256] = {};
  constexpr SymbolTokens() {
    kind[int('(')] = TokenKind::LeftParen;
    kind[int(')')] = TokenKind::RightParen;
    kind[int(',')] = TokenKind::Comma;
    kind[int('?')] = TokenKind::Question;
    kind[int(':')] = TokenKind::Colon;
    kind[int('+')] = TokenKind::Plus;
    kind[int('-')] = TokenKind::Minus;
    kind[int('/')] = TokenKind::Slash;
    kind[int('%')] = TokenKind::Percent;
    kind[int('^')] = TokenKind::Caret;
    kind[int('~')] = TokenKind::Tilde;
    kind[int('*')] = TokenKind::Star;
    kind[int('&')] = TokenKind::Amp;
    kind[int('|')] = TokenKind::Pipe;
    kind[int('<')] = TokenKind::Less;
    kind[int('>')] = TokenKind::Greater;
    kind[int('=')] = TokenKind::Equal;
  }
};
constexpr SymbolTokens kSymbolTokens;

// The two-character operator starting with first and second, or End.
TokenKind Pair(TokenKind first, char second) {
  switch (first) {
    case TokenKind::Star: return second == '*' ? TokenKind::StarStar : TokenKind::End;
    case TokenKind::Amp: return second == '&' ? TokenKind::AmpAmp : TokenKind::End;
    case TokenKind::Pipe: return second == '|' ? TokenKind::PipePipe : TokenKind::End;
    case TokenKind::Less:
      if (second == '<') return TokenKind::ShiftLeft;
      if (second == '=') return TokenKind::LessEqual;
      return second == '>' ? TokenKind::NotEqual : TokenKind::End;
    case TokenKind::Greater:
      if (second == '>') return TokenKind::ShiftRight;
      return second == '=' ? TokenKind::GreaterEqual : TokenKind::End;
    default: return TokenKind::End;
  }
}

// Reads a plain number at p: a decimal integer of up to kExactDigits digits
// or a hex literal of up to 16 digits, followed by something that is no part
// of a name. Returns where it ends, or null to leave it to the lexer.
const char* ReadPlainNumber(const char* p, const char* end, std::uint64_t& value) {
  value = 0;
  const char* q = p;
  if (p + 1 != end && p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
    for (q = p + 2; q != end && IsHexDigit(*q); ++q)
      value = (value << 4) | static_cast<std::uint64_t>(HexDigitValue(*q));
    if (q == p + 2 || q - (p + 2) > 16) return nullptr;
  } else {
    for (; q != end && IsDigit(*q); ++q) value = value * 10 + static_cast<std::uint64_t>(*q - '0');
    if (q == p || static_cast<std::size_t>(q - p) > kExactDigits) return nullptr;
  }
  return q != end && IsIdentifierChar(*q) ? nullptr : q;
}

bool ReadPlainNumber(const char* p, const char* end, const char*& next, Token& token) {
  std::uint64_t value = 0;
  const char* q = ReadPlainNumber(p, end, value);
  if (!q) return false;
  token.kind = TokenKind::Number;
  token.integerValid = true;
  token.integerValue = static_cast<std::int64_t>(value);
  token.floatValue = static_cast<double>(token.integerValue);
  next = q;
  return true;
}

// Reads the token at p into token and returns where the next one may start.
// Operators, names and plain numbers, nearly all of a formula's tokens, are
// read here; the end, other numbers and errors by the lexer.
const char* ReadToken(std::string_view text, const char* p, Token& token) {
  const char* const end = text.data() + text.size();
  while (p != end && IsSpace(*p)) ++p;
  const char c = p != end ? *p : '\0';
  const TokenKind symbol = kSymbolTokens.kind[static_cast<unsigned char>(c)];
  const char* next = p + 1;
  if (symbol != TokenKind::End && !(symbol == TokenKind::Equal && next != end && *next == '=')) {
    token.kind = symbol;
    if (next != end) {
      const TokenKind pair = Pair(symbol, *next);
      if (pair != TokenKind::End) {
        token.kind = pair;
        ++next;
      }
    }
  } else if (IsIdentifierStart(c)) {
    token.kind = TokenKind::Identifier;
    while (next != end && IsIdentifierChar(*next)) ++next;
  } else if (!IsDigit(c) || !ReadPlainNumber(p, end, next, token)) {
    std::size_t pos = static_cast<std::size_t>(p - text.data());
    token = Lexer(text, pos).Run();
    return text.data() + pos;
  }
  token.position = static_cast<std::uint32_t>(p - text.data() + 1);
  token.text = std::string_view(p, static_cast<std::size_t>(next - p));
  return next;
}

}  // namespace

TokenList::TokenList(std::string_view text, std::vector<Token>& storage) : tokens_(storage) {
  // A token takes at least one character; End or Invalid comes last.
  if (tokens_.size() < text.size() + 2) tokens_.resize(text.size() + 2);
  const char* p = text.data();
  Token* token = tokens_.data();
  try {
    do p = ReadToken(text, p, *token);
    while ((token++)->kind != TokenKind::End);
  } catch (const FormulaError& error) {
    error_ = error.what();
    token->kind = TokenKind::Invalid;
  }
}

bool ShapeOf(std::string_view text, std::string& shape, std::vector<Literal>& literals) {
  literals.clear();
  if (text.find(kLiteralMark) != std::string_view::npos) return false;
  shape.assign(text.data(), text.size());
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  for (const char* p = begin; p != end;) {
    const std::uint8_t cls = kClasses.bits[static_cast<unsigned char>(*p)];
    if ((cls & (kIdentifierStart | kIdentifierChar)) == 0) {  // operators, brackets, spaces
      ++p;
      continue;
    }
    if (cls & kIdentifierStart) {  // digits inside names are no literals
      do ++p;
      while (p != end && IsIdentifierChar(*p));
      continue;
    }
    if ((cls & kDigit) == 0) {  // '.', a fraction when a digit follows
      if (p + 1 != end && IsDigit(p[1])) return false;
      ++p;
      continue;
    }
    // The lexer reads a token starting with a digit the same way.
    std::uint64_t value = 0;
    const char* next = ReadPlainNumber(p, end, value);
    if (!next) return false;
    const auto at = static_cast<std::size_t>(p - begin);
    Literal& literal = literals.emplace_back();
    literal.position = static_cast<std::uint32_t>(at + 1);
    literal.integerValue = static_cast<std::int64_t>(value);
    literal.floatValue = static_cast<double>(literal.integerValue);
    std::memset(&shape[at], kLiteralMark, static_cast<std::size_t>(next - p));
    p = next;
  }
  return true;
}

void TokenList::ThrowInvalid() const { throw FormulaError(error_); }

std::string Describe(const Token& token) {
  if (token.kind == TokenKind::End) return "end of formula";
  return "'" + std::string(token.text) + "'";
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
