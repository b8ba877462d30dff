#include "Bootstrap.h"

#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "DriverFailure.h"
#include "ErrorCodes.h"

namespace vq::gencpdrv {

namespace {

namespace abrm = vq::gencp::abrm;

// The block read at once: manufacturer name up to the end of the device configuration.
constexpr uint64_t kBlockStart = abrm::kManufacturerName;
constexpr uint64_t kBlockEnd = abrm::kDeviceConfiguration + 8;
constexpr uint32_t kSupportedMajor = 1;
// Sends of the first read at a rate being tried: one resend survives a lost answer without
// making every wrong rate slow.
constexpr int kLivenessSends = 2;

bool isDeviceRefusal(const DriverFailure& failure) {
  return failure.code() <= kDeviceStatusBase - 1 && failure.code() >= kGenericDeviceError;
}

void checkVersion(uint32_t version) {
  if (version >> 16 == kSupportedMajor) return;
  char text[96];
  std::snprintf(text, sizeof text, "the device speaks GenCP %u.%u; this driver speaks %u.x",
                version >> 16, version & 0xFFFF, kSupportedMajor);
  throw DriverFailure(kUnsupportedVersion, text);
}

// The block register by register, for devices that refuse reads across registers or lack
// optional ones (family name, serial bootstrap block); missing ones stay zero.
std::vector<uint8_t> readBlockPiecewise(Channel& channel, uint32_t timeoutMs) {
  std::vector<uint8_t> block(kBlockEnd - kBlockStart, 0);
  auto readInto = [&](uint64_t address, std::size_t size, bool optional) {
    try {
      const auto bytes = channel.readMem(address, size, timeoutMs);
      std::copy(bytes.begin(), bytes.end(), block.begin() + (address - kBlockStart));
    } catch (const DriverFailure& failure) {
      if (!optional || !isDeviceRefusal(failure)) throw;
    }
  };
  readInto(abrm::kDeviceCapability, 8, false);
  const uint64_t capabilities = vq::gencp::readU64(&block[abrm::kDeviceCapability - kBlockStart]);
  for (uint64_t address : {abrm::kManufacturerName, abrm::kModelName, abrm::kDeviceVersion,
                           abrm::kSerialNumber}) {
    readInto(address, abrm::kStringSize, false);
  }
  if (capabilities & abrm::kCapFamilyName) readInto(abrm::kFamilyName, abrm::kStringSize, false);
  readInto(abrm::kMaxDeviceResponseTime, 4, false);
  readInto(abrm::kManifestTableAddress, 8, false);
  if (capabilities & abrm::kCapSbrm) readInto(abrm::kSbrmAddress, 8, false);
  readInto(abrm::kDeviceConfiguration, 8, true);
  return block;
}

// The bytes of a string register before its terminating NUL (a NUL unit in UTF-16), all of
// them when it has none.
std::string bytesBeforeTerminator(const uint8_t* data, std::size_t size, uint32_t encoding) {
  const std::size_t step = encoding == kEncodingUtf16 ? 2 : 1;
  std::size_t end = 0;
  while (end + step <= size && !(data[end] == 0 && data[end + step - 1] == 0)) end += step;
  return std::string(reinterpret_cast<const char*>(data), std::min(end, size));
}

KnownDevice parseBlock(const std::vector<uint8_t>& block, uint32_t version) {
  auto at = [&block](uint64_t address) { return block.data() + (address - kBlockStart); };
  KnownDevice device;
  BootstrapInfo& info = device.bootstrap;
  info.gencpVersion = version;
  info.capabilities = vq::gencp::readU64(at(abrm::kDeviceCapability));
  info.maxResponseMs = vq::gencp::readU32(at(abrm::kMaxDeviceResponseTime));
  info.manifestAddress = vq::gencp::readU64(at(abrm::kManifestTableAddress));
  if (info.capabilities & abrm::kCapSbrm) info.sbrmAddress = vq::gencp::readU64(at(abrm::kSbrmAddress));
  info.deviceConfiguration = vq::gencp::readU64(at(abrm::kDeviceConfiguration));
  const uint32_t encoding = info.stringEncoding();
  auto text = [&](uint64_t address) {
    return registerString(at(address), abrm::kStringSize, encoding);
  };
  info.serialNumberText = text(abrm::kSerialNumber);
  DeviceIdentity& id = device.identity;
  id.manufacturer = toIdentifierToken(text(abrm::kManufacturerName));
  id.family = toIdentifierToken(
      info.capabilities & abrm::kCapFamilyName ? text(abrm::kFamilyName) : std::string());
  id.model = toIdentifierToken(text(abrm::kModelName));
  id.version = toIdentifierToken(text(abrm::kDeviceVersion));
  id.serialNumber = toIdentifierToken(info.serialNumberText);
  device.modelBytes = bytesBeforeTerminator(at(abrm::kModelName), abrm::kStringSize, encoding);
  return device;
}

// True when the device's model name register holds the recorded model name: exactly the
// recorded bytes and the terminator are read, so the terminator proves that the device's name
// does not go on. A device refusing the read is taken as another device.
bool sameModel(Channel& channel, const KnownDevice& recorded, uint32_t timeoutMs) {
  const std::size_t terminator = recorded.bootstrap.stringEncoding() == kEncodingUtf16 ? 2 : 1;
  std::string expected = recorded.modelBytes;
  expected.resize(std::min<std::size_t>(expected.size() + terminator, abrm::kStringSize), '\0');
  std::vector<uint8_t> bytes;
  try {
    bytes = channel.readMem(abrm::kModelName, expected.size(), timeoutMs);
  } catch (const DriverFailure& failure) {
    if (!isDeviceRefusal(failure)) throw;
    return false;
  }
  return std::string(bytes.begin(), bytes.end()) == expected;
}

// The candidate whose serial number the register read holds, when the device's model name
// confirms it. Its bootstrap facts are taken on trust after that check; should they be stale (a
// firmware update behind the same serial number and model), the description still comes right:
// the manifest is always read from the device and a cached description is only used when the
// manifest's SHA1 matches. The model is checked too because cameras whose serial number was
// never set share one text.
std::optional<KnownDevice> confirmedCandidate(Channel& channel, const std::vector<uint8_t>& serial,
                                              const std::vector<KnownDevice>& candidates,
                                              uint32_t timeoutMs) {
  for (auto it = candidates.rbegin(); it != candidates.rend(); ++it) {
    const uint32_t encoding = it->bootstrap.stringEncoding();
    if (registerString(serial.data(), serial.size(), encoding) != it->bootstrap.serialNumberText) {
      continue;
    }
    if (sameModel(channel, *it, timeoutMs)) return *it;
    return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

Identification identify(Channel& channel, const std::vector<KnownDevice>& candidates,
                        uint32_t timeoutMs) {
  channel.setMaxSends(kLivenessSends);
  const bool serialFirst = !candidates.empty();
  if (serialFirst) {
    const auto serial = channel.readMem(abrm::kSerialNumber, abrm::kStringSize, timeoutMs, true);
    channel.setMaxSends(kMaxSends);
    if (auto device = confirmedCandidate(channel, serial, candidates, timeoutMs)) {
      return Identification{*device, false};
    }
  }
  const auto versionBytes = channel.readMem(abrm::kGenCPVersion, 4, timeoutMs, !serialFirst);
  channel.setMaxSends(kMaxSends);
  const uint32_t version = vq::gencp::readU32(versionBytes.data());
  checkVersion(version);
  std::vector<uint8_t> block;
  try {
    block = channel.readMem(kBlockStart, kBlockEnd - kBlockStart, timeoutMs);
  } catch (const DriverFailure& failure) {
    if (!isDeviceRefusal(failure)) throw;
    block = readBlockPiecewise(channel, timeoutMs);
  }
  KnownDevice device = parseBlock(block, version);
  BootstrapInfo& info = device.bootstrap;
  if (info.sbrmAddress) {
    // The rates are needed by every rate change; they are read here, at the cost of the probe.
    const auto rates = channel.readMem(*info.sbrmAddress + vq::gencp::sbrm::kSupportedBaudrates,
                                       4, timeoutMs);
    info.baudRates |= vq::gencp::readU32(rates.data());
  }
  return Identification{device, true};
}

}  // namespace vq::gencpdrv
