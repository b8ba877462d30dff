// Compiled SwissKnife formulas: parsed once when a description loads, evaluated
// on every read. Used by SwissKnife, IntSwissKnife, Converter and IntConverter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace GenApi {
namespace formula {
namespace detail {
struct CompileScratch;
struct Literal;
}

// Integer knives compute in int64, float knives in double.
enum class Arithmetic { Integer, Float };

// What a variable reference asks of the node behind it ("X", "X.Value", "X.Min", ...).
enum class VariableProperty { Value, Min, Max, Inc, EntryValue, AccessMode, Visibility, CachingMode };

struct VariableRef {
  std::size_t index = 0;  // position in FormulaDeclarations::variables
  VariableProperty property = VariableProperty::Value;
  std::string entryName;  // the <Name> of "X.Entry.<Name>", else empty
};

// The names a formula may use besides constants and functions.
struct FormulaDeclarations {
  std::vector<std::string> variables;                            // pVariable names, FROM/TO
  std::vector<std::pair<std::string, std::string>> constants;    // <Constant Name="N">text</Constant>
  std::vector<std::pair<std::string, std::string>> expressions;  // <Expression Name="N">text</Expression>
};

// The same declarations as views of texts the caller keeps while compiling.
struct NamedText {
  std::string_view name;
  std::string_view text;
};
struct DeclarationViews {
  const std::string_view* variables = nullptr;
  std::size_t variableCount = 0;
  const NamedText* constants = nullptr;
  std::size_t constantCount = 0;
  const NamedText* expressions = nullptr;
  std::size_t expressionCount = 0;
};

// Supplies variable values while a formula is evaluated. Integer formulas ask
// GetInteger, float formulas GetFloat.
class IVariableSource {
 public:
  virtual ~IVariableSource() = default;
  virtual int64_t GetInteger(const VariableRef& ref) = 0;
  virtual double GetFloat(const VariableRef& ref) = 0;
};

// A formula that does not parse, or an evaluation that cannot complete
// (division by zero, unknown name). The node map turns it into a GenICam
// exception naming the node and element.
class FormulaError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Formula {
 public:
  // Throws FormulaError when the text does not parse or names something undeclared.
  static Formula Compile(const std::string& text, const FormulaDeclarations& declarations,
                         Arithmetic arithmetic, detail::CompileScratch* scratch = nullptr);
  // scratch: buffers kept between compilations (see CompileScratch); may be null.
  static Formula Compile(std::string_view text, const DeclarationViews& declarations,
                         Arithmetic arithmetic, detail::CompileScratch* scratch = nullptr);

  // The same program with the constants of its literals replaced by those of
  // another text of the same shape (detail::ShapeOf): constants[i] is the
  // constant this formula's i-th literal became when it was compiled
  // (CompileScratch::literals), literals[i] the other text's i-th literal.
  Formula WithLiterals(const std::uint32_t* constants, const detail::Literal* literals,
                       std::size_t count) const;

  int64_t EvaluateInteger(IVariableSource& source) const;
  double EvaluateFloat(IVariableSource& source) const;

  Arithmetic GetArithmetic() const;
  // Every distinct variable reference the formula uses, for dependency tracking.
  const std::vector<VariableRef>& References() const;

  Formula(const Formula&) = default;
  Formula& operator=(const Formula&) = default;
  Formula(Formula&&) noexcept = default;
  Formula& operator=(Formula&&) noexcept = default;
  ~Formula();

 private:
  struct Program;
  explicit Formula(std::shared_ptr<const Program> program);
  std::shared_ptr<const Program> program_;
};

}  // namespace formula
}  // namespace GenApi
