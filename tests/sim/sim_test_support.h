// Host-side helpers for the simulator suites: a GenCP host on an in-process link.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vq/gencp/Builders.h"
#include "vq/gencp/PacketParser.h"
#include "vq/sim/InProcessPort.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace simtest {

std::string areaProfileDir();
std::string lineProfileDir();
vq::sim::Profile areaProfile();
vq::sim::Profile lineProfile();

// A host talking GenCP to a simulator through an InProcessPort. It opens the device (access
// privilege) unless told not to, and starts with clean statistics.
class Host {
 public:
  explicit Host(const vq::sim::Profile& profile = areaProfile(), bool open = true);

  void send(const vq::gencp::Packet& command);
  // Next packet from the camera within `timeoutMs` of simulated time; resynchronises over
  // garbage and reports the last parse error seen in `lastError`.
  std::optional<vq::gencp::Packet> receive(uint32_t timeoutMs = 3000);
  // send() then receive().
  std::optional<vq::gencp::Packet> transact(const vq::gencp::Packet& command,
                                            uint32_t timeoutMs = 3000);

  // Convenience transactions with fresh request ids; status in *status.
  std::vector<uint8_t> read(uint64_t address, uint16_t length, uint16_t* status = nullptr);
  uint16_t write(uint64_t address, const std::vector<uint8_t>& data);
  uint32_t readU32(uint64_t address);
  uint16_t writeU32(uint64_t address, uint32_t value);
  uint16_t newId();
  // The baud-rate procedure: write at the old rate, follow, confirm at the new one.
  void switchRate(uint32_t rateBit);

  vq::sim::Simulator sim;
  vq::sim::InProcessPort port;
  vq::gencp::PacketParser parser;
  vq::gencp::ParseError lastError = vq::gencp::ParseError::None;

 private:
  uint16_t nextId_ = 1;
};

std::vector<uint8_t> u32Bytes(uint32_t value);

}  // namespace simtest
