// Opening a camera through CCLPort and the GenCP driver over the in-process simulated link,
// measured in line time from the simulator's statistics: probe + connect + description against
// the bytes that must cross, the reopen served by the description cache and the driver's memory
// of the camera (in memory, then from disk in a fresh state), the boosted download, and the
// handling of damaged cache entries and device records.
#include <CLProtocol/CLPort.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "../gencp/gencp_driver_harness.h"
#include "vq/platform/environment.h"

namespace {

namespace fs = std::filesystem;
using gencp_driver_test::SimSerial;
using GenICam::gcstring;

constexpr double kPacketOverhead = 44;  // a ReadMem command (28) and its acknowledge header (16)
constexpr uint32_t kChunk = 1008;       // data of the largest acknowledge

// A directory of this test program only, emptied on creation.
fs::path PrivateDir(const std::string& name) {
  const fs::path dir = fs::path(::testing::TempDir()) / (name + "-" + std::to_string(getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  return dir;
}

std::string Contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

struct LineUse {
  uint64_t bytes = 0;
  double seconds = 0;
};

class Opening : public ::testing::Test {
 protected:
  void SetUp() override {
    vq::platform::UnsetEnv("GENICAM_CLPROTOCOL");
    cacheDir_ = PrivateDir("clp_cache");
    vq::platform::SetEnv("XDG_CACHE_HOME", cacheDir_.string());
    CLProtocol::CCLPort::Terminate();  // no driver state from earlier tests
    profile_ = vq::sim::loadProfile(gencp_driver_test::ProfileDir("korva-area"));
    sim_ = std::make_unique<vq::sim::Simulator>(profile_);
    serial_ = std::make_unique<SimSerial>(*sim_);
    Register();
  }
  void TearDown() override {
    CLProtocol::CCLPort::Terminate();
    fs::remove_all(cacheDir_);
  }

  // A fresh process as far as the stack is concerned: drivers unloaded, ports forgotten; only
  // the disk cache remains.
  void Restart() {
    port_.reset();
    CLProtocol::CCLPort::Terminate();
    Register();
  }
  void Register() {
    portID_ = CLProtocol::CCLPort::RegisterSerial("Sim", serial_.get());
    port_ = std::make_unique<CLProtocol::CCLPort>();
  }

  // Line use of `steps`, from the simulator's statistics.
  LineUse Measure(const std::function<void()>& steps) {
    sim_->resetStats();
    steps();
    return LineUse{sim_->stats().bytesIn + sim_->stats().bytesOut, sim_->stats().linkSeconds};
  }

  // ProbeDevice, Connect and GetXML as a host opens a camera.
  std::string Open(bool useMaxBaudrate) {
    port_->Disconnect();
    const gcstring id = CLProtocol::CCLPort::ProbeDevice(portID_, Template(), 12000);
    port_->Connect(portID_, id);
    const gcstring xml = port_->GetXML(useMaxBaudrate);
    return std::string(xml.c_str(), xml.size());
  }

  gcstring Template() const {
    return gcstring((std::string(VQ_BINARY_DIR) +
                     "/lib/clprotocol/Linux64_x64#libCLProtocolGenCP.so#KORVA#AreaScan#A2040M")
                        .c_str());
  }

  // The bytes that must cross to open the camera: its five identity strings and the manifest
  // table address (one read each), the manifest (count and entry), the zipped description in
  // the largest packets.
  double IdentityBytes() const { return 5 * (kPacketOverhead + 64) + kPacketOverhead + 8; }
  double DescriptionBytes() const {
    const double file = static_cast<double>(sim_->device().descriptionFile().size());
    const double packets = static_cast<double>((sim_->device().descriptionFile().size() + kChunk - 1) / kChunk);
    return kPacketOverhead + 72 + packets * kPacketOverhead + file;
  }
  static double Seconds(double bytes, uint32_t rateBit) {
    return bytes * vq::sim::Simulator::byteSeconds(rateBit);
  }

  fs::path cacheDir_;
  vq::sim::Profile profile_;
  std::unique_ptr<vq::sim::Simulator> sim_;
  std::unique_ptr<SimSerial> serial_;
  gcstring portID_;
  std::unique_ptr<CLProtocol::CCLPort> port_;
};

void Report(const char* what, const LineUse& use, const char* comparison) {
  std::printf("[ line time ] %-44s %6llu bytes %7.3f s  %s\n", what,
              static_cast<unsigned long long>(use.bytes), use.seconds, comparison);
  ::testing::Test::RecordProperty(what, std::to_string(use.seconds));
}

std::string Ratio(double value, double reference, const char* of) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f x %s", value / reference, of);
  return text;
}

TEST_F(Opening, StaysNearTheBytesThatMustCrossAndReopensFromTheCache) {
  const double lowerBytes = IdentityBytes() + DescriptionBytes();
  const LineUse lower{static_cast<uint64_t>(lowerBytes), Seconds(lowerBytes, CL_BAUDRATE_9600)};
  Report("lower bound at 9600 baud", lower, "");

  std::string xml;
  const LineUse first = Measure([&] { xml = Open(false); });
  EXPECT_EQ(profile_.descriptionText, xml);
  Report("first open at 9600 baud", first, Ratio(first.seconds, lower.seconds, "lower bound").c_str());
  EXPECT_LE(first.seconds, 1.05 * lower.seconds);

  const LineUse again = Measure([&] { xml = Open(false); });
  EXPECT_EQ(profile_.descriptionText, xml);
  Report("reopen, same process", again, Ratio(again.seconds, first.seconds, "first open").c_str());
  EXPECT_LE(again.seconds, 0.05 * first.seconds);

  Restart();
  const LineUse fresh = Measure([&] { xml = Open(false); });
  EXPECT_EQ(profile_.descriptionText, xml);
  Report("reopen, fresh process (disk cache)", fresh,
         Ratio(fresh.seconds, first.seconds, "first open").c_str());
  EXPECT_LE(fresh.seconds, 0.05 * first.seconds);
}

// The boosted download: the lower bound has the identity at 9600 baud, the manifest and the
// description at the boosted rate, and the switch (a write and its acknowledge at each rate,
// up and down).
TEST_F(Opening, BoostedDownloadStaysNearItsLowerBound) {
  const uint32_t fast = CL_BAUDRATE_921600;
  const double switchSeconds = Seconds(2 * 48, CL_BAUDRATE_9600) + Seconds(2 * 48, fast);
  const double downloadLower = Seconds(DescriptionBytes(), fast) + switchSeconds;
  const double openLower = Seconds(IdentityBytes(), CL_BAUDRATE_9600) + downloadLower;
  const double lowerBytes = IdentityBytes() + DescriptionBytes() + 4 * 48;
  Report("lower bound, boosted", LineUse{static_cast<uint64_t>(lowerBytes), openLower}, "");

  std::string xml;
  LineUse download;
  const LineUse open = Measure([&] {
    const gcstring id = CLProtocol::CCLPort::ProbeDevice(portID_, Template(), 12000);
    port_->Connect(portID_, id);
    const double before = sim_->stats().linkSeconds;
    const uint64_t bytesBefore = sim_->stats().bytesIn + sim_->stats().bytesOut;
    xml = std::string(port_->GetXML(true).c_str());
    download.seconds = sim_->stats().linkSeconds - before;
    download.bytes = sim_->stats().bytesIn + sim_->stats().bytesOut - bytesBefore;
  });
  EXPECT_EQ(profile_.descriptionText, xml);
  EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());
  Report("first open, GetXML(true)", open, Ratio(open.seconds, openLower, "lower bound").c_str());
  Report("GetXML(true) alone", download,
         Ratio(download.seconds, downloadLower, "its lower bound").c_str());
  EXPECT_LE(open.seconds, 1.3 * openLower);
  EXPECT_LE(download.seconds, 1.3 * downloadLower);
}

// A damaged or mismatching cache entry is ignored, and the download that follows replaces it.
TEST_F(Opening, DamagedCacheEntriesAreReplaced) {
  ASSERT_EQ(profile_.descriptionText, Open(false));
  const fs::path entry = cacheDir_ / "vqcam" / "KORVA#AreaScan#A2040M.xmlcache";
  ASSERT_TRUE(fs::exists(entry));
  const std::string intact = Contents(entry);
  struct Case {
    const char* name;
    std::function<std::string(std::string)> damage;
    bool downloads;
  };
  const Case cases[] = {
      {"Intact", [](std::string s) { return s; }, false},
      {"TextChanged", [](std::string s) { s[s.size() / 2] ^= 0x20; return s; }, true},
      {"Truncated", [](std::string s) { return s.substr(0, s.size() - 100); }, true},
      {"OtherSha1", [](std::string s) { s[s.find("sha1: ") + 6] ^= 0x01; return s; }, true},
      {"NotACacheFile", [](std::string) { return std::string("<RegisterDescription/>"); }, true},
  };
  for (const auto& c : cases) {
    std::ofstream(entry, std::ios::binary | std::ios::trunc) << c.damage(intact);
    Restart();
    std::string xml;
    const LineUse use = Measure([&] { xml = Open(false); });
    EXPECT_EQ(profile_.descriptionText, xml) << c.name;
    EXPECT_EQ(c.downloads, use.bytes > sim_->device().descriptionFile().size()) << c.name;
    EXPECT_EQ(intact, Contents(entry)) << c.name << ": the entry is whole again";
  }
}

// The driver's record of the camera: a damaged or missing one is ignored (the camera is
// identified in full, as on a first open) and written whole again, so that the next reopen
// takes it; an intact one spares the reopen the bootstrap block.
TEST_F(Opening, DamagedDeviceRecordsAreReplaced) {
  ASSERT_EQ(profile_.descriptionText, Open(false));
  const fs::path records = cacheDir_ / "vqcam" / "devices.rec";
  ASSERT_TRUE(fs::exists(records));
  const std::string intact = Contents(records);
  struct Case {
    const char* name;
    std::function<std::string(std::string)> damage;  // empty: no file
    bool recordUsed;
  };
  const Case cases[] = {
      {"Missing", nullptr, false},
      {"Intact", [](std::string s) { return s; }, true},
      {"Empty", [](std::string) { return std::string(); }, false},
      {"Garbage", [](std::string) { return std::string("\x7f\x00 not a record\n\n"); }, false},
      {"Truncated", [](std::string s) { return s.substr(0, s.size() - 20); }, false},
      {"RecordChanged", [](std::string s) { s[s.size() - 10] ^= 0x01; return s; }, false},
      {"OtherMagic", [](std::string s) { s[0] = 'V'; return s; }, false},
  };
  uint64_t identified = 0, recorded = 0;  // bytes of the two kinds of reopen
  auto reopen = [&](const char* name, bool recordUsed) {
    Restart();
    std::string xml;
    const LineUse use = Measure([&] { xml = Open(false); });
    EXPECT_EQ(profile_.descriptionText, xml) << name;
    uint64_t& expected = recordUsed ? recorded : identified;
    if (expected == 0) expected = use.bytes;
    EXPECT_EQ(expected, use.bytes) << name << (recordUsed ? ": record used" : ": identified");
  };
  for (const auto& c : cases) {
    if (c.damage) {
      std::ofstream(records, std::ios::binary | std::ios::trunc) << c.damage(intact);
    } else {
      fs::remove(records);
    }
    reopen(c.name, c.recordUsed);
    reopen(c.name, true);  // the record was written whole again, or left alone
  }
  EXPECT_GT(identified, recorded);
}

}  // namespace
