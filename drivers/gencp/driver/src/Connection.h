// State of one probed device, found by its cookie: identity, bootstrap facts, current baud
// rate, the manifest once read, a write the device still runs, downloaded descriptions,
// queued events, last error.
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Channel.h"
#include "Identity.h"
#include "Manifest.h"

namespace vq::gencpdrv {

struct BootstrapInfo {
  uint32_t gencpVersion = 0;
  uint64_t capabilities = 0;
  uint32_t maxResponseMs = 0;
  uint64_t manifestAddress = 0;
  std::optional<uint64_t> sbrmAddress;
  uint64_t deviceConfiguration = 0;  // as last read; bit 0 enables the heartbeat
  std::string serialNumberText;      // the serial number register as text (a fingerprint)
  uint32_t baudRates = CL_BAUDRATE_9600;  // the serial bootstrap block's supported rates

  uint32_t stringEncoding() const { return static_cast<uint32_t>(capabilities >> 4) & 0xF; }
  // The wait for an answer: the device's maximum response time, within sane bounds.
  uint32_t responseMs() const;
};

// A write the caller stopped waiting for while the device still runs it.
struct AbandonedWrite {
  uint16_t requestId = 0;
  Deadline until{0};
};

struct Connection {
  std::mutex mutex;  // held for the whole of every driver call on this connection
  DeviceIdentity identity;
  std::string shortDeviceId;
  BootstrapInfo bootstrap;
  uint32_t baudBit = CL_BAUDRATE_9600;
  std::optional<std::vector<ManifestEntry>> manifest;
  std::optional<PendingWrite> pendingWrite;
  std::optional<AbandonedWrite> abandonedWrite;
  std::map<std::string, std::string> descriptions;  // by XML ID
  std::deque<std::vector<uint8_t>> events;          // raw event packets, oldest first
  std::string lastError;

  // A channel on `serial` at the connection's rate; events go to the queue. A write the device
  // still runs for an abandoned call is waited out first, so the next command is not refused
  // as busy.
  // A pending write the caller did not continue is abandoned first.
  Channel channel(ISerial* serial);
  // The channel on which the pending write continues.
  Channel pendingChannel(ISerial* serial);
  // Gives up waiting for the pending write; the device finishes it on its own.
  void abandonPendingWrite();
};

// Bits per second of a CL_BAUDRATE_* bit (9600 for anything else).
uint32_t bitsPerSecond(uint32_t baudBit);

class ConnectionRegistry {
 public:
  static CLUINT32 add(std::shared_ptr<Connection> connection);
  static std::shared_ptr<Connection> find(CLUINT32 cookie);
  static bool remove(CLUINT32 cookie);
  static void clear();
};

// Events kept per connection before the oldest are dropped.
constexpr std::size_t kMaxQueuedEvents = 256;

}  // namespace vq::gencpdrv
