// The module through the host interface on the largest real description,
// served by the in-process simulator from a zero-filled register image:
//  - GetParameterAttribute per attribute code that needs no camera read,
//    round-robin over every parameter at visibility Invisible;
//  - the register reads of two full refreshes of every parameter's value
//    text, the second split by whether the register read allows caching.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "LargestDescription.h"
#include "support/ComputedRegisters.h"
#include "support/ForwardingLink.h"
#include "support/TestHost.h"
#include "vq/gencp/Constants.h"
#include "vq/gencp/Endian.h"
#include "vq/gencp/PacketParser.h"
#include "vq/platform/environment.h"

namespace {

// Passes everything to the camera and notes the address of every register
// read the host sends.
class ReadLoggingLink : public vq::test::ForwardingLink {
 public:
  using ForwardingLink::ForwardingLink;
  std::int32_t Write(const void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) override {
    parser_.feed(static_cast<const std::uint8_t*>(buffer), count);
    while (auto result = parser_.next()) {
      if (result->ok() && result->packet.commandId == vq::gencp::kReadMemCmd &&
          result->packet.scd.size() >= 8) {
        reads.push_back(vq::gencp::readU64(result->packet.scd.data()));
      }
    }
    return ForwardingLink::Write(buffer, count, timeoutMs);
  }

  std::vector<std::uint64_t> reads;

 private:
  vq::gencp::PacketParser parser_;
};

// One opened camera for the whole program.
struct Fixture {
  std::string text = vq_bench::LargestDescription();
  vq::test::SimulatedLink camera{vq::test::ProfileForDescription(text, "A2040M")};
  ReadLoggingLink link{camera};
  std::unique_ptr<vq::test::TestHost> host;
  std::uint32_t count = 0;
  bool ready = false;
  // Addresses of the description's registers whose caching mode is NoCache.
  std::set<std::uint64_t> uncachable;

  Fixture() {
    vq::platform::SetEnv("VQ_DIALOG", "none");
    vq::test::CoverComputedRegisters(text, camera.simulator());
    FindUncachableRegisters();
    host = std::make_unique<vq::test::TestHost>();
    host->cameraText = "A2040M";
    host->Attach(0, &link);
    std::uint32_t status = 9;
    if (host->Open(0, 0, 0, &status) != 1 || status != 0) return;
    char level[VISIBILITY_LEVEL_DATA_SIZE] = "Invisible";
    host->Extension().ExecuteCommand(CMD_VISIBILITY_LEVEL, level, sizeof level);
    count = host->Extension().GetParameterCount();
    ready = count > 0;
  }

  void FindUncachableRegisters() {
    GenApi::CNodeMapRef map("Device");
    map._LoadXMLFromString(text.c_str());
    vq::test::RecordingPort port(camera.simulator().device().registers());
    map._Connect(&port, "Device");
    GenApi::NodeList_t nodes;
    map._GetNodes(nodes);
    for (GenApi::INode* node : nodes) {
      auto* reg = dynamic_cast<GenApi::IRegister*>(node);
      if (reg == nullptr || node->GetCachingMode() != GenApi::NoCache) continue;
      try {
        uncachable.insert(std::uint64_t(reg->GetAddress()));
      } catch (const GenICam::GenericException&) {
      }
    }
  }
};

Fixture& TheFixture() {
  static Fixture fixture;
  return fixture;
}

void BM_TwoValueTextRefreshes(benchmark::State& state) {
  Fixture& fixture = TheFixture();
  if (!fixture.ready) {
    state.SkipWithError("the description did not open");
    return;
  }
  VQ_Ext& ext = fixture.host->Extension();
  std::size_t first = 0;
  std::size_t second = 0;
  std::size_t secondUncachable = 0;
  for (auto _ : state) {
    for (int refresh = 0; refresh < 2; ++refresh) {
      fixture.link.reads.clear();
      for (std::uint32_t index = 0; index < fixture.count; ++index) {
        char text[512];
        try {
          ext.GetParameterAttribute(index, PARAM_VALUE_TEXT, text, sizeof text);
        } catch (const GenICam::GenericException&) {
        }
      }
      (refresh == 0 ? first : second) = fixture.link.reads.size();
    }
    for (std::uint64_t address : fixture.link.reads) {
      secondUncachable += fixture.uncachable.count(address);
    }
  }
  state.counters["parameters"] = fixture.count;
  state.counters["reads_first"] = double(first);
  state.counters["reads_second"] = double(second);
  state.counters["reads_second_nocache"] = double(secondUncachable);
  state.counters["reads_second_cacheable"] = double(second - secondUncachable);
}
// The first pass fills the cache: once per program, before anything else
// has read the values.
BENCHMARK(BM_TwoValueTextRefreshes)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_ParameterAttribute(benchmark::State& state) {
  Fixture& fixture = TheFixture();
  if (!fixture.ready) {
    state.SkipWithError("the description did not open");
    return;
  }
  VQ_Ext& ext = fixture.host->Extension();
  const auto code = static_cast<std::uint32_t>(state.range(0));
  std::vector<EntryBlock> entries(256);
  const auto size = code == PARAM_ENTRY_LIST ? std::int32_t(entries.size() * sizeof(EntryBlock))
                    : code == PARAM_DISPLAY_NAME ? 512
                                                 : 4;
  std::uint32_t index = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ext.GetParameterAttribute(index, code, entries.data(), size));
    if (++index == fixture.count) index = 0;
  }
  state.counters["parameters"] = fixture.count;
}
// Every code but PARAM_VALUE_TEXT, the one that reads the camera.
BENCHMARK(BM_ParameterAttribute)
    ->DenseRange(0, 1)
    ->DenseRange(3, 13)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
