// Parser that emits postfix code as it goes. Precedence, lowest first:
// ?: (right), ||, &&, |, ^, &, = <>, < <= > >=, << >>, + -, * / %,
// ** (right), unary - + ~. The binary levels are parsed by precedence
// climbing (one call per operand, not per level); only nesting (parentheses,
// calls, prefixes, right-associative operators) costs recursion, and that is
// bounded.
#include "FormulaCompiler.h"

#include <string>
#include <vector>

#include "FormulaCodeBuilder.h"
#include "FormulaFunctions.h"
#include "FormulaLexer.h"
#include "FormulaNumeric.h"

namespace GenApi {
namespace formula {
namespace detail {
namespace {

[[noreturn]] void FailAt(const std::string& what, std::size_t position) {
  throw FormulaError(what + " at position " + std::to_string(position));
}

struct BinaryOperator {
  int level;  // -1 for tokens that are no such operator
  OpCode op;  // for the levels above &&
};

constexpr int kConditionalLevel = 0;
constexpr int kOrLevel = 1;
constexpr int kAndLevel = 2;

// The binary operators below ** (and the ? of ?:), by token, lowest level first.
struct BinaryOperators {
  BinaryOperator of[size_t(TokenKind::Invalid) + 1] = {};
  constexpr void Set(TokenKind token, int level, OpCode op) { of[size_t(token)] = {level, op}; }
  constexpr BinaryOperators() {
    for (auto& entry : of) entry = {-1, OpCode::Add};
    Set(TokenKind::Question, kConditionalLevel, OpCode::Jump);
    Set(TokenKind::PipePipe, kOrLevel, OpCode::Jump);
    Set(TokenKind::AmpAmp, kAndLevel, OpCode::Jump);
    Set(TokenKind::Pipe, 3, OpCode::BitOr);
    Set(TokenKind::Caret, 4, OpCode::BitXor);
    Set(TokenKind::Amp, 5, OpCode::BitAnd);
    Set(TokenKind::Equal, 6, OpCode::Equal);
    Set(TokenKind::NotEqual, 6, OpCode::NotEqual);
    Set(TokenKind::Less, 7, OpCode::Less);
    Set(TokenKind::LessEqual, 7, OpCode::LessEqual);
    Set(TokenKind::Greater, 7, OpCode::Greater);
    Set(TokenKind::GreaterEqual, 7, OpCode::GreaterEqual);
    Set(TokenKind::ShiftLeft, 8, OpCode::ShiftLeft);
    Set(TokenKind::ShiftRight, 8, OpCode::ShiftRight);
    Set(TokenKind::Plus, 9, OpCode::Add);
    Set(TokenKind::Minus, 9, OpCode::Subtract);
    Set(TokenKind::Star, 10, OpCode::Multiply);
    Set(TokenKind::Slash, 10, OpCode::Divide);
    Set(TokenKind::Percent, 10, OpCode::Remainder);
  }
};
constexpr BinaryOperators kBinaryOperators;

bool IsPrefix(TokenKind kind) {
  return kind == TokenKind::Minus || kind == TokenKind::Plus || kind == TokenKind::Tilde;
}

class Parser {
 public:
  Parser(std::string_view text, Scope& scope, Arithmetic arithmetic, CompileScratch& scratch)
      : tokens_(text, scratch.tokens),
        scope_(scope),
        builder_(arithmetic, scratch.code),
        literals_(scratch.literals) {
    literals_.clear();
    if (tokens_[0].kind == TokenKind::Invalid) tokens_.ThrowInvalid();
  }

  Code Run() {
    if (Peek().kind == TokenKind::End) throw FormulaError("empty formula");
    ParseConditional();
    if (Peek().kind != TokenKind::End) {
      FailAt("unexpected " + Describe(Peek()) + " after a complete expression", Peek().position);
    }
    return builder_.Finish();
  }

 private:
  // Counts one level of nesting for as long as it lives.
  class NestingGuard {
   public:
    NestingGuard(Parser& parser, std::size_t position) : parser_(parser) {
      if (++parser_.depth_ > kMaxNestingDepth) {
        FailAt("formula nested deeper than " + std::to_string(kMaxNestingDepth) + " levels",
               position);
      }
    }
    ~NestingGuard() { --parser_.depth_; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;

   private:
    Parser& parser_;
  };

  const Token& Peek() const { return *current_; }
  const Token& PeekAhead() const {
    if (Peek().kind == TokenKind::End) return Peek();
    const Token& ahead = current_[1];
    if (ahead.kind == TokenKind::Invalid) tokens_.ThrowInvalid();
    return ahead;
  }
  // Moves on; returns the position of the token moved past.
  std::size_t Advance() {
    const Token& current = Peek();
    if (current.kind == TokenKind::End) return current.position;
    if ((++current_)->kind == TokenKind::Invalid) tokens_.ThrowInvalid();
    return current.position;
  }
  void Expect(TokenKind kind, const char* what) {
    if (Peek().kind != kind) FailExpected(what);
    Advance();
  }
  [[noreturn]] void FailExpected(const char* what) const {
    FailAt(std::string("expected ") + what + " but found " + Describe(Peek()), Peek().position);
  }

  void PushTruth(int value, std::size_t position) {
    if (builder_.GetArithmetic() == Arithmetic::Integer) {
      builder_.PushInteger(value, position);
    } else {
      builder_.PushFloat(value, position);
    }
  }

  // A whole expression: ?: and everything that binds tighter.
  void ParseConditional() {
    NestingGuard guard(*this, Peek().position);
    ParseBinary(0);
  }

  // Operators of at least minLevel, by precedence climbing: the right operand
  // of an operator is parsed with the next level up, so chains of one level
  // stay left-associative and each operand costs one call, not one per level.
  // ?: (level 0) is right-associative: both branches are whole expressions.
  void ParseBinary(int minLevel) {
    ParsePower();
    for (;;) {
      const BinaryOperator match = kBinaryOperators.of[size_t(Peek().kind)];
      if (match.level < minLevel) return;
      const std::size_t position = Advance();
      switch (match.level) {
        case kConditionalLevel: ParseBranches(position); break;
        case kOrLevel: ParseOrRight(position); break;
        case kAndLevel: ParseAndRight(position); break;
        default:
          ParseBinary(match.level + 1);
          builder_.Emit(match.op, position);
      }
    }
  }

  // condition ? a : b, with the condition already parsed.
  void ParseBranches(std::size_t position) {
    const std::size_t jumpToElse = builder_.EmitJump(OpCode::JumpIfZero, position);
    const std::size_t height = builder_.Height();
    ParseConditional();
    Expect(TokenKind::Colon, "':' of '?:'");
    const std::size_t jumpToEnd = builder_.EmitJump(OpCode::Jump, position);
    builder_.PatchJumpToHere(jumpToElse);
    builder_.SetHeight(height);
    ParseConditional();
    builder_.PatchJumpToHere(jumpToEnd);
  }

  // a || b: b is evaluated only when a is zero. Result 0 or 1.
  void ParseOrRight(std::size_t position) {
    const std::size_t jumpToRight = builder_.EmitJump(OpCode::JumpIfZero, position);
    const std::size_t height = builder_.Height();
    PushTruth(1, position);
    const std::size_t jumpToEnd = builder_.EmitJump(OpCode::Jump, position);
    builder_.PatchJumpToHere(jumpToRight);
    builder_.SetHeight(height);
    ParseBinary(kOrLevel + 1);
    builder_.Emit(OpCode::ToBool, position);
    builder_.PatchJumpToHere(jumpToEnd);
  }

  // a && b: b is evaluated only when a is non-zero. Result 0 or 1.
  void ParseAndRight(std::size_t position) {
    const std::size_t jumpToFalse = builder_.EmitJump(OpCode::JumpIfZero, position);
    const std::size_t height = builder_.Height();
    ParseBinary(kAndLevel + 1);
    builder_.Emit(OpCode::ToBool, position);
    const std::size_t jumpToEnd = builder_.EmitJump(OpCode::Jump, position);
    builder_.PatchJumpToHere(jumpToFalse);
    builder_.SetHeight(height);
    PushTruth(0, position);
    builder_.PatchJumpToHere(jumpToEnd);
  }

  // a ** b, right-associative; binds tighter than * but looser than prefixes.
  // Operands without a prefix, most of them, go straight to ParsePrimary.
  void ParsePower() {
    if (IsPrefix(Peek().kind))
      ParseUnary();
    else
      ParsePrimary();
    if (Peek().kind != TokenKind::StarStar) return;
    const std::size_t position = Advance();
    NestingGuard guard(*this, position);
    ParsePower();
    builder_.Emit(OpCode::Power, position);
  }

  void ParseUnary() {
    const TokenKind kind = Peek().kind;
    if (!IsPrefix(kind)) {
      ParsePrimary();
      return;
    }
    const std::size_t position = Advance();
    NestingGuard guard(*this, position);
    ParseUnary();
    if (kind == TokenKind::Minus) builder_.Emit(OpCode::Negate, position);
    if (kind == TokenKind::Tilde) builder_.Emit(OpCode::BitNot, position);
  }

  void ParsePrimary() {
    const Token& token = Peek();
    switch (token.kind) {
      case TokenKind::Number:
        PushNumber(token);
        Advance();
        return;
      case TokenKind::Identifier:
        if (PeekAhead().kind == TokenKind::LeftParen) {
          ParseCall();
        } else {
          PushName(token);
          Advance();
        }
        return;
      case TokenKind::LeftParen:
        ParseParenthesised();
        return;
      default:
        FailAt("expected a number, name or '(' but found " + Describe(token), token.position);
    }
  }

  void ParseParenthesised() {
    Advance();
    ParseConditional();
    Expect(TokenKind::RightParen, "')'");
  }

  void PushNumber(const Token& token) {
    literals_.push_back({token.position, static_cast<std::uint32_t>(builder_.Constants())});
    if (builder_.GetArithmetic() == Arithmetic::Float) {
      builder_.PushFloat(token.floatValue, token.position);
      return;
    }
    if (!token.integerValid) {
      FailAt("integer " + Describe(token) + " does not fit in 64 bits", token.position);
    }
    builder_.PushInteger(token.integerValue, token.position);
  }

  void PushName(const Token& token) {
    const std::string_view name = token.text;
    VariableRef ref;
    if (scope_.FindVariable(name, ref)) {
      builder_.PushVariable(ref, token.position);
      return;
    }
    const Code* named = scope_.FindConstant(name);
    if (named == nullptr) named = scope_.FindExpression(name);
    if (named != nullptr) {
      builder_.Splice(*named, token.position);
      return;
    }
    double builtin = 0.0;
    if (FindBuiltinConstant(name, builtin)) {
      if (builder_.GetArithmetic() == Arithmetic::Integer) {
        builder_.PushInteger(SaturateToInteger(builtin), token.position);
      } else {
        builder_.PushFloat(builtin, token.position);
      }
      return;
    }
    FailAt("unknown identifier " + Describe(token), token.position);
  }

  void ParseCall() {
    const Token name = Peek();
    Advance();
    FunctionInfo info;
    if (!FindFunction(name.text, info)) FailAt("unknown function " + Describe(name), name.position);
    NestingGuard guard(*this, name.position);
    Advance();  // '('
    int count = 0;
    if (Peek().kind != TokenKind::RightParen) {
      for (;;) {
        ParseConditional();
        ++count;
        if (Peek().kind != TokenKind::Comma) break;
        Advance();
      }
    }
    Expect(TokenKind::RightParen, "')' closing the arguments");
    if (count < info.minArguments || count > info.maxArguments) {
      const std::string expected =
          info.minArguments == info.maxArguments
              ? std::to_string(info.minArguments)
              : std::to_string(info.minArguments) + " or " + std::to_string(info.maxArguments);
      FailAt("function " + Describe(name) + " takes " + expected + " argument(s), not " +
                 std::to_string(count),
             name.position);
    }
    builder_.Emit(count == 2 ? OpCode::Call2 : OpCode::Call1, name.position, info.function);
  }

  TokenList tokens_;
  const Token* current_ = &tokens_[0];
  Scope& scope_;
  CodeBuilder builder_;
  std::vector<CompileScratch::LiteralUse>& literals_;
  int depth_ = 0;
};

}  // namespace

Code CompileCode(std::string_view text, Scope& scope, Arithmetic arithmetic,
                 CompileScratch* scratch) {
  if (text.size() > kMaxFormulaLength) {
    throw FormulaError("formula longer than " + std::to_string(kMaxFormulaLength) + " characters");
  }
  if (scratch != nullptr) return Parser(text, scope, arithmetic, *scratch).Run();
  CompileScratch own;
  return Parser(text, scope, arithmetic, own).Run();
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
