// Runs a compiled program against a variable source.
#pragma once

#include <cstdint>

#include "FormulaCode.h"

namespace GenApi {
namespace formula {
namespace detail {

// Integer programs only. Throws FormulaError on division or remainder by zero.
std::int64_t RunInteger(const Code& code, IVariableSource& source);
// Float programs only. Throws FormulaError on division or remainder by zero.
double RunFloat(const Code& code, IVariableSource& source);

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
