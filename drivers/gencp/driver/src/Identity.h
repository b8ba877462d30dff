// Device identification: bootstrap strings reduced to device-ID tokens, the short device ID
// built from them, and token-wise template matching.
#pragma once

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

// A register string (NUL-padded, possibly without terminator) as text.
std::string registerString(const unsigned char* data, std::size_t size);

// Reduces a text to identifier characters: every character outside [A-Za-z0-9_] becomes '_',
// runs of '_' produced that way collapse to one, and leading or trailing ones are dropped.
std::string toIdentifierToken(const std::string& text);

// Splits on '#'; an empty text gives no tokens.
std::vector<std::string> splitTokens(const std::string& text);

// True when the template is a well-formed short template or short device ID: one to five
// tokens, the first non-empty, every character of every token an identifier character.
bool isValidShortTemplate(const std::string& text);

// True when every token of the template equals the device ID's token at the same place.
bool templateMatches(const std::string& shortTemplate, const std::string& shortDeviceId);

}  // namespace vq::gencpdrv
