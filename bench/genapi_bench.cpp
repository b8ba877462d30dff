// Node-map costs on the largest real description: load + connect, memory, and
// reading every feature cold (after InvalidateNodes) and cached.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#ifdef __linux__
#include <malloc.h>
#include <sys/resource.h>
#endif

#ifdef VQ_BENCH_HAVE_GENAPI
#include <GenApi/GenApi.h>

#include "LargestDescription.h"
#include "ZeroPort.h"

namespace {

// Measurement only: heap in use and the process's peak resident size.
int64_t HeapBytesInUse() {
#ifdef __linux__
  return static_cast<int64_t>(mallinfo2().uordblks);
#else
  return 0;
#endif
}

int64_t PeakRssKiB() {
#ifdef __linux__
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
#else
  return 0;
#endif
}

using vq_bench::LargestDescription;

// A register image of zeros that counts what the node map asks for.
using CountingPort = vq_support::ZeroPort;

struct LoadedMap {
  GenApi::CNodeMapRef map;
  CountingPort port;
  GenApi::NodeList_t nodes;

  LoadedMap() {
    map._LoadXMLFromString(GenICam::gcstring(LargestDescription()));
    map._Connect(&port, "Device");
    map._GetNodes(nodes);
  }
};

LoadedMap& Shared() {
  static LoadedMap loaded;
  return loaded;
}

bool SkipWithoutDescriptions(benchmark::State& state) {
  if (!LargestDescription().empty()) return false;
  state.SkipWithError("no descriptions found in VQ_GENICAM_XML_DIR (" VQ_GENICAM_XML_DIR ")");
  return true;
}

void BM_LoadAndConnectLargest(benchmark::State& state) {
  if (SkipWithoutDescriptions(state)) return;
  // Memory of one node map, measured once: heap held while it lives, and peak RSS growth.
  static const int64_t heapBefore = HeapBytesInUse();
  static const int64_t peakBefore = PeakRssKiB();
  static int64_t heapGrowth = 0;
  static int64_t peakGrowth = 0;
  static int64_t nodeCount = 0;
  static bool measured = false;
  if (!measured) {
    LoadedMap& loaded = Shared();
    heapGrowth = HeapBytesInUse() - heapBefore;
    peakGrowth = PeakRssKiB() - peakBefore;
    nodeCount = static_cast<int64_t>(loaded.nodes.size());
    measured = true;
  }
  for (auto _ : state) {
    GenApi::CNodeMapRef map;
    CountingPort port;
    map._LoadXMLFromString(GenICam::gcstring(LargestDescription()));
    map._Connect(&port, "Device");
    benchmark::DoNotOptimize(map._Ptr);
  }
  state.counters["nodes"] = static_cast<double>(nodeCount);
  state.counters["xml_bytes"] = static_cast<double>(LargestDescription().size());
  state.counters["heap_MiB"] = static_cast<double>(heapGrowth) / (1024.0 * 1024.0);
  state.counters["peak_rss_growth_MiB"] = static_cast<double>(peakGrowth) / 1024.0;
}
BENCHMARK(BM_LoadAndConnectLargest)->Unit(benchmark::kMillisecond)->MinTime(2.0);

struct PassResult {
  int64_t features = 0;
  int64_t errors = 0;
};

void ReadOne(GenApi::INode* node, PassResult& result) {
  auto* value = dynamic_cast<GenApi::IValue*>(node);
  if (value == nullptr || !GenApi::IsReadable(value)) return;
  ++result.features;
  if (auto* integer = dynamic_cast<GenApi::IInteger*>(node)) {
    benchmark::DoNotOptimize(integer->GetValue());
  } else if (auto* real = dynamic_cast<GenApi::IFloat*>(node)) {
    benchmark::DoNotOptimize(real->GetValue());
  } else if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(node)) {
    benchmark::DoNotOptimize(enumeration->GetIntValue());
  } else if (auto* flag = dynamic_cast<GenApi::IBoolean*>(node)) {
    benchmark::DoNotOptimize(flag->GetValue());
  } else {
    benchmark::DoNotOptimize(value->ToString());
  }
}

PassResult ReadEveryFeature(LoadedMap& loaded) {
  PassResult result;
  for (GenApi::INode* node : loaded.nodes) {
    try {
      ReadOne(node, result);
    } catch (const GenICam::GenericException&) {
      ++result.errors;
    }
  }
  return result;
}

void ReportPasses(benchmark::State& state, LoadedMap& loaded, int64_t readsBefore,
                  const PassResult& last) {
  const double passes = static_cast<double>(state.iterations());
  state.counters["port_reads_per_pass"] =
      static_cast<double>(loaded.port.reads - readsBefore) / passes;
  state.counters["features_read"] = static_cast<double>(last.features);
  state.counters["read_errors"] = static_cast<double>(last.errors);
}

void BM_ReadAllFeaturesCold(benchmark::State& state) {
  if (SkipWithoutDescriptions(state)) return;
  LoadedMap& loaded = Shared();
  const int64_t readsBefore = loaded.port.reads;
  PassResult last;
  for (auto _ : state) {
    loaded.map._InvalidateNodes();
    last = ReadEveryFeature(loaded);
  }
  ReportPasses(state, loaded, readsBefore, last);
}
BENCHMARK(BM_ReadAllFeaturesCold)->Unit(benchmark::kMillisecond);

void BM_ReadAllFeaturesCached(benchmark::State& state) {
  if (SkipWithoutDescriptions(state)) return;
  LoadedMap& loaded = Shared();
  loaded.map._InvalidateNodes();
  ReadEveryFeature(loaded);  // fills the caches
  const int64_t readsBefore = loaded.port.reads;
  PassResult last;
  for (auto _ : state) last = ReadEveryFeature(loaded);
  ReportPasses(state, loaded, readsBefore, last);
}
BENCHMARK(BM_ReadAllFeaturesCached)->Unit(benchmark::kMillisecond);

}  // namespace

#else

namespace {
void BM_NodeMapUnavailable(benchmark::State& state) {
  state.SkipWithError("GenApi is not part of this build");
  for (auto _ : state) {
  }
}
BENCHMARK(BM_NodeMapUnavailable);
}  // namespace

#endif
