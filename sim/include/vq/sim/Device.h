// The simulated camera's registers and behaviours, independent of any byte stream:
// bootstrap registers, manifest and description file, serial bootstrap block with the
// baud-rate confirmation procedure, access privilege and heartbeat, registers of the
// description, self-clearing commands and the configuration save.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "vq/sim/DescriptionMap.h"
#include "vq/sim/Profile.h"
#include "vq/sim/RegisterSpace.h"

namespace vq::sim {

// Fixed layout of the simulated device.
constexpr uint64_t kSbrmAddress = 0x10000;
constexpr uint64_t kManifestAddress = 0x20000;
constexpr uint64_t kDescriptionFileAddress = 0x100000;
constexpr uint32_t kGenCPVersion = 0x00010003;  // 1.3
// Access privilege values.
constexpr uint32_t kPrivilegeAvailable = 0;
constexpr uint32_t kPrivilegeOpen = 1;

struct Outcome {
  uint16_t status = 0;
  std::vector<uint8_t> data;  // read data
  uint32_t processingMs = 0;  // time before the answer may go out
  uint32_t switchBaudTo = 0;  // non-zero: switch to this rate once the answer is sent
};

class Device {
 public:
  // Throws ProfileError for a description or values file the device cannot use.
  explicit Device(const Profile& profile);

  Outcome read(uint64_t address, uint64_t length) const;
  Outcome write(uint64_t address, const std::vector<uint8_t>& data);

  // Simulated time in microseconds; runs every timer that became due (command clears,
  // baud-rate fallback). Time never goes backwards.
  void advanceTo(uint64_t nowUs);
  uint64_t now() const { return nowUs_; }
  // Earliest pending timer, UINT64_MAX when none.
  uint64_t nextTimerUs() const;

  // A command from the host arrived: restarts the heartbeat time-out.
  void hostActivity();
  // While a command runs past the maximum response time the heartbeat is suspended.
  void suspendHeartbeat(bool suspended);
  bool heartbeatEnabled() const;
  uint32_t accessPrivilege() const;
  // Heartbeat time-outs that expired (privilege dropped, line back to 9600 baud).
  unsigned heartbeatExpiries() const { return heartbeatExpiries_; }

  // Called when the acknowledge of a baud-rate write has been sent at the old rate.
  void commitBaudSwitch(uint32_t newRateBit);
  uint32_t baudRate() const { return currentBaud_; }
  uint32_t supportedBaudRates() const { return profile_.supportedBaudRates; }
  bool awaitingBaudConfirmation() const { return confirmation_.active; }
  unsigned baudFallbacks() const { return baudFallbacks_; }

  // Configuration store: the register set the last save copied, and how often it ran.
  const RegisterSpace& storedConfiguration() const { return stored_; }
  unsigned saveCount() const { return saveCount_; }
  // Restart: registers come back from the stored set, the line returns to 9600 baud.
  void powerCycle();

  const Profile& profile() const { return profile_; }
  const DescriptionInfo& description() const { return description_; }
  const RegisterSpace& registers() const { return space_; }
  RegisterSpace& registers() { return space_; }
  const std::vector<uint8_t>& descriptionFile() const { return file_; }
  uint32_t maxResponseTimeMs() const { return profile_.maxResponseTimeMs; }
  // Time (ms) a command register keeps its value before clearing itself.
  void setCommandDelayMs(uint32_t ms) { profile_.commandDelayMs = ms; }

 private:
  void buildBootstrap();
  void buildManifest();
  void buildDescriptionRegisters();
  void applyInitialValues();
  bool isReserved(uint64_t address, uint64_t length) const;
  void putU32(uint64_t address, uint32_t value);
  uint64_t readNumber(uint64_t address, std::size_t size) const;
  void resetLinkState();
  bool needsPrivilege(uint64_t address) const;
  Outcome writeBaudRate(const std::vector<uint8_t>& data);
  Outcome writeBootstrapNumber(uint64_t address, const std::vector<uint8_t>& data);
  void expireHeartbeat();
  Outcome writeCommand(const CommandDef& command, const std::vector<uint8_t>& data);
  void schedule(uint64_t dueUs, std::function<void()> action);

  struct Confirmation {
    bool active = false;
    uint32_t oldRate = 0;
    uint64_t deadlineUs = 0;
  };

  Profile profile_;
  DescriptionInfo description_;
  std::vector<uint8_t> file_;
  RegisterSpace space_;
  RegisterSpace stored_;
  std::map<uint64_t, CommandDef> commands_;  // by register address
  std::multimap<uint64_t, std::function<void()>> timers_;
  uint64_t nowUs_ = 0;
  uint32_t currentBaud_ = 1;
  Confirmation confirmation_;
  unsigned baudFallbacks_ = 0;
  unsigned saveCount_ = 0;
  uint64_t heartbeatDueUs_ = UINT64_MAX;
  bool heartbeatSuspended_ = false;
  unsigned heartbeatExpiries_ = 0;
};

}  // namespace vq::sim
