// Device identification: bootstrap strings reduced to device-ID tokens, the short device ID
// built from them, and token-wise template matching.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vq::gencpdrv {

struct DeviceIdentity {
  std::string manufacturer;
  std::string family;
  std::string model;
  std::string version;
  std::string serialNumber;

  // Manufacturer#Family#Model#Version#SerialNumber.
  std::string shortDeviceId() const;
  // Manufacturer#Family#Model: the template part of the device's XML IDs.
  std::string modelTemplate() const;
};

// String encodings of the bootstrap strings (device capability bits 4-7).
constexpr uint32_t kEncodingAscii = 0;
constexpr uint32_t kEncodingUtf8 = 1;
constexpr uint32_t kEncodingUtf16 = 2;

// A bootstrap string register as UTF-8 text. ASCII and UTF-8 end at the first NUL byte; UTF-16
// ends at the first NUL code unit and is big-endian unless a byte-order mark or the shape of
// the first unit says otherwise.
std::string registerString(const uint8_t* data, std::size_t size, uint32_t encoding);

// Reduces a text to a C identifier: every character outside [A-Za-z0-9_] becomes '_', runs of
// '_' produced that way collapse to one, leading or trailing ones are dropped, and a token that
// would start with a digit or be empty gets a leading '_'.
std::string toIdentifierToken(const std::string& text);

// Splits on '#'; an empty text gives no tokens.
std::vector<std::string> splitTokens(const std::string& text);

// True when the text is a C identifier: not empty, not starting with a digit.
bool isIdentifier(const std::string& token);

// True when the template is a well-formed short template or short device ID: one to five
// tokens, each a C identifier.
bool isValidShortTemplate(const std::string& text);

// True when every token of the template equals the device ID's token at the same place.
bool templateMatches(const std::string& shortTemplate, const std::string& shortDeviceId);

}  // namespace vq::gencpdrv
