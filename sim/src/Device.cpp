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

uint64_t Device::readNumber(uint64_t address, std::size_t size) const {
  std::vector<uint8_t> bytes;
  return space_.peek(address, size, bytes) ? gencp::readUnsigned(bytes.data(), size) : 0;
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

// Outside the bootstrap block the device only takes writes from the host that opened it.
bool Device::needsPrivilege(uint64_t address) const {
  return address >= abrm::kAbrmEnd && accessPrivilege() != kPrivilegeOpen;
}

Outcome Device::write(uint64_t address, const std::vector<uint8_t>& data) {
  if (needsPrivilege(address)) return Outcome{gencp::kStatusAccessDenied, {}, 0, 0};
  if (address == kSbrmAddress + gencp::sbrm::kCurrentBaudrate && data.size() == 4) {
    return writeBaudRate(data);
  }
  if ((address == abrm::kAccessPrivilege || address == abrm::kHeartbeatTimeout) &&
      data.size() == 4 && profile_.heartbeatTimeoutMs != 0) {
    return writeBootstrapNumber(address, data);
  }
  Outcome outcome;
  outcome.status = space_.write(address, data);
  if (outcome.status != gencp::kStatusSuccess) return outcome;
  if (address < abrm::kDeviceConfiguration + 8 && address + data.size() > abrm::kDeviceConfiguration) {
    hostActivity();  // the heartbeat was switched on or off
  }
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
  outcome.processingMs = profile_.baudSwitchMs;
  return outcome;
}

// Access privilege takes Available or Open; a heartbeat time-out of zero is refused.
Outcome Device::writeBootstrapNumber(uint64_t address, const std::vector<uint8_t>& data) {
  Outcome outcome;
  const uint32_t value = gencp::readU32(data.data());
  const bool valid = address == abrm::kAccessPrivilege
                         ? value == kPrivilegeAvailable || value == kPrivilegeOpen
                         : value != 0;
  if (!valid) {
    outcome.status = gencp::kStatusInvalidParameter;
    return outcome;
  }
  putU32(address, value);
  hostActivity();
  return outcome;
}

void Device::hostActivity() {
  heartbeatDueUs_ = heartbeatEnabled() && !heartbeatSuspended_
                        ? nowUs_ + readNumber(abrm::kHeartbeatTimeout, 4) * kUsPerMs
                        : UINT64_MAX;
}

void Device::suspendHeartbeat(bool suspended) {
  heartbeatSuspended_ = suspended;
  hostActivity();
}

// Nobody spoke within the heartbeat time-out: the host is gone, so the device frees itself
// and returns to the rate a new host starts with.
void Device::expireHeartbeat() {
  heartbeatDueUs_ = UINT64_MAX;
  ++heartbeatExpiries_;
  putU32(abrm::kAccessPrivilege, kPrivilegeAvailable);
  currentBaud_ = gencp::kBaud9600;
  confirmation_.active = false;
  putU32(kSbrmAddress + gencp::sbrm::kCurrentBaudrate, currentBaud_);
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
  const uint64_t timer = timers_.empty() ? UINT64_MAX : timers_.begin()->first;
  return std::min(timer, heartbeatDueUs_);
}

void Device::advanceTo(uint64_t nowUs) {
  for (uint64_t due; (due = nextTimerUs()) <= nowUs;) {
    nowUs_ = std::max(nowUs_, due);
    if (due == heartbeatDueUs_) {
      expireHeartbeat();
      continue;
    }
    auto node = timers_.extract(timers_.begin());
    node.mapped()();
  }
  nowUs_ = std::max(nowUs_, nowUs);
}

void Device::powerCycle() {
  timers_.clear();
  space_.restoreFrom(stored_);
  resetLinkState();
}

}  // namespace vq::sim
