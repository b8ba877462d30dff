// The host's end of an in-process link to a simulator: serial-port-like calls that move
// simulated time instead of waiting. Safe to call from several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

#include "vq/sim/Simulator.h"

namespace vq::sim {

class InProcessPort {
 public:
  explicit InProcessPort(Simulator& simulator) : sim_(simulator) {}

  // Sends every byte to the camera. A null buffer with a non-zero size sends nothing and
  // returns false.
  bool write(const uint8_t* data, std::size_t size);

  // Reads up to `size` bytes, waiting at most `timeoutMs` of simulated time for them; returns
  // how many arrived (0 on time-out).
  std::size_t read(uint8_t* data, std::size_t size, uint32_t timeoutMs);

  // Host-side rate (a single CLProtocol baud-rate bit); false for an unknown bit.
  bool setBaudRate(uint32_t rateBit);
  uint32_t baudRate() const;
  // Rates the host side offers: all eight.
  static constexpr uint32_t supportedBaudRates() { return 0xFF; }

  Simulator& simulator() { return sim_; }
  std::mutex& mutex() { return mutex_; }

 private:
  Simulator& sim_;
  mutable std::mutex mutex_;
};

}  // namespace vq::sim
