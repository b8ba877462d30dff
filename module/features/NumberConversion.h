// Conversions between the number forms the host interface uses (doubles, 32-bit
// floats and integers) that stay defined for every input. Where C++ leaves a
// conversion undefined (NaN, or a value outside the target's range), the result
// is the x86 "integer indefinite" value, the lowest value of the target type,
// which is what the processor's own truncating conversion delivers.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vq {

// Truncates toward zero; NaN and values outside the 64-bit range give INT64_MIN.
inline std::int64_t TruncateToInt64(double value) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (!(value >= -kTwoTo63 && value < kTwoTo63)) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(value);
}

// Truncates toward zero; NaN and values outside the 32-bit range give INT32_MIN.
inline std::int32_t TruncateToInt32(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0)) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(value);
}

// Nearest float; values beyond the float range become infinities, as IEEE-754
// narrowing does.
inline float NarrowToFloat(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (value > kLargest) {
    // Values that still round to the largest float keep it.
    return value < kLargest * (1.0 + std::ldexp(1.0, -25)) ? std::numeric_limits<float>::max()
                                                           : std::numeric_limits<float>::infinity();
  }
  if (value < -kLargest) return -NarrowToFloat(-value);
  return static_cast<float>(value);
}

}  // namespace vq
