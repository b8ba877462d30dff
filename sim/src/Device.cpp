#include "vq/sim/Device.h"

#include <algorithm>
#include <cstdio>

#include "Zip.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Constants.h"
#include "vq/gencp/Endian.h"
#include "vq/sim/Values.h"

namespace vq::sim {

namespace abrm = gencp::abrm;
namespace mf = gencp::manifest;

namespace {

std::vector<uint8_t> fixedString(const std::string& text) {
  std::vector<uint8_t> bytes(abrm::kStringSize, 0);
  std::copy_n(text.begin(), std::min<std::size_t>(text.size(), abrm::kStringSize), bytes.begin());
  return bytes;
}

std::vector<uint8_t> u64Bytes(uint64_t value) {
  std::vector<uint8_t> bytes(8);
  gencp::writeU64(bytes.data(), value);
  return bytes;
}

bool singleBit(uint32_t v) { return v != 0 && (v & (v - 1)) == 0; }

constexpr uint64_t kUsPerMs = 1000;

}  // namespace

Device::Device(const Profile& profile) : profile_(profile) {
  description_ = readDescription(profile_.descriptionText);
  file_ =
      profile_.zipDescription
          ? zipSingleFile(profile_.descriptionFileName, profile_.descriptionText)
          : std::vector<uint8_t>(profile_.descriptionText.begin(), profile_.descriptionText.end());
  buildBootstrap();
  buildManifest();
  buildDescriptionRegisters();
  applyInitialValues();
  stored_ = space_;
}

void Device::putU32(uint64_t address, uint32_t value) {
  std::vector<uint8_t> bytes(4);
  gencp::writeU32(bytes.data(), value);
  space_.poke(address, bytes);
}

void Device::buildBootstrap() {
  auto addString = [this](uint64_t address, const std::string& text, Access access) {
    space_.add(address, abrm::kStringSize, access);
    space_.poke(address, fixedString(text));
  };
  space_.add(abrm::kGenCPVersion, 4, Access::RO);
  putU32(abrm::kGenCPVersion, kGenCPVersion);
  addString(abrm::kManufacturerName, profile_.manufacturer, Access::RO);
  addString(abrm::kModelName, profile_.model, Access::RO);
  addString(abrm::kFamilyName, profile_.family, Access::RO);
  addString(abrm::kDeviceVersion, profile_.version, Access::RO);
  addString(abrm::kManufacturerInfo, profile_.manufacturerInfo, Access::RO);
  addString(abrm::kSerialNumber, profile_.serialNumber, Access::RO);
  addString(abrm::kUserDefinedName, profile_.userName, Access::RW);
  const uint64_t capabilities = abrm::kCapUserDefinedName | abrm::kCapFamilyName | abrm::kCapSbrm |
                                abrm::kCapEndiannessRegister | abrm::kCapWrittenLength;
  space_.add(abrm::kDeviceCapability, 8, Access::RO);
  space_.poke(abrm::kDeviceCapability, u64Bytes(capabilities));
  space_.add(abrm::kMaxDeviceResponseTime, 4, Access::RO);
  putU32(abrm::kMaxDeviceResponseTime, profile_.maxResponseTimeMs);
  space_.add(abrm::kManifestTableAddress, 8, Access::RO);
  space_.poke(abrm::kManifestTableAddress, u64Bytes(kManifestAddress));
  space_.add(abrm::kSbrmAddress, 8, Access::RO);
  space_.poke(abrm::kSbrmAddress, u64Bytes(kSbrmAddress));
  space_.add(abrm::kDeviceConfiguration, 8, Access::RW);
  space_.add(abrm::kImplementationEndianness, 4, Access::RO);  // 0: big-endian
  // Serial bootstrap block.
  space_.add(kSbrmAddress + gencp::sbrm::kSupportedBaudrates, 4, Access::RO);
  putU32(kSbrmAddress + gencp::sbrm::kSupportedBaudrates, profile_.supportedBaudRates);
  space_.add(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, 4, Access::RW);
  putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
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
  space_.add(kManifestAddress, table.size(), Access::RO);
  space_.poke(kManifestAddress, table);
  space_.add(kDescriptionFileAddress, file_.size(), Access::RO);
  space_.poke(kDescriptionFileAddress, file_);
}

// Registers inside the bootstrap, the serial block, the manifest or the file are served by
// the device itself; the description only names them.
bool Device::isReserved(uint64_t address, uint64_t length) const {
  auto hits = [&](uint64_t begin, uint64_t size) {
    return address < begin + size && begin < address + length;
  };
  return hits(0, abrm::kAbrmEnd) || hits(kSbrmAddress, gencp::sbrm::kSize) ||
         hits(kManifestAddress, mf::kHeaderSize + mf::kEntrySize) ||
         hits(kDescriptionFileAddress, std::max<uint64_t>(file_.size(), 1));
}

void Device::buildDescriptionRegisters() {
  for (const auto& reg : description_.registers) {
    if (isReserved(reg.address, reg.length)) continue;
    space_.add(reg.address, reg.length, reg.access);
  }
  for (const auto& command : description_.commands) {
    if (!isReserved(command.address, command.length)) commands_[command.address] = command;
  }
}

void Device::applyInitialValues() {
  for (const auto& value : parseValues(profile_.valuesText)) {
    if (!space_.poke(value.address, value.bytes)) {
      throw ProfileError(
          "values: no register of the description covers address 0x" + [](uint64_t a) {
            char text[20];
            std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(a));
            return std::string(text);
          }(value.address));
    }
  }
}

Outcome Device::read(uint64_t address, uint64_t length) const {
  Outcome outcome;
  outcome.status = space_.read(address, length, outcome.data);
  if (outcome.status != gencp::kStatusSuccess) outcome.data.clear();
  return outcome;
}

Outcome Device::write(uint64_t address, const std::vector<uint8_t>& data) {
  if (address == kSbrmAddress + gencp::sbrm::kCurrentBaudrate && data.size() == 4) {
    return writeBaudRate(data);
  }
  Outcome outcome;
  outcome.status = space_.write(address, data);
  if (outcome.status != gencp::kStatusSuccess) return outcome;
  const auto command = commands_.find(address);
  if (command != commands_.end()) return writeCommand(command->second, data);
  return outcome;
}

Outcome Device::writeBaudRate(const std::vector<uint8_t>& data) {
  Outcome outcome;
  const uint32_t requested = gencp::readU32(data.data());
  if (!singleBit(requested) || (requested & profile_.supportedBaudRates) == 0) {
    outcome.status = gencp::kStatusInvalidParameter;
    return outcome;
  }
  if (requested == currentBaud_) {
    confirmation_.active = false;  // the confirmation write at the new rate arrived
    return outcome;
  }
  outcome.switchBaudTo = requested;
  return outcome;
}

void Device::commitBaudSwitch(uint32_t newRateBit) {
  confirmation_.active = true;
  confirmation_.oldRate = currentBaud_;
  confirmation_.deadlineUs = nowUs_ + gencp::sbrm::kConfirmationWindowMs * kUsPerMs;
  currentBaud_ = newRateBit;
  putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
  const uint64_t deadline = confirmation_.deadlineUs;
  schedule(deadline, [this, deadline] {
    if (!confirmation_.active || confirmation_.deadlineUs != deadline) return;
    confirmation_.active = false;
    currentBaud_ = confirmation_.oldRate;
    putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
    ++baudFallbacks_;
  });
}

Outcome Device::writeCommand(const CommandDef& command, const std::vector<uint8_t>& data) {
  Outcome outcome;
  const bool anyBitSet = std::any_of(data.begin(), data.end(), [](uint8_t b) { return b != 0; });
  if (!anyBitSet) return outcome;
  uint32_t busyMs = profile_.commandDelayMs;
  if (!profile_.saveCommand.empty() && command.name == profile_.saveCommand) {
    stored_ = space_;
    ++saveCount_;
    busyMs = std::max(busyMs, profile_.saveTimeMs);
    outcome.processingMs = profile_.saveTimeMs;
  }
  const uint64_t address = command.address;
  const std::vector<uint8_t> zeros(command.length, 0);
  // The stored set keeps the command register clear.
  stored_.poke(address, zeros);
  if (busyMs == 0) {
    space_.poke(address, zeros);
  } else {
    schedule(nowUs_ + busyMs * kUsPerMs, [this, address, zeros] { space_.poke(address, zeros); });
  }
  return outcome;
}

void Device::schedule(uint64_t dueUs, std::function<void()> action) {
  timers_.emplace(dueUs, std::move(action));
}

uint64_t Device::nextTimerUs() const {
  return timers_.empty() ? UINT64_MAX : timers_.begin()->first;
}

void Device::advanceTo(uint64_t nowUs) {
  while (!timers_.empty() && timers_.begin()->first <= nowUs) {
    auto node = timers_.extract(timers_.begin());
    nowUs_ = std::max(nowUs_, node.key());
    node.mapped()();
  }
  nowUs_ = std::max(nowUs_, nowUs);
}

void Device::powerCycle() {
  timers_.clear();
  confirmation_ = Confirmation{};
  space_.restoreFrom(stored_);
  currentBaud_ = gencp::kBaud9600;
  putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
}

}  // namespace vq::sim
