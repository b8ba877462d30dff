// The built-in functions and constants of the formula language.
#pragma once

#include <cstdint>
#include <string_view>

#include "FormulaCode.h"

namespace GenApi {
namespace formula {
namespace detail {

struct FunctionInfo {
  Function function = Function::None;
  int minArguments = 1;
  int maxArguments = 1;
};

// Looks a function up by name, ignoring case. Returns false when unknown.
bool FindFunction(std::string_view name, FunctionInfo& info);

// PI and E, names ignoring case. Returns false for other names.
bool FindBuiltinConstant(std::string_view name, double& value);

double CallFloat(Function function, double x);
double CallFloat(Function function, double x, double y);
// Integer formulas: SGN, NEG and ABS are exact; the other functions (meant for
// float formulas, yet shipped in integer ones by real cameras) are computed in
// double and truncated.
std::int64_t CallInteger(Function function, std::int64_t x);
std::int64_t CallInteger(Function function, std::int64_t x, std::int64_t y);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
