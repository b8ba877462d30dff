// Feature limits as 4-byte floats: minimum, maximum and increment of integer
// and float features, the maximum length of strings, fill values for the rest.
#include <cstdlib>
#include <cstring>
#include <optional>

#include "features/GenericFeature.h"
#include "features/NumberConversion.h"
#include "features/RawBytes.h"
#include "features/TypedFeatures.h"

namespace vq {

namespace {

void Fill(void* buffer, std::uint32_t size, unsigned char byte) {
  if (buffer != nullptr) std::memset(buffer, byte, size);
}

// Reads an unsigned 32-bit number the way "%u" / "%x" do: leading blanks
// skipped, reading stops at the first character that is not part of it.
bool ReadUnsigned(const char* text, int base, std::uint32_t& number) {
  char* end = nullptr;
  const unsigned long long read = std::strtoull(text, &end, base);
  if (end == text) return false;
  number = static_cast<std::uint32_t>(read);
  return true;
}

}  // namespace

std::int32_t IntegerFeature::GetMin(float& value) {
  return Capture([&](GenApi::IInteger& integer) { value = static_cast<float>(integer.GetMin()); });
}

std::int32_t IntegerFeature::GetMax(float& value) {
  return Capture([&](GenApi::IInteger& integer) { value = static_cast<float>(integer.GetMax()); });
}

std::int32_t IntegerFeature::GetInc(float& value) {
  return Capture([&](GenApi::IInteger& integer) { value = static_cast<float>(integer.GetInc()); });
}

std::int32_t FloatFeature::GetMin(double& value) {
  return Capture([&](GenApi::IFloat& number) { value = number.GetMin(); });
}

std::int32_t FloatFeature::GetMax(double& value) {
  return Capture([&](GenApi::IFloat& number) { value = number.GetMax(); });
}

std::int32_t StringFeature::GetMaxLength(std::uint32_t& length) {
  return Capture([&](GenApi::IString& text) {
    GenICam::gcstring value;
    GenICam::gcstring attribute;
    text.GetNode()->GetProperty("Length", value, attribute);
    const char* digits = value.c_str();
    const bool hexadecimal =
        value.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    ReadUnsigned(hexadecimal ? digits + 2 : digits, hexadecimal ? 16 : 10, length);
  });
}

// The limit queries write into caller buffers of at least 4 bytes; a null
// buffer is refused before anything is asked.

std::int32_t GenericFeature::GetMin(void* buffer, std::uint32_t size) {
  if (buffer == nullptr) return 0;
  if (auto result = NumericLimit(buffer, &IntegerFeature::GetMin, &FloatFeature::GetMin)) {
    return *result;
  }
  Fill(buffer, size, 0x00);
  return 1;
}

std::int32_t GenericFeature::GetMax(void* buffer, std::uint32_t size) {
  if (buffer == nullptr) return 0;
  if (auto result = NumericLimit(buffer, &IntegerFeature::GetMax, &FloatFeature::GetMax)) {
    return *result;
  }
  if (NodeAs<GenApi::IString>(node_)) {
    if (size != sizeof(float)) return 0;
    StringFeature text(node_);
    // A "Length" that holds no number leaves the maximum at 0.
    std::uint32_t length = 0;
    const std::int32_t result = text.GetMaxLength(length);
    StoreRaw(buffer, static_cast<float>(length));
    return result;
  }
  Fill(buffer, size, 0xFF);
  return 1;
}

std::int32_t GenericFeature::GetInc(void* buffer, std::uint32_t size) {
  if (buffer == nullptr) return 0;
  // Float features have no increment here: they take the fill row.
  if (auto result = NumericLimit(buffer, &IntegerFeature::GetInc, nullptr)) return *result;
  Fill(buffer, size, 0x00);
  return 1;
}

std::optional<std::int32_t> GenericFeature::NumericLimit(void* buffer, IntegerLimit integerLimit,
                                                         FloatLimit floatLimit) {
  // The accessor's outcome goes to lastError; the 4 bytes are written only
  // after success.
  if (NodeAs<GenApi::IInteger>(node_)) {
    IntegerFeature integer(node_);
    float value = 0;
    const std::int32_t result = (integer.*integerLimit)(value);
    lastError_ = integer.LastError();
    if (result) StoreRaw(buffer, value);
    return result;
  }
  if (floatLimit != nullptr && NodeAs<GenApi::IFloat>(node_)) {
    FloatFeature number(node_);
    double value = 0;
    const std::int32_t result = (number.*floatLimit)(value);
    lastError_ = number.LastError();
    if (result) StoreRaw(buffer, NarrowToFloat(value));
    return result;
  }
  return std::nullopt;
}

}  // namespace vq
