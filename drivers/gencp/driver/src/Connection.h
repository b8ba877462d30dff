// State of one probed device, found by its cookie: identity, bootstrap facts, current baud
// rate, a write the device still runs, downloaded descriptions, queued events, last error.
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

namespace vq::gencpdrv {

struct BootstrapInfo {
  uint32_t gencpVersion = 0;
  uint64_t capabilities = 0;
  uint32_t maxResponseMs = 0;
  uint64_t manifestAddress = 0;
  std::optional<uint64_t> sbrmAddress;
};

struct Connection {
  std::mutex mutex;  // held for the whole of every driver call on this connection
  DeviceIdentity identity;
  std::string shortDeviceId;
  BootstrapInfo bootstrap;
  uint32_t baudBit = CL_BAUDRATE_9600;
  std::optional<PendingWrite> pendingWrite;
  std::map<std::string, std::string> descriptions;  // by XML ID
  std::deque<std::vector<uint8_t>> events;          // raw event packets, oldest first
  std::string lastError;

  // A channel on `serial` at the connection's baud rate; events go to the queue.
  Channel channel(ISerial* serial);
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
