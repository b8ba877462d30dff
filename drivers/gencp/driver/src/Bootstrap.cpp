#include "Bootstrap.h"

#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>

namespace vq::gencpdrv {

namespace {

uint64_t readNumber(Channel& channel, uint64_t address, std::size_t size, uint32_t timeoutMs) {
  const auto bytes = channel.readMem(address, size, timeoutMs);
  return vq::gencp::readUnsigned(bytes.data(), bytes.size());
}

std::string readToken(Channel& channel, uint64_t address, uint32_t timeoutMs) {
  const auto bytes = channel.readMem(address, vq::gencp::abrm::kStringSize, timeoutMs);
  return toIdentifierToken(registerString(bytes.data(), bytes.size()));
}

}  // namespace

void readBootstrap(Channel& channel, uint32_t timeoutMs, BootstrapInfo& info,
                   DeviceIdentity& identity) {
  namespace abrm = vq::gencp::abrm;
  info.gencpVersion = static_cast<uint32_t>(readNumber(channel, abrm::kGenCPVersion, 4, timeoutMs));
  info.capabilities = readNumber(channel, abrm::kDeviceCapability, 8, timeoutMs);
  identity.manufacturer = readToken(channel, abrm::kManufacturerName, timeoutMs);
  if (info.capabilities & abrm::kCapFamilyName) {
    identity.family = readToken(channel, abrm::kFamilyName, timeoutMs);
  }
  identity.model = readToken(channel, abrm::kModelName, timeoutMs);
  identity.version = readToken(channel, abrm::kDeviceVersion, timeoutMs);
  identity.serialNumber = readToken(channel, abrm::kSerialNumber, timeoutMs);
  info.maxResponseMs =
      static_cast<uint32_t>(readNumber(channel, abrm::kMaxDeviceResponseTime, 4, timeoutMs));
  info.manifestAddress = readNumber(channel, abrm::kManifestTableAddress, 8, timeoutMs);
  if (info.capabilities & abrm::kCapSbrm) {
    info.sbrmAddress = readNumber(channel, abrm::kSbrmAddress, 8, timeoutMs);
  }
}

}  // namespace vq::gencpdrv
