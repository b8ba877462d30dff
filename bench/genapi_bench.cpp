// Node-map costs on the largest real descriptions: load + connect timed side
// by side with pugixml's own parse of the same bytes, the heap a loaded map
// holds, and reading every feature cold (after InvalidateNodes) and cached.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#ifdef __linux__
#include <malloc.h>
#endif

#ifdef VQ_BENCH_HAVE_GENAPI
#include <GenApi/GenApi.h>
#include <pugixml.hpp>

#include "LargestDescription.h"
#include "XmlParseOptions.h"
#include "ZeroPort.h"

namespace {

constexpr size_t kDescriptionsMeasured = 3;

// Measurement only: heap in use, including blocks malloc maps on their own.
int64_t HeapBytesInUse() {
#ifdef __linux__
  const struct mallinfo2 info = mallinfo2();
  return static_cast<int64_t>(info.uordblks + info.hblkhd);
#else
  return 0;
#endif
}

struct Description {
  std::string name;
  std::string text;
  GenICam::gcstring xml;
};

// The largest descriptions of the corpus, largest first.
const std::vector<Description>& Largest() {
  static const std::vector<Description> descriptions = [] {
    std::vector<Description> out;
    for (const std::string& path : vq_bench::LargestDescriptionPaths(kDescriptionsMeasured)) {
      std::ifstream in(path, std::ios::binary);
      std::stringstream buffer;
      buffer << in.rdbuf();
      const std::string text = buffer.str();
      out.push_back(Description{std::filesystem::path(path).filename().string(), text,
                                GenICam::gcstring(text.data(), text.size())});
    }
    return out;
  }();
  return descriptions;
}

using CountingPort = vq_support::ZeroPort;

struct LoadedMap {
  GenApi::CNodeMapRef map;
  CountingPort port;
  GenApi::NodeList_t nodes;

  explicit LoadedMap(const Description& description) {
    map._LoadXMLFromString(description.xml);
    map._Connect(&port, "Device");
    map._GetNodes(nodes);
  }
};

double Seconds(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double>(d).count();
}

// One iteration parses the bytes with pugixml, with the options the loader
// parses with and with pugixml's defaults (which keep every text in a node of
// its own), then loads and connects a node map from the same bytes; the
// document is freed before the load, so both start from the same recycled
// heap. The benchmark's time is the load + connect; the counters hold both
// (mean and best of the run), their ratios, and the heap one loaded map holds.
// On a shared machine the best times are the steadier measure: other work
// only ever adds time.
void BM_LoadAndConnect(benchmark::State& state, const Description* description) {
  const int64_t heapBefore = HeapBytesInUse();
  int64_t heapHeld = 0;
  size_t nodeCount = 0;
  {
    LoadedMap loaded(*description);
    heapHeld = HeapBytesInUse() - heapBefore - static_cast<int64_t>(
        loaded.nodes.size() * sizeof(GenApi::INode*));  // the list is the benchmark's own
    nodeCount = loaded.nodes.size();
  }
  double parseSeconds = 0;
  double defaultParseSeconds = 0;
  double loadSeconds = 0;
  double bestParse = 1e9;
  double bestDefaultParse = 1e9;
  double bestLoad = 1e9;
  for (auto _ : state) {
    using Clock = std::chrono::steady_clock;
    auto document = std::make_unique<pugi::xml_document>();
    auto map = std::make_unique<GenApi::CNodeMapRef>();
    CountingPort port;
    const auto start = Clock::now();
    benchmark::DoNotOptimize(document->load_buffer(description->text.data(),
                                                   description->text.size(),
                                                   GenApi::impl::kXmlParseOptions));
    const auto parsed = Clock::now();
    document.reset();
    document = std::make_unique<pugi::xml_document>();
    const auto defaultStart = Clock::now();
    benchmark::DoNotOptimize(
        document->load_buffer(description->text.data(), description->text.size()));
    const auto defaultParsed = Clock::now();
    document.reset();
    const auto loading = Clock::now();
    map->_LoadXMLFromString(description->xml);
    map->_Connect(&port, "Device");
    benchmark::DoNotOptimize(map->_Ptr);
    const auto loaded = Clock::now();
    parseSeconds += Seconds(parsed - start);
    defaultParseSeconds += Seconds(defaultParsed - defaultStart);
    bestDefaultParse = std::min(bestDefaultParse, Seconds(defaultParsed - defaultStart));
    loadSeconds += Seconds(loaded - loading);
    bestParse = std::min(bestParse, Seconds(parsed - start));
    bestLoad = std::min(bestLoad, Seconds(loaded - loading));
    state.SetIterationTime(Seconds(loaded - loading));
  }
  const double iterations = static_cast<double>(state.iterations());
  const double xmlBytes = static_cast<double>(description->text.size());
  state.counters["nodes"] = static_cast<double>(nodeCount);
  state.counters["xml_MiB"] = xmlBytes / (1024.0 * 1024.0);
  state.counters["pugixml_ms"] = 1e3 * parseSeconds / iterations;
  state.counters["load_ms"] = 1e3 * loadSeconds / iterations;
  state.counters["load_per_parse"] = loadSeconds / parseSeconds;
  state.counters["best_pugixml_ms"] = 1e3 * bestParse;
  state.counters["best_load_ms"] = 1e3 * bestLoad;
  state.counters["best_load_per_parse"] = bestLoad / bestParse;
  state.counters["default_pugixml_ms"] = 1e3 * defaultParseSeconds / iterations;
  state.counters["best_load_per_default_parse"] = bestLoad / bestDefaultParse;
  state.counters["heap_MiB"] = static_cast<double>(heapHeld) / (1024.0 * 1024.0);
  state.counters["heap_per_xml"] = static_cast<double>(heapHeld) / xmlBytes;
}

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

void BM_ReadAllFeaturesCold(benchmark::State& state, const Description* description) {
  LoadedMap loaded(*description);
  const int64_t readsBefore = loaded.port.reads;
  PassResult last;
  for (auto _ : state) {
    loaded.map._InvalidateNodes();
    last = ReadEveryFeature(loaded);
  }
  ReportPasses(state, loaded, readsBefore, last);
}

void BM_ReadAllFeaturesCached(benchmark::State& state, const Description* description) {
  LoadedMap loaded(*description);
  ReadEveryFeature(loaded);  // fills the caches
  const int64_t readsBefore = loaded.port.reads;
  PassResult last;
  for (auto _ : state) last = ReadEveryFeature(loaded);
  ReportPasses(state, loaded, readsBefore, last);
}

void BM_NoDescriptions(benchmark::State& state) {
  state.SkipWithError("no descriptions found in VQ_GENICAM_XML_DIR (" VQ_GENICAM_XML_DIR ")");
  for (auto _ : state) {
  }
}

const bool kRegistered = [] {
  const auto& descriptions = Largest();
  if (descriptions.empty()) benchmark::RegisterBenchmark("BM_NoDescriptions", BM_NoDescriptions);
  for (const Description& d : descriptions) {
    benchmark::RegisterBenchmark(("BM_LoadAndConnect/" + d.name).c_str(), BM_LoadAndConnect, &d)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->MinTime(2.0);
  }
  if (!descriptions.empty()) {
    const Description* largest = &descriptions.front();
    benchmark::RegisterBenchmark(("BM_ReadAllFeaturesCold/" + largest->name).c_str(),
                                 BM_ReadAllFeaturesCold, largest)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("BM_ReadAllFeaturesCached/" + largest->name).c_str(),
                                 BM_ReadAllFeaturesCached, largest)
        ->Unit(benchmark::kMillisecond);
  }
  return true;
}();

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
