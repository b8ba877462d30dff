#include "FormulaFunctions.h"

#include <cmath>
#include <string>

#include "FormulaNumeric.h"

namespace GenApi {
namespace formula {
namespace detail {
namespace {

struct NamedFunction {
  const char* name;
  FunctionInfo info;
};

const NamedFunction kFunctions[] = {
    {"SGN", {Function::Sgn, 1, 1}},     {"NEG", {Function::Neg, 1, 1}},
    {"ATAN", {Function::Atan, 1, 1}},   {"COS", {Function::Cos, 1, 1}},
    {"SIN", {Function::Sin, 1, 1}},     {"TAN", {Function::Tan, 1, 1}},
    {"ABS", {Function::Abs, 1, 1}},     {"EXP", {Function::Exp, 1, 1}},
    {"LN", {Function::Ln, 1, 1}},       {"LG", {Function::Lg, 1, 1}},
    {"SQRT", {Function::Sqrt, 1, 1}},   {"TRUNC", {Function::Trunc, 1, 1}},
    {"FLOOR", {Function::Floor, 1, 1}}, {"CEIL", {Function::Ceil, 1, 1}},
    {"ROUND", {Function::Round, 1, 2}}, {"ASIN", {Function::Asin, 1, 1}},
    {"ACOS", {Function::Acos, 1, 1}},   {"FRAC", {Function::Frac, 1, 1}},
};

bool EqualsIgnoringCase(std::string_view text, const char* upper) {
  std::size_t i = 0;
  for (; i < text.size() && upper[i] != '\0'; ++i) {
    char c = text[i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c != upper[i]) return false;
  }
  return i == text.size() && upper[i] == '\0';
}

// Rounds half away from zero to `digits` decimals; negative digits round to tens, hundreds...
double RoundToDigits(double x, double digits) {
  if (std::isnan(digits)) return x;
  const double places = std::trunc(digits);
  if (places == 0) return std::round(x);
  if (places > 330) return x;
  if (places < -330) return 0.0 * x;
  const double scale = std::pow(10.0, places);
  const double scaled = x * scale;
  if (!std::isfinite(scaled) || scale == 0.0) return x;
  return std::round(scaled) / scale;
}

}  // namespace

bool FindFunction(std::string_view name, FunctionInfo& info) {
  for (const auto& entry : kFunctions) {
    if (EqualsIgnoringCase(name, entry.name)) {
      info = entry.info;
      return true;
    }
  }
  return false;
}

bool FindBuiltinConstant(std::string_view name, double& value) {
  if (EqualsIgnoringCase(name, "PI")) {
    value = 3.14159265358979323846;
    return true;
  }
  if (EqualsIgnoringCase(name, "E")) {
    value = 2.71828182845904523536;
    return true;
  }
  return false;
}

double CallFloat(Function function, double x) {
  switch (function) {
    case Function::Sgn:
      return x > 0 ? 1.0 : (x < 0 ? -1.0 : 0.0);
    case Function::Neg:
      return -x;
    case Function::Atan:
      return std::atan(x);
    case Function::Cos:
      return std::cos(x);
    case Function::Sin:
      return std::sin(x);
    case Function::Tan:
      return std::tan(x);
    case Function::Abs:
      return std::fabs(x);
    case Function::Exp:
      return std::exp(x);
    case Function::Ln:
      return std::log(x);
    case Function::Lg:
      return std::log10(x);
    case Function::Sqrt:
      return std::sqrt(x);
    case Function::Trunc:
      return std::trunc(x);
    case Function::Floor:
      return std::floor(x);
    case Function::Ceil:
      return std::ceil(x);
    case Function::Round:
      return std::round(x);
    case Function::Asin:
      return std::asin(x);
    case Function::Acos:
      return std::acos(x);
    case Function::Frac:
      return std::isinf(x) ? 0.0 : x - std::trunc(x);
    case Function::None:
      break;
  }
  return x;
}

double CallFloat(Function function, double x, double y) {
  if (function == Function::Round) return RoundToDigits(x, y);
  return CallFloat(function, x);
}

std::int64_t CallInteger(Function function, std::int64_t x) {
  switch (function) {
    case Function::Sgn:
      return x > 0 ? 1 : (x < 0 ? -1 : 0);
    case Function::Neg:
      return WrappingNegate(x);
    case Function::Abs:
      return x < 0 ? WrappingNegate(x) : x;
    case Function::Trunc:
    case Function::Floor:
    case Function::Ceil:
    case Function::Round:
      return x;
    default:
      return SaturateToInteger(CallFloat(function, static_cast<double>(x)));
  }
}

std::int64_t CallInteger(Function function, std::int64_t x, std::int64_t y) {
  if (function == Function::Round && y >= 0) return x;
  return SaturateToInteger(CallFloat(function, static_cast<double>(x), static_cast<double>(y)));
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
