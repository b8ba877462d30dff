#include "vq/sim/Values.h"

#include <cstring>
#include <sstream>

#include "TextUtil.h"
#include "vq/gencp/Endian.h"
#include "vq/sim/Profile.h"

namespace vq::sim {

namespace {

std::vector<uint8_t> bigEndian(uint64_t value, std::size_t size) {
  std::vector<uint8_t> out(size);
  for (std::size_t i = 0; i < size; ++i) out[size - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
  return out;
}

std::vector<uint8_t> hexBytes(const std::string& text, bool& ok) {
  std::string digits;
  for (char c : text) {
    if (c != ' ' && c != '\t') digits += c;
  }
  ok = !digits.empty() && digits.size() % 2 == 0;
  std::vector<uint8_t> out;
  for (std::size_t i = 0; ok && i < digits.size(); i += 2) {
    const auto byte = parseInteger("0x" + digits.substr(i, 2));
    ok = byte.has_value();
    if (ok) out.push_back(static_cast<uint8_t>(*byte));
  }
  return out;
}

std::vector<uint8_t> encodeValue(const std::string& type, const std::string& text, bool& ok) {
  ok = true;
  if (type == "str") return std::vector<uint8_t>(text.begin(), text.end());
  if (type == "hex") return hexBytes(text, ok);
  if (type == "f32" || type == "f64") {
    std::istringstream in(text);
    double value = 0;
    ok = static_cast<bool>(in >> value);
    if (type == "f32") {
      const float f = static_cast<float>(value);
      uint32_t bits;
      std::memcpy(&bits, &f, sizeof bits);
      return bigEndian(bits, 4);
    }
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bigEndian(bits, 8);
  }
  const auto value = parseInteger(text);
  ok = value.has_value();
  static const std::pair<const char*, std::size_t> kSizes[] = {
      {"u8", 1}, {"u16", 2}, {"u32", 4}, {"u64", 8}, {"i8", 1}, {"i16", 2}, {"i32", 4}, {"i64", 8}};
  for (const auto& [name, size] : kSizes) {
    if (type == name) return bigEndian(static_cast<uint64_t>(value.value_or(0)), size);
  }
  ok = false;
  return {};
}

}  // namespace

std::vector<InitialValue> parseValues(const std::string& text) {
  std::vector<InitialValue> values;
  forEachContentLine(text, [&](const std::string& line, int lineNumber) {
    std::istringstream fields(line);
    std::string addressText, type;
    fields >> addressText >> type;
    std::string rest;
    std::getline(fields, rest);
    rest = trim(rest);
    const auto address = parseInteger(addressText);
    bool ok = false;
    InitialValue value;
    if (address && *address >= 0) value.bytes = encodeValue(type, rest, ok);
    if (!ok || value.bytes.empty()) {
      throw ProfileError("values line " + std::to_string(lineNumber) +
                         ": expected '<address> <type> <value>', got '" + line + "'");
    }
    value.address = static_cast<uint64_t>(*address);
    values.push_back(std::move(value));
  });
  return values;
}

}  // namespace vq::sim
