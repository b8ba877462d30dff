// CCLPort and the GenCP driver end to end against the real vqcam-sim program on a
// pseudo-terminal: the program sees the line speed the client sets, so a host and camera at
// different rates hear garbage, as on a wire. What a user with a real camera meets: probing,
// descriptions, register access, the baud rate through the node map, start-up and heartbeat,
// reconnecting at any rate, device-ID rules, device statuses, slow devices, stray files, and
// the fault runs.
#include <CLProtocol/DeviceID.h>
#include <GenApi/GenApi.h>

#include <fstream>
#include <iterator>

#include "../gencp/gencp_driver_harness.h"
#include "clprotocol_sim_process.h"
#include "vq/platform/environment.h"

namespace clprotocol_test {
namespace {

using GenICam::gcstring;

// One example camera and what the test expects of it.
struct Camera {
  const char* folder;
  const char* shortTemplate;
  const char* descriptionFile;
  int64_t rwRegister;
};
void PrintTo(const Camera& camera, std::ostream* os) { *os << camera.folder; }

const Camera kCameras[] = {
    {"korva-area", "KORVA#AreaScan#A2040M", "KORVA_AreaScan.xml", kWidthReg},  // zipped
    {"korva-line", "KORVA#LineScan#L4096", "KORVA_LineScan.xml", 0x50000},     // plain
};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class Cameras : public SimProgram, public ::testing::WithParamInterface<Camera> {
 protected:
  void SetUp() override {
    SimProgram::SetUp();
    StartSim({}, GetParam().folder);
  }
  void Open() { SimProgram::Open(GetParam().shortTemplate); }
  void ExpectDescription(bool useMaxBaudrate) {
    const gcstring xml = port_->GetXML(useMaxBaudrate);
    const std::string expected =
        ReadFile(ExampleDir(GetParam().folder) + "/" + GetParam().descriptionFile);
    ASSERT_FALSE(expected.empty());
    EXPECT_TRUE(expected == std::string(xml.c_str(), xml.size()))
        << "description of " << xml.size() << " bytes differs from the file's " << expected.size();
  }
};

TEST_P(Cameras, ProbeConnectDescriptionRegisters) {
  EXPECT_STREQ("Local#SimProgram", portID_.c_str());
  const gcstring id =
      CLProtocol::CCLPort::ProbeDevice(portID_, Template(GetParam().shortTemplate), 1000);
  CLProtocol::CDeviceID parsed;
  ASSERT_TRUE(parsed.FromString(id)) << id.c_str();
  EXPECT_EQ(DriverDirectory() + "/libCLProtocolGenCP.so", parsed.GetDriverPath().c_str());
  port_->Connect(portID_, id);
  EXPECT_STREQ(id.c_str(), port_->GetDeviceID().c_str());
  EXPECT_EQ(GenApi::RW, port_->GetAccessMode());
  ExpectDescription(false);
  for (uint32_t value : {1280u, 512u}) {
    WriteU32(GetParam().rwRegister, value);
    EXPECT_EQ(value, ReadU32(GetParam().rwRegister));
  }
}

TEST_P(Cameras, SwitchesTo115200AndBackAndBoostsTheDownload) {
  Open();
  ASSERT_NE(0u, port_->SupportedBaudrates() & CL_BAUDRATE_115200);
  port_->SetDeviceBauderate(CL_BAUDRATE_115200);
  EXPECT_EQ(16, sim_.Stats()["baud_rate"]);
  EXPECT_EQ(CL_BAUDRATE_115200, adapter_->lastRate);
  WriteU32(GetParam().rwRegister, 640);
  EXPECT_EQ(640u, ReadU32(GetParam().rwRegister));
  port_->SetDeviceBauderate(CL_BAUDRATE_9600);
  EXPECT_EQ(CL_BAUDRATE_9600, adapter_->lastRate);
  EXPECT_EQ(640u, ReadU32(GetParam().rwRegister));
  ExpectDescription(true);
  EXPECT_GE(adapter_->highestRate, CL_BAUDRATE_115200);
  EXPECT_EQ(1, sim_.Stats()["baud_rate"]);
  EXPECT_EQ(0, sim_.Stats()["garbled_bytes"]);
}

TEST_P(Cameras, ReportsInvalidAddressAndWriteProtection) {
  Open();
  const std::string invalid = ErrorOf([](CLProtocol::CCLPort& p) {
    uint8_t bytes[4];
    p.Read(bytes, kUnmappedAddress, 4);
  });
  EXPECT_EQ(0u, invalid.find("Read failed (Code: -30003) ")) << invalid;
  EXPECT_NE(std::string::npos, invalid.find("invalid address")) << invalid;
  const std::string writeProtected = ErrorOf([](CLProtocol::CCLPort& p) {
    const uint8_t bytes[4] = {1, 2, 3, 4};
    p.Write(bytes, kVendorNameReg, 4);
  });
  EXPECT_EQ(0u, writeProtected.find("Write failed (Code: -30004) ")) << writeProtected;
  uint8_t name[5] = {};
  port_->Read(name, kVendorNameReg, 4);
  EXPECT_STREQ("KORV", reinterpret_cast<const char*>(name));
}

INSTANTIATE_TEST_SUITE_P(ZippedAndPlain, Cameras, ::testing::ValuesIn(kCameras),
                         [](const ::testing::TestParamInfo<Camera>& info) {
                           std::string name = info.param.folder;
                           for (char& c : name) c = c == '-' ? '_' : c;
                           return name;
                         });

// The baud-rate feature of the description, written through the node map, reaches the camera
// with the change procedure: the port follows, the camera is confirmed and never falls back,
// also when it answers the change with a pending acknowledge.
TEST_F(SimProgram, BaudRateFeatureOfTheNodeMapSwitchesCameraAndPort) {
  for (const char* slowSwitch : {"baud_switch_ms=0", "baud_switch_ms=800"}) {
    StartSim({"--set", slowSwitch});
    Open();
    GenApi::CNodeMapRef map;
    map._LoadXMLFromString(ReadFile(ExampleDir("korva-area") + "/KORVA_AreaScan.xml").c_str());
    ASSERT_TRUE(map._Connect(port_.get(), "Device"));
    GenApi::CEnumerationPtr baud = map._GetNode("DeviceSerialPortBaudRate");
    GenApi::CIntegerPtr width = map._GetNode("Width");
    ASSERT_TRUE(baud.IsValid() && width.IsValid());
    baud->FromString("Baud115200");
    EXPECT_EQ(CL_BAUDRATE_115200, adapter_->lastRate) << slowSwitch;
    SleepMs(400);  // past the camera's confirmation window
    width->SetValue(1024);
    EXPECT_EQ(1024, width->GetValue()) << slowSwitch;
    EXPECT_STREQ("Baud115200", baud->ToString().c_str());
    baud->FromString("Baud9600");
    EXPECT_EQ(CL_BAUDRATE_9600, adapter_->lastRate);
    EXPECT_EQ(1024, width->GetValue());
    auto stats = sim_.Stats();
    EXPECT_EQ(0, stats["baud_fallbacks"]) << slowSwitch;
    EXPECT_EQ(0, stats["repeated_answers"]) << slowSwitch << ": no resend was needed";
    EXPECT_EQ(0, stats["garbled_bytes"]) << slowSwitch;
    port_->Disconnect();
    EXPECT_EQ("exit 0", sim_.Stop());
  }
}

// Start-up opens the camera and switches its heartbeat off: idle longer than the heartbeat
// time-out at 115200 baud, the camera is still there at that rate.
TEST_F(SimProgram, StartUpKeepsAnIdleCameraAtItsRate) {
  StartSim({"--set", "heartbeat_timeout_ms=1000"});
  Open();
  auto stats = sim_.Stats();
  EXPECT_EQ(1, stats["access_privilege"]);
  EXPECT_EQ(0, stats["heartbeat_enabled"]);
  port_->SetDeviceBauderate(CL_BAUDRATE_115200);
  SleepMs(2500);
  EXPECT_EQ(2048u, ReadU32(kWidthReg));
  EXPECT_EQ(0, sim_.Stats()["heartbeat_expiries"]);
  EXPECT_EQ(16, sim_.Stats()["baud_rate"]);
}

// A camera left at another rate is found by a new process; a camera its heartbeat brought back
// to 9600 is found by the process that left it at 115200.
TEST_F(SimProgram, ReconnectFindsTheCameraAtWhateverRateItIs) {
  StartSim({"--set", "heartbeat_timeout_ms=1000"});
  Open();
  port_->SetDeviceBauderate(CL_BAUDRATE_115200);
  Restart();
  Open();
  EXPECT_EQ(2048u, ReadU32(kWidthReg));
  EXPECT_EQ(CL_BAUDRATE_115200, port_->GetDeviceBauderate());

  const uint8_t heartbeatOn[8] = {0, 0, 0, 0, 0, 0, 0, 1};
  port_->Write(heartbeatOn, 0x1E0, 8);
  port_->Disconnect();
  for (int waited = 0; sim_.Stats()["heartbeat_expiries"] < 1 && waited < 8000; waited += 100) {
    SleepMs(100);
  }
  ASSERT_EQ(1, sim_.Stats()["baud_rate"]) << "the heartbeat took the camera back to 9600";
  Open();
  EXPECT_EQ(2048u, ReadU32(kWidthReg));
}

// Templates breaking the device-ID rules fail before any traffic; the device ID's own tokens
// keep them.
TEST_F(SimProgram, DeviceIDTokensAreCIdentifiers) {
  StartSim();
  for (const char* bad : {"KORVA#2040", "KORVA##A2040M", "KORVA#AreaScan#A2040M#1_4_2"}) {
    try {
      CLProtocol::CCLPort::ProbeDevice(portID_, Template(bad), 1000);
      ADD_FAILURE() << bad << " was accepted";
    } catch (const GenICam::GenericException& e) {
      EXPECT_NE(std::string::npos, std::string(e.GetDescription()).find("(Code: -20100) ")) << bad;
    }
  }
  EXPECT_EQ(0, sim_.Stats()["commands"]);
  const gcstring id = CLProtocol::CCLPort::ProbeDevice(portID_, Template(), 1000);
  CLProtocol::CDeviceID parsed;
  ASSERT_TRUE(parsed.FromString(id));
  EXPECT_STREQ("_1_4_2", parsed.GetCameraVersion().c_str());
  EXPECT_STREQ("KA2040M_00117", parsed.GetCameraSerialNumber().c_str());
}

// Device statuses arrive as distinct codes of the driver's range; a write the camera executed
// with a warning does not throw, and its text is kept until the next write.
TEST_F(SimProgram, DeviceStatusesBecomeDistinctCodes) {
  StartSim();
  Open();
  struct Case {
    const char* status;
    bool write;
    const char* expected;
  };
  const Case cases[] = {
      {"0x8064:1", true, "(Code: -30098) "},
      {"0xC002:1", false, "(Code: -30096) "},
      {"0x0001:1", true, "no exception"},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(sim_.Control(std::string("--status ") + c.status));
    const std::string outcome = WidthOutcome(c.write);
    EXPECT_NE(std::string::npos, outcome.find(c.expected)) << c.status << ": " << outcome;
  }
  const std::string warning = port_->GetLastWriteWarning().c_str();
  EXPECT_EQ(0u, warning.find("(Code: -30100) ")) << warning;
  EXPECT_NE(std::string::npos, warning.find("0x0001")) << warning;
  ASSERT_TRUE(sim_.Control("--status 0x8006:1"));  // a failed write forgets the warning
  EXPECT_NE(std::string::npos, WidthOutcome(true).find("(Code: -30006) "));
  EXPECT_STREQ("", port_->GetLastWriteWarning().c_str());
}

// What the camera's bootstrap block says is honoured: GenCP 1.x only, strings in UTF-16, waits
// as long as its maximum response time.
TEST_F(SimProgram, BootstrapFactsAreHonoured) {
  struct Case {
    const char* setting;
    const char* expected;  // in the device ID or the error
  };
  const Case cases[] = {
      {"string_encoding=utf16", "#KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117"},
      {"gencp_version=0x00020000", "(Code: -30201) "},
  };
  for (const auto& c : cases) {
    StartSim({"--set", c.setting});
    std::string outcome;
    try {
      outcome = CLProtocol::CCLPort::ProbeDevice(portID_, Template(), 1000).c_str();
    } catch (const GenICam::GenericException& e) {
      outcome = e.GetDescription();
    }
    EXPECT_NE(std::string::npos, outcome.find(c.expected)) << c.setting << ": " << outcome;
    EXPECT_EQ("exit 0", sim_.Stop());
  }
  StartSim({"--set", "max_response_time_ms=2000"});
  Open();
  port_->SetSerialTimeOut(100);
  ASSERT_TRUE(sim_.Control("--answer-delay 1200"));
  EXPECT_EQ(2048u, ReadU32(kWidthReg));
}

// Cancelling a pending write leaves the camera usable: the next call waits out the write the
// camera still runs instead of failing busy.
TEST_F(SimProgram, CancelledWriteLeavesTheCameraUsable) {
  StartSim();
  gencp_driver_test::Driver driver;
  std::string error;
  ASSERT_TRUE(driver.Load(error)) << error;
  driver.InitLib(nullptr, CLP_LOG_ERROR);
  ASSERT_EQ(CL_ERR_NO_ERR, adapter_->SerialInit());
  CLINT8 id[128];
  CLUINT32 size = sizeof id;
  CLUINT32 cookie = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, driver.ProbeDevice(adapter_.get(), "KORVA", id, &size, &cookie, 1000));
  ASSERT_TRUE(sim_.Control("--processing 2000"));
  const CLINT8 value[4] = {0, 0, 1, 0x40};
  ASSERT_EQ(CL_ERR_PENDING_WRITE,
            driver.WriteRegister(adapter_.get(), cookie, kWidthReg, value, 4, 500));
  EXPECT_EQ(CL_ERR_NO_ERR, driver.ContinueWriteRegister(adapter_.get(), cookie, 0, 500));
  ASSERT_TRUE(sim_.Control(""));
  CLINT8 read[4] = {};
  EXPECT_EQ(CL_ERR_NO_ERR, driver.ReadRegister(adapter_.get(), cookie, kWidthReg, read, 4, 500));
  EXPECT_EQ(0x40, read[3]);
  driver.Disconnect(cookie);
  driver.CloseLib();
}

// A description file of a schema this GenApi cannot read, lying next to the driver, is never
// chosen over the camera's own.
TEST_F(SimProgram, DescriptionsOfUnsupportedSchemasAreIgnored) {
  namespace fs = std::filesystem;
  const fs::path location =
      fs::path(::testing::TempDir()) / ("clp_stray_" + std::to_string(getpid()));
  fs::remove_all(location);
  fs::create_directories(location / "Linux64_x64");
  fs::copy_file(DriverDirectory() + "/libCLProtocolGenCP.so",
                location / "Linux64_x64" / "libCLProtocolGenCP.so");
  std::ofstream(location / "SchemaVersion.99.0@KORVA#AreaScan#A2040M@XMLVersion.9.9.9.xml")
      << "<stray/>";
  vq::platform::SetEnv("GENICAM_CLPROTOCOL", location.string());
  StartSim();
  const gcstring id = CLProtocol::CCLPort::ProbeDevice(
      portID_,
      gcstring((fs::canonical(location / "Linux64_x64").string() +
                "#libCLProtocolGenCP.so#KORVA")
                   .c_str()),
      1000);
  port_->Connect(portID_, id);
  GenICam::gcstring_vector ids;
  port_->GetXMLIDs(ids);
  for (const auto& xmlId : ids) EXPECT_EQ(std::string::npos, std::string(xmlId.c_str()).find("99"));
  const gcstring xml = port_->GetXML(true);
  EXPECT_EQ(ReadFile(ExampleDir("korva-area") + "/KORVA_AreaScan.xml"),
            std::string(xml.c_str(), xml.size()));
  port_.reset();
  CLProtocol::CCLPort::Terminate();
  vq::platform::UnsetEnv("GENICAM_CLPROTOCOL");
  fs::remove_all(location);
}

// Fault runs: lost, damaged, late or refused answers, silence, slow commands, the program
// stopped and resumed, the host at another rate. Each call ends with its value or the right
// code, none hangs, and the camera answers normally afterwards.
struct FaultRun {
  const char* name;
  const char* control;  // the program's fault options; "stop" pauses the program, "rate" puts
                        // the host port at 19200 baud
  bool write;
  const char* expected;  // "(Code: N) " or "no exception"
  int settleMs;          // wait for late answers before the camera is used again
};
void PrintTo(const FaultRun& run, std::ostream* os) { *os << run.name; }

class Faults : public SimProgram, public ::testing::WithParamInterface<FaultRun> {};

TEST_P(Faults, EndWithTheRightCodeAndRecover) {
  StartSim();
  Open();
  const FaultRun& run = GetParam();
  const bool stop = std::string(run.control) == "stop";
  const bool rate = std::string(run.control) == "rate";
  if (stop) {
    sim_.Pause();
  } else if (rate) {
    ASSERT_EQ(CL_ERR_NO_ERR, adapter_->clSetBaudRate(CL_BAUDRATE_19200));
  } else {
    ASSERT_TRUE(sim_.Control(run.control));
  }
  const std::string outcome = WidthOutcome(run.write);
  EXPECT_NE(std::string::npos, outcome.find(run.expected)) << outcome;
  if (stop) {
    sim_.Resume();
  } else if (rate) {
    EXPECT_GT(sim_.Stats()["garbled_bytes"], 0) << "the camera heard the other rate";
    ASSERT_EQ(CL_ERR_NO_ERR, adapter_->clSetBaudRate(CL_BAUDRATE_9600));
  } else {
    ASSERT_TRUE(sim_.Control(""));
  }
  SleepMs(run.settleMs);
  EXPECT_EQ(run.write && outcome == "no exception" ? 512u : 2048u, ReadU32(kWidthReg));
}

INSTANTIATE_TEST_SUITE_P(
    Table, Faults,
    ::testing::Values(FaultRun{"LostAnswerIsResent", "--drop-answers 1", false, "no exception", 0},
                      FaultRun{"LostWriteAnswerIsNotRepeated", "--drop-answers 2", true,
                               "no exception", 0},
                      FaultRun{"DamagedAnswersAreResent", "--corrupt-answers 2", false,
                               "no exception", 0},
                      FaultRun{"LateAnswerWithinResponseTime", "--answer-delay 200", false,
                               "no exception", 0},
                      FaultRun{"SlowReadSendsPending", "--processing 1500", false, "no exception",
                               0},
                      FaultRun{"BusyOnceIsRetried", "--status 0x8007:1", true, "no exception", 0},
                      FaultRun{"ThreeLostAnswersTimeOut", "--drop-answers 3", false,
                               "(Code: -10004) ", 0},
                      FaultRun{"AnswersTooLateTimeOut", "--answer-delay 2500", false,
                               "(Code: -10004) ", 2500},
                      FaultRun{"SilenceTimesOut", "--silent", true, "(Code: -10004) ", 0},
                      FaultRun{"ErrorStatus", "--status 0x8006:1", false, "(Code: -30006) ", 0},
                      FaultRun{"StoppedProgramTimesOut", "stop", false, "(Code: -10004) ", 100},
                      FaultRun{"HostAtAnotherRateTimesOut", "rate", false, "(Code: -10004) ", 0}),
    [](const ::testing::TestParamInfo<FaultRun>& info) { return std::string(info.param.name); });

// The program stopped in the middle of a read and resumed before the driver gives up: the read
// completes.
TEST_F(SimProgram, ProgramResumedWithinTheRetriesCompletesTheRead) {
  StartSim();
  Open();
  sim_.Pause();
  std::thread resume([this] {
    SleepMs(300);
    sim_.Resume();
  });
  uint32_t value = 0;
  EXPECT_NO_THROW(value = ReadU32(kWidthReg));
  resume.join();
  EXPECT_EQ(2048u, value);
}

}  // namespace
}  // namespace clprotocol_test
