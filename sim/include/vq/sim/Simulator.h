// A GenCP camera on a byte stream. The host side pushes bytes with receive() and takes the
// camera's bytes with transmit(); time is simulated (microseconds) and moves with the bytes
// on the line (10 bit times per byte at the current baud rate) and with advance().
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <vector>

#include "vq/gencp/PacketParser.h"
#include "vq/sim/Device.h"
#include "vq/sim/Faults.h"

namespace vq::sim {

struct LinkStats {
  uint64_t bytesIn = 0;
  uint64_t bytesOut = 0;
  double linkSeconds = 0;  // time the bytes occupied the line at their baud rates
  uint64_t commands = 0;   // well-formed commands received
  uint64_t answers = 0;    // acknowledges queued (including pending acknowledges)
  uint64_t pendingAcks = 0;
  uint64_t repeatedAnswers = 0;  // resends answered from the stored acknowledge
  uint64_t badPackets = 0;       // checksum or length failures
  uint64_t garbledBytes = 0;     // bytes sent at a rate the other side did not use
  uint64_t lostBytes = 0;        // bytes dropped by injected faults
};

class Simulator {
 public:
  // Throws ProfileError when the profile cannot be served.
  explicit Simulator(const Profile& profile);

  // Host to camera. Bytes sent while the host's rate differs from the camera's arrive
  // garbled.
  void receive(const uint8_t* data, std::size_t size);
  // Camera to host: copies up to `max` bytes that are due now; returns the count.
  std::size_t transmit(uint8_t* out, std::size_t max);
  // Bytes queued for the host, due or not.
  std::size_t queuedBytes() const { return output_.size(); }

  // Host-side baud rate (a single rate bit). With `followDevice` (for links whose rate the
  // simulator cannot see, such as a pseudo-terminal) the host always matches the camera.
  void setHostBaudRate(uint32_t rateBit) { hostBaud_ = rateBit; }
  uint32_t hostBaudRate() const { return followDevice_ ? device_.baudRate() : hostBaud_; }
  void setHostFollowsDevice(bool follow) { followDevice_ = follow; }

  void advance(uint64_t microseconds);
  void advanceTo(uint64_t nowUs);
  uint64_t nowUs() const { return device_.now(); }
  // Earliest moment something happens without host input (an answer falls due, a timer
  // runs), UINT64_MAX when nothing is scheduled.
  uint64_t nextEventUs() const;

  Device& device() { return device_; }
  const Device& device() const { return device_; }
  FaultPlan& faults() { return faults_; }
  const LinkStats& stats() const { return stats_; }
  void resetStats() { stats_ = LinkStats{}; }
  // Power-cycles the camera and clears the line: no queued bytes, no remembered answer,
  // no faults, host back at 9600 baud.
  void reset();

  // Time one byte occupies the line at a rate bit.
  static double byteSeconds(uint32_t rateBit);

 private:
  struct OutByte {
    uint8_t value;
    uint32_t rate;
    uint64_t dueUs;
  };
  struct Deferred {
    uint16_t requestId = 0;
    std::vector<uint8_t> answer;
    uint64_t dueUs = 0;
    uint32_t switchBaudTo = 0;
    bool pending = false;  // a pending acknowledge was sent for it
  };

  void receiveByte(uint8_t byte);
  void handle(const gencp::Packet& command);
  void execute(const gencp::Packet& command);
  gencp::Packet dispatch(const gencp::Packet& command, Outcome& outcome);
  void answer(const std::vector<uint8_t>& bytes, uint32_t switchBaudTo = 0);
  void queue(const std::vector<uint8_t>& bytes);
  void finishDeferred();
  void sendPending(uint16_t requestId, uint64_t remainingUs);
  void expireStalePacket();
  void account(uint32_t rateBit);
  bool chance(double probability);

  Device device_;
  FaultPlan faults_;
  LinkStats stats_;
  gencp::PacketParser parser_;
  std::deque<OutByte> output_;
  std::optional<Deferred> deferred_;
  uint32_t hostBaud_ = 1;
  bool followDevice_ = false;
  uint64_t lastRxUs_ = 0;
  bool haveLastAnswer_ = false;
  uint16_t lastRequestId_ = 0;
  std::vector<uint8_t> lastAnswer_;
  std::mt19937 rng_;
};

}  // namespace vq::sim
