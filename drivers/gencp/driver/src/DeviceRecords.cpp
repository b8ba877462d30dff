#include "DeviceRecords.h"

#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Sha1.h>
#include <vq/platform/cache_file.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "Identity.h"

namespace vq::gencpdrv {

namespace {

constexpr const char* kMagic = "vqcam device records 1";
// A file larger than this is not read (32 records take about 30 KiB).
constexpr std::uintmax_t kMaxFileBytes = 256 * 1024;
// Longest string kept: a 64-byte register in UTF-16 gives at most 96 bytes of UTF-8.
constexpr std::size_t kMaxStringBytes = 128;
constexpr int kFields = 14;

// Hexadecimal digits, the whole text and nothing else.
bool parseHex(std::string_view digits, uint64_t& value) {
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
  return error == std::errc() && stop == end;
}

// Strings are written as 'x' and their bytes in hex, so any byte a device sends survives and an
// empty string is still a field.
std::string encodeText(const std::string& text) {
  return "x" + vq::gencp::toHex(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

bool decodeText(const std::string& field, std::string& text) {
  if (field.empty() || field[0] != 'x' || field.size() % 2 != 1 ||
      (field.size() - 1) / 2 > kMaxStringBytes) {
    return false;
  }
  text.clear();
  for (std::size_t i = 1; i < field.size(); i += 2) {
    uint64_t byte = 0;
    if (!parseHex(std::string_view(field).substr(i, 2), byte)) return false;
    text.push_back(static_cast<char>(byte));
  }
  return true;
}

std::string encodeNumber(uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(value));
  return text;
}

bool decodeNumber(const std::string& field, uint64_t max, uint64_t& value) {
  return !field.empty() && field.size() <= 16 && parseHex(field, value) && value <= max;
}

std::string encodeRecord(const KnownDevice& device) {
  const DeviceIdentity& id = device.identity;
  const BootstrapInfo& info = device.bootstrap;
  std::string line;
  for (const std::string* text : {&info.serialNumberText, &device.modelBytes, &id.manufacturer,
                                  &id.family, &id.model, &id.version}) {
    line += encodeText(*text) + " ";
  }
  for (uint64_t number : {uint64_t{info.gencpVersion}, info.capabilities,
                          uint64_t{info.maxResponseMs}, info.manifestAddress}) {
    line += encodeNumber(number) + " ";
  }
  line += (info.sbrmAddress ? encodeNumber(*info.sbrmAddress) : std::string("-")) + " ";
  line += encodeNumber(info.deviceConfiguration) + " " + encodeNumber(info.baudRates) + " ";
  line += encodeText(id.serialNumber);
  return line;
}

// A record line back to a device; the identity tokens are run through the token rules again,
// and a model token that does not follow from the recorded model bytes spoils the record.
bool decodeRecord(const std::string& line, KnownDevice& device) {
  std::istringstream in(line);
  std::vector<std::string> fields;
  for (std::string field; in >> field;) fields.push_back(field);
  if (fields.size() != kFields) return false;
  DeviceIdentity& id = device.identity;
  BootstrapInfo& info = device.bootstrap;
  std::string manufacturer, family, model, version;
  if (!decodeText(fields[0], info.serialNumberText) || !decodeText(fields[1], device.modelBytes) ||
      device.modelBytes.size() > vq::gencp::abrm::kStringSize ||
      !decodeText(fields[2], manufacturer) || !decodeText(fields[3], family) ||
      !decodeText(fields[4], model) || !decodeText(fields[5], version)) {
    return false;
  }
  uint64_t gencpVersion = 0, maxResponseMs = 0, baudRates = 0;
  constexpr uint64_t k32 = 0xFFFFFFFFu;
  if (!decodeNumber(fields[6], k32, gencpVersion) ||
      !decodeNumber(fields[7], UINT64_MAX, info.capabilities) ||
      !decodeNumber(fields[8], k32, maxResponseMs) ||
      !decodeNumber(fields[9], UINT64_MAX, info.manifestAddress) ||
      !decodeNumber(fields[11], UINT64_MAX, info.deviceConfiguration) ||
      !decodeNumber(fields[12], k32, baudRates)) {
    return false;
  }
  if (fields[10] != "-") {
    uint64_t sbrm = 0;
    if (!decodeNumber(fields[10], UINT64_MAX, sbrm)) return false;
    info.sbrmAddress = sbrm;
  }
  info.gencpVersion = static_cast<uint32_t>(gencpVersion);
  info.maxResponseMs = static_cast<uint32_t>(maxResponseMs);
  info.baudRates = static_cast<uint32_t>(baudRates);
  id.manufacturer = toIdentifierToken(manufacturer);
  id.family = toIdentifierToken(family);
  id.model = toIdentifierToken(model);
  id.version = toIdentifierToken(version);
  id.serialNumber = toIdentifierToken(info.serialNumberText);
  const auto* bytes = reinterpret_cast<const uint8_t*>(device.modelBytes.data());
  return id.model == toIdentifierToken(
                         registerString(bytes, device.modelBytes.size(), info.stringEncoding()));
}

std::vector<KnownDevice> parseFile(const std::string& bytes) {
  const std::string head = std::string(kMagic) + "\ncheck: ";
  const std::size_t bodyStart = head.size() + 17;
  if (bytes.compare(0, head.size(), head) != 0 || bytes.size() < bodyStart ||
      bytes[bodyStart - 1] != '\n') {
    return {};
  }
  const std::string body = bytes.substr(bodyStart);
  if (bytes.compare(head.size(), 16, vq::platform::CacheChecksum(body)) != 0) return {};
  std::vector<KnownDevice> devices;
  std::istringstream lines(body);
  for (std::string line; std::getline(lines, line);) {
    KnownDevice device;
    if (!decodeRecord(line, device) || devices.size() == DeviceRecords::kMaxRecords) return {};
    devices.push_back(std::move(device));
  }
  return devices;
}

}  // namespace

std::string DeviceRecords::path() { return vq::platform::CacheFilePath("devices.rec"); }

std::vector<KnownDevice> DeviceRecords::load() {
  const auto bytes = vq::platform::ReadCacheFile(path(), kMaxFileBytes);
  return bytes ? parseFile(*bytes) : std::vector<KnownDevice>{};
}

void DeviceRecords::store(const KnownDevice& device) {
  const std::string file = path();
  if (file.empty()) return;
  std::vector<KnownDevice> devices = load();
  std::string body;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < devices.size(); ++i) {
    // The newest kMaxRecords - 1 others stay, the stored device goes last.
    if (devices[i].bootstrap.serialNumberText == device.bootstrap.serialNumberText) continue;
    devices[kept++] = devices[i];
  }
  const std::size_t first = kept >= kMaxRecords ? kept - (kMaxRecords - 1) : 0;
  for (std::size_t i = first; i < kept; ++i) body += encodeRecord(devices[i]) + "\n";
  body += encodeRecord(device) + "\n";
  vq::platform::WriteCacheFile(
      file, std::string(kMagic) + "\ncheck: " + vq::platform::CacheChecksum(body) + "\n" + body);
}

}  // namespace vq::gencpdrv
