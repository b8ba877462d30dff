// The vqcam-sim program on a new pseudo-terminal with its statistics file and its control file
// (fault options that take effect while it runs), and a fixture that registers a termios
// serial adapter on it with CCLPort.
#pragma once

#include <CLProtocol/CLPort.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "SimProcess.h"
#include "clprotocol_test_serial.h"

namespace clprotocol_test {

using Clock = std::chrono::steady_clock;

inline int MsLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

inline void SleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

inline std::string ExampleDir(const char* folder) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + folder;
}

inline std::string DriverDirectory() {
  return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64";
}

// The description of the GenICam exception the call throws, or "no exception".
inline std::string ErrorOf(CLProtocol::CCLPort& port, void (*call)(CLProtocol::CCLPort&)) {
  try {
    call(port);
  } catch (const GenICam::GenericException& e) {
    return e.GetDescription();
  }
  return "no exception";
}

// The program with its statistics file and its control file (fault options that take effect
// while it runs).
class SimProgramFiles {
 public:
  ~SimProgramFiles() { Stop(); }

  bool Start(const std::string& profileDir, const std::vector<std::string>& arguments,
             std::string* error) {
    const std::string base = ::testing::TempDir() + "vqcam-sim-" + std::to_string(getpid()) +
                             "-" + std::to_string(++starts_);
    statsPath_ = base + ".stats";
    controlPath_ = base + ".control";
    std::vector<std::string> all = {"--stats-file", statsPath_, "--control", controlPath_};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return process_.Start(VQ_SIM_PROGRAM, profileDir, error, all);
  }
  std::string Stop() {
    const std::string how = process_.Stop();
    std::remove(statsPath_.c_str());
    std::remove(controlPath_.c_str());
    return how;
  }
  const std::string& DevicePath() const { return process_.DevicePath(); }
  bool Running() const { return process_.IsRunning(); }
  void Pause() { process_.Pause(); }
  void Resume() { process_.Resume(); }

  // Replaces the program's faults with `options` (its fault options; empty clears them) and
  // waits until it took them.
  bool Control(const std::string& options) {
    const std::string temporary = controlPath_ + ".tmp";
    std::ofstream(temporary) << options << "\n";
    if (std::rename(temporary.c_str(), controlPath_.c_str()) != 0) return false;
    const auto deadline = Clock::now() + std::chrono::milliseconds(5000);
    while (std::filesystem::exists(controlPath_)) {
      if (MsLeft(deadline) == 0) return false;
      SleepMs(2);
    }
    return true;
  }

  // The program's statistics and link state, once its serving loop has gone round after the
  // last exchange.
  std::map<std::string, double> Stats() const {
    SleepMs(30);
    std::map<std::string, double> values;
    std::ifstream in(statsPath_);
    for (std::string key, equals; in >> key >> equals;) in >> values[key];
    return values;
  }

 private:
  vq::test::SimProcess process_;
  int starts_ = 0;
  std::string statsPath_;
  std::string controlPath_;
};

// A CCLPort on a termios adapter registered on the program's pseudo-terminal. The program runs
// the KORVA area-scan camera unless a test starts it otherwise.
class SimProgram : public ::testing::Test {
 protected:
  void SetUp() override {
    unsetenv("GENICAM_CLPROTOCOL");  // the library's own location is enough
    // A cache directory nobody creates: nothing is cached on disk, however the test is run.
    setenv("XDG_CACHE_HOME", (::testing::TempDir() + "no-description-cache").c_str(), 1);
    CLProtocol::CCLPort::Terminate();
  }
  void TearDown() override {
    port_.reset();
    CLProtocol::CCLPort::Terminate();
    adapter_.reset();
    if (sim_.Running()) {
      EXPECT_EQ("exit 0", sim_.Stop());  // a clean end on SIGTERM
    }
  }

  void StartSim(const std::vector<std::string>& arguments = {}, const char* folder = "korva-area") {
    port_.reset();
    CLProtocol::CCLPort::UnRegisterSerials();  // an adapter of an earlier run goes now
    std::string error;
    ASSERT_TRUE(sim_.Start(ExampleDir(folder), arguments, &error)) << error;
    adapter_ = std::make_unique<TermiosAdapter>(sim_.DevicePath());
    RegisterPort();
  }

  // Forgets every driver and port, as a new process would start.
  void Restart() {
    port_.reset();
    CLProtocol::CCLPort::Terminate();
    RegisterPort();
  }

  void RegisterPort() {
    portID_ = CLProtocol::CCLPort::RegisterSerial("SimProgram", adapter_.get());
    port_ = std::make_unique<CLProtocol::CCLPort>();
  }

  static GenICam::gcstring Template(const std::string& shortTemplate = "KORVA#AreaScan#A2040M") {
    return GenICam::gcstring(
        (DriverDirectory() + "#libCLProtocolGenCP.so#" + shortTemplate).c_str());
  }

  void Open(const std::string& shortTemplate = "KORVA#AreaScan#A2040M") {
    const GenICam::gcstring id =
        CLProtocol::CCLPort::ProbeDevice(portID_, Template(shortTemplate), 1000);
    port_->Connect(portID_, id);
  }

  // Big-endian 32-bit register access.
  uint32_t ReadU32(int64_t address) {
    uint8_t b[4] = {};
    port_->Read(b, address, 4);
    return static_cast<uint32_t>(b[0]) << 24 | b[1] << 16 | b[2] << 8 | b[3];
  }
  void WriteU32(int64_t address, uint32_t value) {
    const uint8_t b[4] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    port_->Write(b, address, 4);
  }
  std::string ErrorOf(void (*call)(CLProtocol::CCLPort&)) {
    return clprotocol_test::ErrorOf(*port_, call);
  }
  // A write of 512 to Width, or a read of Width expecting 2048: "no exception" or the error.
  std::string WidthOutcome(bool write) {
    return write ? ErrorOf([](CLProtocol::CCLPort& p) {
      const uint8_t bytes[4] = {0, 0, 2, 0};
      p.Write(bytes, 0x40108, 4);
    })
                 : ErrorOf([](CLProtocol::CCLPort& p) {
                     uint8_t bytes[4];
                     p.Read(bytes, 0x40108, 4);
                     if (bytes[2] != 8) throw RUNTIME_EXCEPTION("read %d", bytes[2]);
                   });
  }

  SimProgramFiles sim_;
  std::unique_ptr<TermiosAdapter> adapter_;
  GenICam::gcstring portID_;
  std::unique_ptr<CLProtocol::CCLPort> port_;
};

constexpr int64_t kWidthReg = 0x40108;
constexpr int64_t kVendorNameReg = 0x0004;
constexpr int64_t kUnmappedAddress = 0x7FF000;

}  // namespace clprotocol_test
