// Integer arithmetic with defined results for every input: overflow wraps
// (two's complement), shifts of any width are defined, and conversions from
// double never invoke undefined behaviour.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace GenApi {
namespace formula {
namespace detail {

constexpr double kTwoPow63 = 9223372036854775808.0;
constexpr double kTwoPow64 = 18446744073709551616.0;

inline std::int64_t FromBits(std::uint64_t bits) { return static_cast<std::int64_t>(bits); }
inline std::uint64_t ToBits(std::int64_t value) { return static_cast<std::uint64_t>(value); }

inline std::int64_t WrappingAdd(std::int64_t a, std::int64_t b) {
  return FromBits(ToBits(a) + ToBits(b));
}
inline std::int64_t WrappingSubtract(std::int64_t a, std::int64_t b) {
  return FromBits(ToBits(a) - ToBits(b));
}
inline std::int64_t WrappingMultiply(std::int64_t a, std::int64_t b) {
  return FromBits(ToBits(a) * ToBits(b));
}
inline std::int64_t WrappingNegate(std::int64_t a) { return FromBits(0 - ToBits(a)); }

// Callers reject a zero divisor first.
inline std::int64_t TruncatingDivide(std::int64_t a, std::int64_t b) {
  if (b == -1) return WrappingNegate(a);  // INT64_MIN / -1 wraps to INT64_MIN
  return a / b;
}
inline std::int64_t TruncatingRemainder(std::int64_t a, std::int64_t b) {
  if (b == -1) return 0;
  return a % b;
}

inline std::int64_t ShiftRightBy(std::int64_t a, std::int64_t count);

// A negative count shifts the other way; counts of 64 or more shift everything out.
inline std::int64_t ShiftLeftBy(std::int64_t a, std::int64_t count) {
  if (count < 0) return ShiftRightBy(a, count <= -64 ? 64 : -count);
  if (count >= 64) return 0;
  return FromBits(ToBits(a) << count);
}

// Arithmetic shift: the sign is kept.
inline std::int64_t ShiftRightBy(std::int64_t a, std::int64_t count) {
  if (count < 0) return ShiftLeftBy(a, count <= -64 ? 64 : -count);
  if (count >= 64) return a < 0 ? -1 : 0;
  const std::uint64_t shifted = ToBits(a) >> count;
  const std::uint64_t signFill = (a < 0 && count > 0) ? ~(~std::uint64_t{0} >> count) : 0;
  return FromBits(shifted | signFill);
}

// Exponentiation by squaring, wrapping on overflow. Negative exponents give the
// truncated reciprocal; the caller rejects 0 raised to a negative power.
inline std::int64_t WrappingPower(std::int64_t base, std::int64_t exponent) {
  if (exponent < 0) {
    if (base == 1) return 1;
    if (base == -1) return (exponent % 2 == 0) ? 1 : -1;
    return 0;
  }
  std::uint64_t result = 1;
  std::uint64_t factor = ToBits(base);
  auto remaining = static_cast<std::uint64_t>(exponent);
  while (remaining != 0) {
    if (remaining & 1U) result *= factor;
    factor *= factor;
    remaining >>= 1U;
  }
  return FromBits(result);
}

// Value conversion: truncates toward zero, saturates at the int64 limits, NaN gives 0.
inline std::int64_t SaturateToInteger(double value) {
  if (std::isnan(value)) return 0;
  if (value >= kTwoPow63) return std::numeric_limits<std::int64_t>::max();
  if (value < -kTwoPow63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// Bit-pattern conversion for bitwise operators on doubles: values in
// [2^63, 2^64) keep their unsigned bit pattern, so 0xFFFF0000FFFF0000 survives a
// round trip through double.
inline std::int64_t DoubleToBits(double value) {
  if (value >= kTwoPow63 && value < kTwoPow64) {
    return FromBits(static_cast<std::uint64_t>(value));
  }
  return SaturateToInteger(value);
}

}  // namespace detail
}  // namespace formula
}  // namespace GenApi
