// CCLPort end to end over a real pseudo-terminal: the simulated camera serves the master side
// in a thread; a termios serial adapter on the slave side is registered with CCLPort, which
// finds the GenCP driver in its own lib/clprotocol location and talks to the camera.
#include <CLProtocol/CLPort.h>
#include <CLProtocol/DeviceID.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "clprotocol_port_access.h"
#include "clprotocol_test_serial.h"
#include "vq/platform/environment.h"
#include "vq/platform/pseudo_terminal.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace clprotocol_test {
namespace {

using GenICam::gcstring;

constexpr int64_t kVendorNameReg = 0x0004;
constexpr int64_t kUnmappedAddress = 0x7FF000;
constexpr CLUINT32 kProbeTimeoutMs = 1000;

std::string DriverDirectory() {
  return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64";
}

// The simulated camera served on a pseudo-terminal from a background thread. The far end of a
// pseudo-terminal cannot see the rate the client sets, so the client reports it (SetHostRate)
// and the serving loop applies it before it hands the camera the next bytes.
class PtyCamera {
 public:
  explicit PtyCamera(const std::string& profileDir)
      : profile_(vq::sim::loadProfile(profileDir)), sim_(profile_) {
    std::string error;
    if (!pty_.Open(&error)) throw std::runtime_error("pseudo-terminal: " + error);
    thread_ = std::thread([this] { Serve(); });
  }
  ~PtyCamera() {
    stop_ = true;
    thread_.join();
  }

  const std::string& Path() const { return pty_.SlavePath(); }
  const vq::sim::Profile& Profile() const { return profile_; }
  void SetHostRate(CLUINT32 bit) { hostRate_ = bit; }

  template <typename Body>
  auto WithSim(Body&& body) {
    std::lock_guard<std::mutex> lock(mutex_);
    return body(sim_);
  }

 private:
  void Serve() {
    const auto start = std::chrono::steady_clock::now();
    const uint64_t simStart = sim_.nowUs();
    uint8_t in[256];
    uint8_t out[256];
    std::string error;
    while (!stop_) {
      const int64_t got = pty_.ReadSome(in, sizeof in, 2, &error);
      if (got < 0) return;
      std::lock_guard<std::mutex> lock(mutex_);
      sim_.setHostBaudRate(hostRate_.load());
      const auto realUs = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                                    std::chrono::steady_clock::now() - start)
                                                    .count());
      if (simStart + realUs > sim_.nowUs()) sim_.advanceTo(simStart + realUs);
      if (got > 0) sim_.receive(in, static_cast<std::size_t>(got));
      for (std::size_t n; (n = sim_.transmit(out, sizeof out)) > 0;) {
        if (!pty_.Write(out, n, 1000, &error)) return;
      }
    }
  }

  vq::sim::Profile profile_;
  vq::sim::Simulator sim_;
  vq::platform::PseudoTerminal pty_;
  std::mutex mutex_;
  std::atomic<CLUINT32> hostRate_{CL_BAUDRATE_9600};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

class PortOverPty : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    vq::platform::UnsetEnv("GENICAM_CLPROTOCOL");  // the library's own location is enough
    camera_ = std::make_unique<PtyCamera>(std::string(VQ_SOURCE_DIR) + "/examples/" + GetParam());
    adapter_ = std::make_unique<TermiosAdapter>(camera_->Path());
    adapter_->onBaudChange = [this](CLUINT32 bit) { camera_->SetHostRate(bit); };
  }
  void TearDown() override {
    port_.Disconnect();
    CLProtocol::CCLPort::UnRegisterSerials();
  }

  gcstring TemplateFor(const std::string& shortTemplate) {
    GenICam::gcstring_vector templates;
    CLProtocol::CCLPort::GetDeviceIDTemplates(templates);
    const std::string wanted = DriverDirectory() + "#libCLProtocolGenCP.so#" + shortTemplate;
    for (const auto& t : templates) {
      if (wanted == t.c_str()) return t;
    }
    ADD_FAILURE() << "no template " << wanted;
    return gcstring();
  }

  // A read-write register of the profile.
  int64_t RwRegister() const { return std::string(GetParam()) == "korva-area" ? 0x40108 : 0x50000; }

  std::string ShortTemplate() const {
    return std::string(GetParam()) == "korva-area" ? "KORVA#AreaScan#A2040M" : "KORVA#LineScan#L4096";
  }

  uint32_t ReadU32(int64_t address) { return clprotocol_test::ReadU32(port_, address); }
  void WriteU32(int64_t address, uint32_t value) {
    clprotocol_test::WriteU32(port_, address, value);
  }
  std::string ErrorOf(void (*call)(CLProtocol::CCLPort&)) {
    return clprotocol_test::ErrorOf(port_, call);
  }

  std::unique_ptr<PtyCamera> camera_;
  std::unique_ptr<TermiosAdapter> adapter_;
  CLProtocol::CCLPort port_;
};

TEST_P(PortOverPty, ProbesConnectsDownloadsAndAccessesRegisters) {
  const gcstring portID = CLProtocol::CCLPort::RegisterSerial("PtyPort", adapter_.get());
  EXPECT_STREQ("Local#PtyPort", portID.c_str());
  EXPECT_EQ(adapter_.get(), CLProtocol::CCLPort::GetPort(portID));

  const gcstring deviceTemplate = TemplateFor(ShortTemplate());
  camera_->WithSim([](vq::sim::Simulator& sim) { sim.resetStats(); });
  const gcstring deviceID = CLProtocol::CCLPort::ProbeDevice(portID, deviceTemplate, kProbeTimeoutMs);
  CLProtocol::CDeviceID parsed;
  ASSERT_TRUE(parsed.FromString(deviceID));
  EXPECT_STREQ(ShortTemplate().c_str(),
               (std::string(parsed.GetCameraManufacturer().c_str()) + "#" +
                parsed.GetCameraFamily().c_str() + "#" + parsed.GetCameraModel().c_str())
                   .c_str());
  EXPECT_EQ(DriverDirectory() + "/libCLProtocolGenCP.so", parsed.GetDriverPath().c_str());

  port_.Connect(portID, deviceID);
  EXPECT_STREQ(deviceID.c_str(), port_.GetDeviceID().c_str());
  EXPECT_EQ(GenApi::RW, port_.GetAccessMode());

  const gcstring xml = port_.GetXML(false);
  EXPECT_EQ(camera_->Profile().descriptionText, std::string(xml.c_str(), xml.size()));
  if (std::string(GetParam()) == "korva-area") {
    const double seconds =
        camera_->WithSim([](vq::sim::Simulator& sim) { return sim.stats().linkSeconds; });
    std::printf("[ link time ] probe + connect + description at 9600 baud: %.2f s\n", seconds);
    ::testing::Test::RecordProperty("link_seconds_9600", std::to_string(seconds));
  }

  if (std::string(GetParam()) == "korva-area") {
    EXPECT_EQ(2048u, ReadU32(RwRegister()));
  }
  WriteU32(RwRegister(), 1280);
  EXPECT_EQ(1280u, ReadU32(RwRegister()));

  // The port is the ISerial of the connected adapter too.
  CLUINT32 rates = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, port_.clGetSupportedBaudRates(&rates));
  EXPECT_NE(0u, rates & CL_BAUDRATE_115200);
}

TEST_P(PortOverPty, BoostsTheRateForTheDownloadAndRestoresIt) {
  const gcstring portID = CLProtocol::CCLPort::RegisterSerial("PtyPort", adapter_.get());
  port_.Connect(portID, TemplateFor(ShortTemplate()));
  const gcstring xml = port_.GetXML(true);
  EXPECT_EQ(camera_->Profile().descriptionText, std::string(xml.c_str(), xml.size()));
  EXPECT_EQ(CL_BAUDRATE_9600, port_.GetDeviceBauderate());
  EXPECT_EQ(CL_BAUDRATE_9600, adapter_->lastRate);
  EXPECT_GE(adapter_->highestRate, CL_BAUDRATE_115200);  // the download ran boosted
  EXPECT_EQ(CL_BAUDRATE_9600, camera_->WithSim([](vq::sim::Simulator& sim) { return sim.device().baudRate(); }));
}

TEST_P(PortOverPty, SwitchesTo115200AndBack) {
  const gcstring portID = CLProtocol::CCLPort::RegisterSerial("PtyPort", adapter_.get());
  port_.Connect(portID, TemplateFor(ShortTemplate()));
  EXPECT_NE(0u, port_.SupportedBaudrates() & CL_BAUDRATE_115200);
  port_.SetDeviceBauderate(CL_BAUDRATE_115200);
  EXPECT_EQ(CL_BAUDRATE_115200, port_.GetDeviceBauderate());
  EXPECT_EQ(CL_BAUDRATE_115200, camera_->WithSim([](vq::sim::Simulator& sim) { return sim.device().baudRate(); }));
  const uint32_t width = ReadU32(RwRegister());
  WriteU32(RwRegister(), width);
  port_.SetDeviceBauderate(CL_BAUDRATE_9600);
  EXPECT_EQ(CL_BAUDRATE_9600, port_.GetDeviceBauderate());
  EXPECT_EQ(width, ReadU32(RwRegister()));
}

TEST_P(PortOverPty, ReportsDeviceErrorsWithCodeAndText) {
  const gcstring portID = CLProtocol::CCLPort::RegisterSerial("PtyPort", adapter_.get());
  port_.Connect(portID, TemplateFor(ShortTemplate()));
  const std::string invalid = ErrorOf([](CLProtocol::CCLPort& p) {
    uint8_t bytes[4];
    p.Read(bytes, kUnmappedAddress, 4);
  });
  EXPECT_EQ(0u, invalid.find("Read failed (Code: -30003) ")) << invalid;
  EXPECT_NE(std::string::npos, invalid.find("invalid address")) << invalid;
  const std::string protectedWrite = ErrorOf([](CLProtocol::CCLPort& p) {
    const uint8_t bytes[4] = {1, 2, 3, 4};
    p.Write(bytes, kVendorNameReg, 4);
  });
  EXPECT_EQ(0u, protectedWrite.find("Write failed (Code: -30004) ")) << protectedWrite;
  EXPECT_NE(std::string::npos, protectedWrite.find("write protect")) << protectedWrite;
  // The connection survives both refusals.
  EXPECT_NO_THROW(ReadU32(RwRegister()));
}

INSTANTIATE_TEST_SUITE_P(ZippedAndPlain, PortOverPty, ::testing::Values("korva-area", "korva-line"));

}  // namespace
}  // namespace clprotocol_test
