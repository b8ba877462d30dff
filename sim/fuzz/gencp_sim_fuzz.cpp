// libFuzzer target: arbitrary bytes on the simulator's serial line, interleaved with time
// passing, faults and reads of its answers; the same bytes also go through the packet
// parser on its own. Nothing may crash, hang or leak, and every answer must be a
// well-formed packet.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "vq/gencp/PacketParser.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace {

vq::sim::Simulator& simulator() {
  static std::unique_ptr<vq::sim::Simulator> instance = [] {
    auto sim =
        std::make_unique<vq::sim::Simulator>(vq::sim::loadProfile(VQ_SIM_SOURCE_PROFILE_DIR));
    sim->device().setCommandDelayMs(5);
    sim->setHostFollowsDevice(true);  // rate changes must not garble the answers checked here
    return sim;
  }();
  return *instance;
}

void checkAnswers(vq::sim::Simulator& sim, vq::gencp::PacketParser& answers) {
  uint8_t out[512];
  for (std::size_t n; (n = sim.transmit(out, sizeof out)) > 0;) answers.feed(out, n);
  while (auto result = answers.next()) {
    // With no corruption faults injected and matching rates, the camera only sends
    // well-formed acknowledges.
    if (!result->ok() || !result->packet.isAck()) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  {
    vq::gencp::PacketParser parser;
    parser.feed(data, size);
    while (parser.next()) {
    }
  }
  auto& sim = simulator();
  sim.reset();
  vq::gencp::PacketParser answers;
  // Chunks: one control byte, then up to 63 bytes for the line.
  std::size_t i = 0;
  while (i < size) {
    const uint8_t control = data[i++];
    const std::size_t length = std::min<std::size_t>(control & 0x3F, size - i);
    sim.receive(data + i, length);
    i += length;
    if (control & 0x40) sim.advance(uint64_t{control} * 4000);  // up to about a second
    if (control & 0x80) sim.faults().processingDelayMs = (control & 0x3F) * 20;
    checkAnswers(sim, answers);
  }
  sim.advance(2'000'000);
  checkAnswers(sim, answers);
  return 0;
}
