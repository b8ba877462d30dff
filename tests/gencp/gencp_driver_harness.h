// Test harness for the GenCP driver: the driver library loaded at run time exactly as CLProtocol
// loads it, and an ISerial that talks to an in-process simulated camera.
#pragma once

#include <CLProtocol/CLProtocol.h>
#include <CLProtocol/ISerialAdapter.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../../genicam/clprotocol/DriverLibrary.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"
#include "vq/sim/InProcessPort.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace gencp_driver_test {

inline std::string DriverPath() {
  return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64/libCLProtocolGenCP.so";
}

inline std::string ProfileDir(const char* name) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + name;
}

using VxComPortFn = CLINT32 (*)(CLINT32, const CLINT8*, CLINT64, void*, CLINT32, const CLINT8*);

// The driver's entry points (the same table CLProtocol fills), resolved by name from the loaded
// library, plus the driver's own port hook.
struct Driver : CLProtocol::DriverFunctions {
  vq::platform::SharedLibrary library;
  VxComPortFn VxComPort = nullptr;

  bool Load(std::string& error) {
    library = vq::platform::SharedLibrary::Open(DriverPath(), &error);
    if (!library) return false;
    bool ok = true;
    auto get = [&](const char* name, auto& target) {
      target = library.FindFunction<std::remove_reference_t<decltype(target)>>(name);
      if (target == nullptr) {
        error += std::string(" missing ") + name;
        ok = false;
      }
    };
    get("clpInitLib", InitLib);
    get("clpCloseLib", CloseLib);
    get("clpGetShortDeviceIDTemplates", GetShortDeviceIDTemplates);
    get("clpProbeDevice", ProbeDevice);
    get("clpGetXMLIDs", GetXMLIDs);
    get("clpGetXMLDescription", GetXMLDescription);
    get("clpReadRegister", ReadRegister);
    get("clpWriteRegister", WriteRegister);
    get("clpContinueWriteRegister", ContinueWriteRegister);
    get("clpGetErrorText", GetErrorText);
    get("clpDisconnect", Disconnect);
    get("clpGetCLProtocolVersion", GetCLProtocolVersion);
    get("clpGetParam", GetParam);
    get("clpSetParam", SetParam);
    get("clpIsParamSupported", IsParamSupported);
    get("clpGetEventData", GetEventData);
    get("vxComPort", VxComPort);
    get("vxGetXMLSha1", GetXMLSha1);
    return ok;
  }

  std::string ErrorText(CLINT32 code, CLUINT32 cookie = 0) const {
    CLINT8 text[512] = {};
    CLUINT32 size = sizeof text;
    if (GetErrorText(code, text, &size, cookie) != CL_ERR_NO_ERR) return std::string();
    return text;
  }
};

// A serial adapter over the simulator's in-process port: reads hand over what arrived (partial
// reads are allowed), and time is the simulator's.
class SimSerial : public CLProtocol::ISerialAdapter {
 public:
  explicit SimSerial(vq::sim::Simulator& simulator) : port_(simulator) {}
  // ISerial has no destructor slot; tests delete derived adapters through this class.
  virtual ~SimSerial() = default;

  CLINT32 SerialInit() override { return CL_ERR_NO_ERR; }
  void SerialClose() override {}
  void CheckError(CLINT32) override {}

  CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize,
                                  CLUINT32 serialTimeOut) override {
    if (buffer == nullptr || bufferSize == nullptr) return CL_ERR_INVALID_PTR;
    ++reads;
    const std::size_t got =
        port_.read(reinterpret_cast<uint8_t*>(buffer), *bufferSize, serialTimeOut);
    if (got == 0) return CL_ERR_TIMEOUT;
    *bufferSize = static_cast<CLUINT32>(got);
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32) override {
    if (buffer == nullptr || bufferSize == nullptr) return CL_ERR_INVALID_PTR;
    return port_.write(reinterpret_cast<const uint8_t*>(buffer), *bufferSize) ? CL_ERR_NO_ERR
                                                                               : CL_ERR_TIMEOUT;
  }
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* baudRates) override {
    if (baudRates == nullptr) return CL_ERR_INVALID_PTR;
    *baudRates = supported;
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override {
    if ((baudRate & supported) == 0) return CL_ERR_BAUD_RATE_NOT_SUPPORTED;
    return port_.setBaudRate(baudRate) ? CL_ERR_NO_ERR : CL_ERR_BAUD_RATE_NOT_SUPPORTED;
  }

  CLUINT32 supported = 0xFF;
  unsigned reads = 0;

 private:
  vq::sim::InProcessPort port_;
};

// A driver loaded once per test, and a simulated camera with its serial link.
class DriverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // A cache directory that does not exist: no device record or cached description from an
    // earlier run changes what a probe reads, and none is written. Tests of the records give
    // the cache a directory of their own.
    vq::platform::SetEnv("XDG_CACHE_HOME", ::testing::TempDir() + "gencp-driver-no-cache");
    std::string error;
    ASSERT_TRUE(driver_.Load(error)) << error;
    ASSERT_EQ(CL_ERR_NO_ERR, driver_.InitLib(nullptr, CLP_LOG_ERROR));
  }
  void TearDown() override {
    if (driver_.CloseLib != nullptr) driver_.CloseLib();
  }

  // A camera of an example profile, `overrides` holding further profile.ini lines.
  void StartCamera(const char* profileName = "korva-area", const std::string& overrides = "") {
    profile_ = vq::sim::loadProfile(ProfileDir(profileName), overrides);
    sim_ = std::make_unique<vq::sim::Simulator>(profile_);
    serial_ = std::make_unique<SimSerial>(*sim_);
  }

  // Another camera behind the same port object, as when a user swaps cameras on one port: the
  // driver's memory of the port stays.
  void SwapCamera(const char* profileName, const std::string& overrides) {
    profile_ = vq::sim::loadProfile(ProfileDir(profileName), overrides);
    auto next = std::make_unique<vq::sim::Simulator>(profile_);
    serial_->~SimSerial();
    new (serial_.get()) SimSerial(*next);
    sim_ = std::move(next);
  }

  // Probes with a template; returns the status and fills id and cookie.
  CLINT32 Probe(const std::string& shortTemplate, std::string* id = nullptr,
                CLUINT32* cookie = nullptr, CLUINT32 timeout = 500) {
    CLINT8 buffer[256] = {};
    CLUINT32 size = sizeof buffer;
    CLUINT32 localCookie = 0;
    const CLINT32 status =
        driver_.ProbeDevice(serial_.get(), shortTemplate.c_str(), buffer, &size, &localCookie, timeout);
    if (id != nullptr) *id = buffer;
    if (cookie != nullptr) *cookie = localCookie;
    return status;
  }

  CLUINT32 Connect() {
    CLUINT32 cookie = 0;
    EXPECT_EQ(CL_ERR_NO_ERR, Probe("KORVA", nullptr, &cookie));
    return cookie;
  }

  CLINT32 Read32(CLUINT32 cookie, int64_t address, uint32_t& value, CLUINT32 timeout = 500) {
    uint8_t bytes[4] = {};
    const CLINT32 status = driver_.ReadRegister(serial_.get(), cookie, address,
                                                reinterpret_cast<CLINT8*>(bytes), 4, timeout);
    value = static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
    return status;
  }

  CLINT32 Write32(CLUINT32 cookie, int64_t address, uint32_t value, CLUINT32 timeout = 500) {
    const uint8_t bytes[4] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                              static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    return driver_.WriteRegister(serial_.get(), cookie, address,
                                 reinterpret_cast<const CLINT8*>(bytes), 4, timeout);
  }

  Driver driver_;
  vq::sim::Profile profile_;
  std::unique_ptr<vq::sim::Simulator> sim_;
  std::unique_ptr<SimSerial> serial_;
};

// Registers of the KORVA area-scan profile used by the tests.
constexpr int64_t kWidthReg = 0x40108;
constexpr int64_t kVendorNameReg = 0x0004;      // read-only bootstrap string
constexpr int64_t kUnmappedAddress = 0x7FF000;  // outside every register
constexpr int64_t kCurrentBaudReg = 0x10004;
constexpr const char* kAreaScanId = "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117";

}  // namespace gencp_driver_test
