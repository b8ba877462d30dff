// Recursive-descent parser that emits postfix code as it goes. Precedence,
// lowest first: ?: (right), ||, &&, |, ^, &, = <>, < <= > >=, << >>, + -,
// * / %, ** (right), unary - + ~. Left-associative chains are parsed in loops,
// so only nesting (parentheses, calls, prefixes, right-associative operators)
// costs recursion, and that is bounded.
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
  TokenKind token;
  OpCode op;
};

// Left-associative levels between && and **, lowest first.
const std::vector<std::vector<BinaryOperator>> kBinaryLevels = {
    {{TokenKind::Pipe, OpCode::BitOr}},
    {{TokenKind::Caret, OpCode::BitXor}},
    {{TokenKind::Amp, OpCode::BitAnd}},
    {{TokenKind::Equal, OpCode::Equal}, {TokenKind::NotEqual, OpCode::NotEqual}},
    {{TokenKind::Less, OpCode::Less},
     {TokenKind::LessEqual, OpCode::LessEqual},
     {TokenKind::Greater, OpCode::Greater},
     {TokenKind::GreaterEqual, OpCode::GreaterEqual}},
    {{TokenKind::ShiftLeft, OpCode::ShiftLeft}, {TokenKind::ShiftRight, OpCode::ShiftRight}},
    {{TokenKind::Plus, OpCode::Add}, {TokenKind::Minus, OpCode::Subtract}},
    {{TokenKind::Star, OpCode::Multiply},
     {TokenKind::Slash, OpCode::Divide},
     {TokenKind::Percent, OpCode::Remainder}},
};

class Parser {
 public:
  Parser(std::vector<Token> tokens, Scope& scope, Arithmetic arithmetic)
      : tokens_(std::move(tokens)), scope_(scope), builder_(arithmetic) {}

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

  const Token& Peek() const { return tokens_[index_]; }
  const Token& PeekAhead() const {
    return tokens_[index_ + 1 < tokens_.size() ? index_ + 1 : index_];
  }
  const Token& Advance() {
    const Token& token = tokens_[index_];
    if (index_ + 1 < tokens_.size()) ++index_;
    return token;
  }
  void Expect(TokenKind kind, const char* what) {
    if (Peek().kind != kind) {
      FailAt(std::string("expected ") + what + " but found " + Describe(Peek()), Peek().position);
    }
    Advance();
  }

  // condition ? a : b, right-associative.
  void ParseConditional() {
    NestingGuard guard(*this, Peek().position);
    ParseLogicalOr();
    if (Peek().kind != TokenKind::Question) return;
    const std::size_t position = Advance().position;
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
  void ParseLogicalOr() {
    ParseLogicalAnd();
    while (Peek().kind == TokenKind::PipePipe) {
      const std::size_t position = Advance().position;
      const std::size_t jumpToRight = builder_.EmitJump(OpCode::JumpIfZero, position);
      const std::size_t height = builder_.Height();
      PushTruth(1, position);
      const std::size_t jumpToEnd = builder_.EmitJump(OpCode::Jump, position);
      builder_.PatchJumpToHere(jumpToRight);
      builder_.SetHeight(height);
      ParseLogicalAnd();
      builder_.Emit(OpCode::ToBool, position);
      builder_.PatchJumpToHere(jumpToEnd);
    }
  }

  // a && b: b is evaluated only when a is non-zero. Result 0 or 1.
  void ParseLogicalAnd() {
    ParseBinary(0);
    while (Peek().kind == TokenKind::AmpAmp) {
      const std::size_t position = Advance().position;
      const std::size_t jumpToFalse = builder_.EmitJump(OpCode::JumpIfZero, position);
      const std::size_t height = builder_.Height();
      ParseBinary(0);
      builder_.Emit(OpCode::ToBool, position);
      const std::size_t jumpToEnd = builder_.EmitJump(OpCode::Jump, position);
      builder_.PatchJumpToHere(jumpToFalse);
      builder_.SetHeight(height);
      PushTruth(0, position);
      builder_.PatchJumpToHere(jumpToEnd);
    }
  }

  void PushTruth(int value, std::size_t position) {
    if (builder_.GetArithmetic() == Arithmetic::Integer) {
      builder_.PushInteger(value, position);
    } else {
      builder_.PushFloat(value, position);
    }
  }

  const BinaryOperator* MatchOperator(std::size_t level) const {
    for (const BinaryOperator& candidate : kBinaryLevels[level]) {
      if (candidate.token == Peek().kind) return &candidate;
    }
    return nullptr;
  }

  void ParseOperand(std::size_t level) {
    if (level + 1 < kBinaryLevels.size()) {
      ParseBinary(level + 1);
    } else {
      ParsePower();
    }
  }

  void ParseBinary(std::size_t level) {
    ParseOperand(level);
    while (const BinaryOperator* match = MatchOperator(level)) {
      const std::size_t position = Advance().position;
      ParseOperand(level);
      builder_.Emit(match->op, position);
    }
  }

  // a ** b, right-associative; binds tighter than * but looser than prefixes.
  void ParsePower() {
    ParseUnary();
    if (Peek().kind != TokenKind::StarStar) return;
    const std::size_t position = Advance().position;
    NestingGuard guard(*this, position);
    ParsePower();
    builder_.Emit(OpCode::Power, position);
  }

  void ParseUnary() {
    const TokenKind kind = Peek().kind;
    if (kind != TokenKind::Minus && kind != TokenKind::Plus && kind != TokenKind::Tilde) {
      ParsePrimary();
      return;
    }
    const std::size_t position = Advance().position;
    NestingGuard guard(*this, position);
    ParseUnary();
    if (kind == TokenKind::Minus) builder_.Emit(OpCode::Negate, position);
    if (kind == TokenKind::Tilde) builder_.Emit(OpCode::BitNot, position);
  }

  void ParsePrimary() {
    const Token& token = Peek();
    switch (token.kind) {
      case TokenKind::Number:
        PushNumber(Advance());
        return;
      case TokenKind::Identifier:
        if (PeekAhead().kind == TokenKind::LeftParen) {
          ParseCall();
        } else {
          PushName(Advance());
        }
        return;
      case TokenKind::LeftParen: {
        Advance();
        ParseConditional();
        Expect(TokenKind::RightParen, "')'");
        return;
      }
      default:
        FailAt("expected a number, name or '(' but found " + Describe(token), token.position);
    }
  }

  void PushNumber(const Token& token) {
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
    const Token& name = Advance();
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

  std::vector<Token> tokens_;
  std::size_t index_ = 0;
  Scope& scope_;
  CodeBuilder builder_;
  int depth_ = 0;
};

}  // namespace

Code CompileCode(std::string_view text, Scope& scope, Arithmetic arithmetic) {
  if (text.size() > kMaxFormulaLength) {
    throw FormulaError("formula longer than " + std::to_string(kMaxFormulaLength) + " characters");
  }
  return Parser(Tokenize(text), scope, arithmetic).Run();
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
