// The texts of GenICam failures as the host is shown them, and the Camera Link
// code they carry. Protocol failures read "... (Code: -10004) text".
#include <cctype>
#include <cstdlib>
#include <limits>

#include "features/GenericFeature.h"

namespace vq {

namespace {

constexpr const char* kCodeMarker = "Code:";

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

}  // namespace

std::string GenericFeature::FormatErrorMessage() const {
  const std::size_t code = lastError_.find(kCodeMarker);
  if (code == std::string::npos) return lastError_;
  const std::size_t closing = lastError_.find(')', code);
  if (closing == std::string::npos) return lastError_;
  // The character after ")" (normally a blank) is skipped; no closing quote.
  // When ")" ends the text nothing follows the opening quote.
  const std::size_t text = closing + 2;
  return "CLProtocol message: '" + (text < lastError_.size() ? lastError_.substr(text) : "");
}

std::int32_t GenericFeature::GetErrorCode() const {
  const std::size_t code = lastError_.find(kCodeMarker);
  if (code == std::string::npos) return 0;
  // As scanning "%*s %d" from "Code:": one blank-delimited word is skipped,
  // then a signed decimal number is read.
  const char* cursor = lastError_.c_str() + code;
  while (*cursor != '\0' && !IsBlank(*cursor)) ++cursor;
  while (IsBlank(*cursor)) ++cursor;
  const bool sign = *cursor == '-' || *cursor == '+';
  if (!std::isdigit(static_cast<unsigned char>(cursor[sign ? 1 : 0]))) return 0;
  const long long number = std::strtoll(cursor, nullptr, 10);
  // Numbers beyond 32 bits are held at the nearest 32-bit value.
  if (number > std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  if (number < std::numeric_limits<std::int32_t>::min()) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(number);
}

}  // namespace vq
