// The device's fixed blocks: bootstrap registers with the profile's identity, the serial
// bootstrap block, and the manifest naming the description file.
#include <algorithm>

#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Constants.h"
#include "vq/gencp/Endian.h"
#include "vq/gencp/Sha1.h"
#include "vq/sim/Device.h"

namespace vq::sim {

namespace abrm = gencp::abrm;
namespace mf = gencp::manifest;

namespace {

// Heartbeat enable: bit 0 of the big-endian Device Configuration register.
constexpr uint64_t kHeartbeatEnableBit = 1;

// UTF-16 code units (big-endian, as every bootstrap field on a serial link) of UTF-8 text.
std::vector<uint8_t> utf16BigEndian(const std::string& text) {
  std::vector<uint8_t> out;
  auto put = [&out](uint32_t unit) {
    out.push_back(static_cast<uint8_t>(unit >> 8));
    out.push_back(static_cast<uint8_t>(unit));
  };
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<uint8_t>(text[i]);
    const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    uint32_t code = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int k = 1; k <= extra && i + k < text.size(); ++k) {
      code = code << 6 | (static_cast<uint8_t>(text[i + k]) & 0x3F);
    }
    i += static_cast<std::size_t>(extra) + 1;
    if (code > 0xFFFF) {
      code -= 0x10000;
      put(0xD800 | (code >> 10));
      put(0xDC00 | (code & 0x3FF));
    } else {
      put(code);
    }
  }
  return out;
}

std::vector<uint8_t> u64Bytes(uint64_t value) {
  std::vector<uint8_t> bytes(8);
  gencp::writeU64(bytes.data(), value);
  return bytes;
}

}  // namespace

void Device::buildBootstrap() {
  const bool utf16 = profile_.stringEncoding == 2;
  auto addString = [&](uint64_t address, const std::string& text, Access access) {
    std::vector<uint8_t> bytes = utf16 ? utf16BigEndian(text)
                                       : std::vector<uint8_t>(text.begin(), text.end());
    bytes.resize(abrm::kStringSize, 0);
    space_.add(address, abrm::kStringSize, access);
    space_.poke(address, bytes);
  };
  space_.add(abrm::kGenCPVersion, 4, Access::RO);
  putU32(abrm::kGenCPVersion, profile_.gencpVersion);
  addString(abrm::kManufacturerName, profile_.manufacturer, Access::RO);
  addString(abrm::kModelName, profile_.model, Access::RO);
  addString(abrm::kFamilyName, profile_.family, Access::RO);
  addString(abrm::kDeviceVersion, profile_.version, Access::RO);
  addString(abrm::kManufacturerInfo, profile_.manufacturerInfo, Access::RO);
  addString(abrm::kSerialNumber, profile_.serialNumber, Access::RO);
  addString(abrm::kUserDefinedName, profile_.userName, Access::RW);
  uint64_t capabilities = abrm::kCapUserDefinedName | abrm::kCapFamilyName | abrm::kCapSbrm |
                          abrm::kCapEndiannessRegister | abrm::kCapWrittenLength |
                          uint64_t{profile_.stringEncoding & 0xF} << 4;
  if (profile_.heartbeatTimeoutMs != 0) capabilities |= abrm::kCapAccessPrivilegeHeartbeat;
  space_.add(abrm::kDeviceCapability, 8, Access::RO);
  space_.poke(abrm::kDeviceCapability, u64Bytes(capabilities));
  space_.add(abrm::kMaxDeviceResponseTime, 4, Access::RO);
  putU32(abrm::kMaxDeviceResponseTime, profile_.maxResponseTimeMs);
  space_.add(abrm::kManifestTableAddress, 8, Access::RO);
  space_.poke(abrm::kManifestTableAddress, u64Bytes(kManifestAddress));
  space_.add(abrm::kSbrmAddress, 8, Access::RO);
  space_.poke(abrm::kSbrmAddress, u64Bytes(kSbrmAddress));
  space_.add(abrm::kDeviceConfiguration, 8, Access::RW);
  if (profile_.heartbeatTimeoutMs != 0) {
    space_.add(abrm::kHeartbeatTimeout, 4, Access::RW);
    space_.add(abrm::kAccessPrivilege, 4, Access::RW);
  }
  space_.add(abrm::kImplementationEndianness, 4, Access::RO);  // 0: big-endian
  space_.add(kSbrmAddress + gencp::sbrm::kSupportedBaudrates, 4, Access::RO);
  putU32(kSbrmAddress + gencp::sbrm::kSupportedBaudrates, profile_.supportedBaudRates);
  space_.add(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, 4, Access::RW);
  resetLinkState();
}

// Power-up state of the line: 9600 baud, no host holding the device, heartbeat as shipped.
void Device::resetLinkState() {
  currentBaud_ = gencp::kBaud9600;
  putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
  confirmation_ = Confirmation{};
  const bool heartbeat = profile_.heartbeatTimeoutMs != 0;
  space_.poke(abrm::kDeviceConfiguration, u64Bytes(heartbeat ? kHeartbeatEnableBit : 0));
  if (heartbeat) {
    putU32(abrm::kHeartbeatTimeout, profile_.heartbeatTimeoutMs);
    putU32(abrm::kAccessPrivilege, kPrivilegeAvailable);
  }
  heartbeatDueUs_ = UINT64_MAX;
  heartbeatSuspended_ = false;
}

bool Device::heartbeatEnabled() const {
  return profile_.heartbeatTimeoutMs != 0 &&
         (readNumber(abrm::kDeviceConfiguration, 8) & kHeartbeatEnableBit) != 0;
}

uint32_t Device::accessPrivilege() const {
  if (profile_.heartbeatTimeoutMs == 0) return kPrivilegeOpen;  // nothing to open
  return static_cast<uint32_t>(readNumber(abrm::kAccessPrivilege, 4));
}

void Device::buildManifest() {
  std::vector<uint8_t> table(mf::kHeaderSize + mf::kEntrySize, 0);
  gencp::writeU64(table.data(), 1);
  uint8_t* entry = table.data() + mf::kHeaderSize;
  const auto& d = description_;
  gencp::writeU32(entry + mf::kFileVersion, (d.fileMajor & 0xFF) << 24 |
                                                (d.fileMinor & 0xFF) << 16 |
                                                (d.fileSubMinor & 0xFFFF));
  const uint32_t format = profile_.zipDescription ? mf::kFormatZip : mf::kFormatUncompressed;
  gencp::writeU32(entry + mf::kSchemaAndFormat,
                  (d.schemaMajor & 0xFF) << 24 | (d.schemaMinor & 0xFF) << 16 | format << 10);
  gencp::writeU64(entry + mf::kFileAddress, kDescriptionFileAddress);
  gencp::writeU64(entry + mf::kFileSize, file_.size());
  const gencp::Sha1Digest digest = gencp::sha1(file_.data(), file_.size());
  std::copy(digest.begin(), digest.end(), entry + mf::kSha1);
  space_.add(kManifestAddress, table.size(), Access::RO);
  space_.poke(kManifestAddress, table);
  space_.add(kDescriptionFileAddress, file_.size(), Access::RO);
  space_.poke(kDescriptionFileAddress, file_);
}

}  // namespace vq::sim
