#include "sim_test_support.h"

#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Endian.h"

namespace simtest {

using namespace vq;

std::string areaProfileDir() { return std::string(VQ_SOURCE_DIR) + "/examples/korva-area"; }
std::string lineProfileDir() { return std::string(VQ_SOURCE_DIR) + "/examples/korva-line"; }
sim::Profile areaProfile() { return sim::loadProfile(areaProfileDir()); }
sim::Profile lineProfile() { return sim::loadProfile(lineProfileDir()); }

std::vector<uint8_t> u32Bytes(uint32_t value) {
  std::vector<uint8_t> bytes(4);
  gencp::writeU32(bytes.data(), value);
  return bytes;
}

Host::Host(const sim::Profile& profile, bool open) : sim(profile), port(sim) {
  if (open) writeU32(gencp::abrm::kAccessPrivilege, sim::kPrivilegeOpen);
  sim.resetStats();
}

void Host::switchRate(uint32_t rateBit) {
  const uint64_t current = sim::kSbrmAddress + gencp::sbrm::kCurrentBaudrate;
  writeU32(current, rateBit);
  port.setBaudRate(rateBit);
  writeU32(current, rateBit);
}

uint16_t Host::newId() {
  const uint16_t id = nextId_++;
  if (nextId_ == 0) nextId_ = 1;
  return id;
}

void Host::send(const gencp::Packet& command) {
  const auto bytes = gencp::encode(command);
  port.write(bytes.data(), bytes.size());
}

std::optional<gencp::Packet> Host::receive(uint32_t timeoutMs) {
  const uint64_t deadline = sim.nowUs() + uint64_t{timeoutMs} * 1000;
  for (;;) {
    while (auto result = parser.next()) {
      if (result->ok()) return result->packet;
      lastError = result->error;
    }
    if (sim.nowUs() >= deadline) return std::nullopt;
    uint8_t byte;
    const uint32_t leftMs = static_cast<uint32_t>((deadline - sim.nowUs() + 999) / 1000);
    if (port.read(&byte, 1, leftMs) == 1) parser.feed(&byte, 1);
  }
}

std::optional<gencp::Packet> Host::transact(const gencp::Packet& command, uint32_t timeoutMs) {
  send(command);
  return receive(timeoutMs);
}

std::vector<uint8_t> Host::read(uint64_t address, uint16_t length, uint16_t* status) {
  auto ack = transact(gencp::makeReadMemCommand(newId(), address, length));
  if (status) *status = ack ? ack->status() : 0xFFFF;
  return ack ? ack->scd : std::vector<uint8_t>{};
}

uint16_t Host::write(uint64_t address, const std::vector<uint8_t>& data) {
  auto ack = transact(gencp::makeWriteMemCommand(newId(), address, data));
  return ack ? ack->status() : 0xFFFF;
}

uint32_t Host::readU32(uint64_t address) {
  const auto data = read(address, 4);
  return data.size() == 4 ? gencp::readU32(data.data()) : 0xDEADBEEF;
}

uint16_t Host::writeU32(uint64_t address, uint32_t value) {
  return write(address, u32Bytes(value));
}

}  // namespace simtest
