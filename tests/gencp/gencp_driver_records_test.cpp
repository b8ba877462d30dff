// Device records on disk: a probe in a new process (the driver closed and opened again, so its
// memory of the port is gone) takes a recorded device once serial number and model name match
// on the line, identifies any other device in full, and records what it identified.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "gencp_driver_harness.h"

namespace {

namespace fs = std::filesystem;
using namespace gencp_driver_test;

// What a full identification reads at least: the bootstrap block from the manufacturer name to
// the device configuration.
constexpr uint64_t kBootstrapBlockBytes = 0x1E8 - 0x4;

class Records : public DriverTest {
 protected:
  void SetUp() override {
    DriverTest::SetUp();
    cacheDir_ = fs::path(::testing::TempDir()) / ("gencp-records-" + std::to_string(getpid()));
    fs::remove_all(cacheDir_);
    fs::create_directories(cacheDir_);
    vq::platform::SetEnv("XDG_CACHE_HOME", cacheDir_.string());
  }
  void TearDown() override {
    DriverTest::TearDown();
    fs::remove_all(cacheDir_);
  }

  void NewProcess() {
    driver_.CloseLib();
    ASSERT_EQ(CL_ERR_NO_ERR, driver_.InitLib(nullptr, CLP_LOG_ERROR));
  }

  // Probes the camera; returns the bytes that crossed the line.
  uint64_t ProbeBytes(std::string& id) {
    sim_->resetStats();
    EXPECT_EQ(CL_ERR_NO_ERR, Probe("KORVA", &id));
    return sim_->stats().bytesIn + sim_->stats().bytesOut;
  }

  fs::path RecordFile() const { return cacheDir_ / "vqcam" / "devices.rec"; }

  fs::path cacheDir_;
};

struct RecordCase {
  const char* name;
  const char* encoding;  // profile lines of both cameras
  const char* profile;   // the camera met by the new process
  const char* overrides;
  const char* id;
  bool recordUsed;
};

void PrintTo(const RecordCase& c, std::ostream* os) { *os << c.name; }

class RecordMatching : public Records, public ::testing::WithParamInterface<RecordCase> {};

// A KORVA A2040M is identified; then a new process, or the same process after the camera on the
// port was swapped, meets the case's camera.
TEST_P(RecordMatching, TakesAKnownDeviceOnlyForTheSameSerialNumberAndModelName) {
  const RecordCase& c = GetParam();
  for (const bool newProcess : {true, false}) {
    SCOPED_TRACE(newProcess ? "new process" : "same process, camera swapped");
    fs::remove_all(RecordFile());
    NewProcess();
    StartCamera("korva-area", c.encoding);
    std::string id;
    ProbeBytes(id);
    ASSERT_TRUE(fs::exists(RecordFile()));

    const std::string overrides = std::string(c.encoding) + "\n" + c.overrides;
    if (newProcess) {
      NewProcess();
      StartCamera(c.profile, overrides);
    } else {
      SwapCamera(c.profile, overrides);
    }
    const uint64_t bytes = ProbeBytes(id);
    EXPECT_EQ(c.id, id);
    EXPECT_EQ(c.recordUsed, bytes < kBootstrapBlockBytes) << bytes << " bytes";
    EXPECT_EQ(vq::sim::kPrivilegeOpen, sim_->device().accessPrivilege());
    EXPECT_FALSE(sim_->device().heartbeatEnabled());

    // What was identified in full is recorded, and serves the next new process.
    NewProcess();
    sim_->reset();
    EXPECT_LT(ProbeBytes(id), kBootstrapBlockBytes);
    EXPECT_EQ(c.id, id);
    EXPECT_FALSE(sim_->device().heartbeatEnabled());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, RecordMatching,
    ::testing::Values(
        RecordCase{"SameCamera", "", "korva-area", "", kAreaScanId, true},
        RecordCase{"SameCameraUtf16", "string_encoding = utf16", "korva-area", "", kAreaScanId,
                   true},
        RecordCase{"OtherModel", "", "korva-area", "model = A2040C",
                   "KORVA#AreaScan#A2040C#_1_4_2#KA2040M_00117", false},
        RecordCase{"ShorterModel", "", "korva-area", "model = A2040",
                   "KORVA#AreaScan#A2040#_1_4_2#KA2040M_00117", false},
        RecordCase{"LongerModel", "", "korva-area", "model = A2040MX",
                   "KORVA#AreaScan#A2040MX#_1_4_2#KA2040M_00117", false},
        RecordCase{"LongerModelUtf16", "string_encoding = utf16", "korva-area",
                   "model = A2040MX", "KORVA#AreaScan#A2040MX#_1_4_2#KA2040M_00117", false},
        RecordCase{"OtherSerialNumber", "", "korva-area", "serial_number = KA2040M-00118",
                   "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00118", false},
        RecordCase{"LineScanWithTheSameSerialNumber", "", "korva-line",
                   "serial_number = KA2040M-00117", "KORVA#LineScan#L4096#_2_0_7#KA2040M_00117",
                   false}),
    [](const auto& info) { return std::string(info.param.name); });

// Records of several cameras live side by side; the oldest go beyond the bound.
TEST_F(Records, KeepSeveralCamerasUpToTheirBound) {
  std::string id;
  for (int i = 0; i < 34; ++i) {
    NewProcess();
    StartCamera("korva-area", "serial_number = S" + std::to_string(i));
    ProbeBytes(id);
  }
  auto recordUsed = [&](int i) {
    NewProcess();
    StartCamera("korva-area", "serial_number = S" + std::to_string(i));
    return ProbeBytes(id) < kBootstrapBlockBytes;
  };
  EXPECT_TRUE(recordUsed(33));
  EXPECT_TRUE(recordUsed(2));
  EXPECT_FALSE(recordUsed(1)) << "dropped as the oldest";
}

// Without a cache directory nothing is recorded and every probe identifies in full; a camera
// that stopped answering ends the probe without a device, record or not.
TEST_F(Records, NoCacheDirectoryAndASilentCamera) {
  const fs::path missing = cacheDir_ / "missing";
  vq::platform::SetEnv("XDG_CACHE_HOME", missing.string());
  std::string id;
  for (int open = 0; open < 2; ++open) {
    NewProcess();
    StartCamera();
    EXPECT_GE(ProbeBytes(id), kBootstrapBlockBytes);
  }
  EXPECT_FALSE(fs::exists(missing));

  vq::platform::SetEnv("XDG_CACHE_HOME", cacheDir_.string());
  NewProcess();
  ProbeBytes(id);
  ASSERT_TRUE(fs::exists(RecordFile()));
  NewProcess();
  sim_->faults().silent = true;
  EXPECT_EQ(CL_ERR_NO_DEVICE_FOUND, Probe("KORVA", nullptr, nullptr, 200));
}

}  // namespace
