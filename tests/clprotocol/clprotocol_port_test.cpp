// CCLPort without a camera: driver discovery through its own location and GENICAM_CLPROTOCOL,
// port registration, and the errors of calls that cannot succeed.
#include <CLProtocol/CLPort.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace {

using GenICam::gcstring;

std::string DriverDirectory() { return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64"; }

std::vector<std::string> Templates() {
  GenICam::gcstring_vector list;
  CLProtocol::CCLPort::GetDeviceIDTemplates(list);
  std::vector<std::string> result;
  for (const auto& t : list) result.push_back(t.c_str());
  return result;
}

// An adapter whose line stays silent.
class SilentAdapter : public CLProtocol::ISerialAdapter {
 public:
  CLINT32 SerialInit() override { ++inits; return CL_ERR_NO_ERR; }
  void SerialClose() override { ++closes; }
  void CheckError(CLINT32) override {}
  CLINT32 CLPROTOCOL clSerialRead(CLINT8*, CLUINT32*, CLUINT32) override { return CL_ERR_TIMEOUT; }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8*, CLUINT32*, CLUINT32) override { return CL_ERR_NO_ERR; }
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* rates) override {
    *rates = CL_BAUDRATE_9600;
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32) override { return CL_ERR_NO_ERR; }
  int inits = 0;
  int closes = 0;
};

class Port : public ::testing::Test {
 protected:
  void SetUp() override { vq::platform::UnsetEnv("GENICAM_CLPROTOCOL"); }
  void TearDown() override {
    vq::platform::UnsetEnv("GENICAM_CLPROTOCOL");
    CLProtocol::CCLPort::UnRegisterSerials();
  }

  std::string DescriptionOf(void (*call)()) {
    try {
      call();
    } catch (const GenICam::GenericException& e) {
      return e.GetDescription();
    }
    return "no exception";
  }
};

// The driver in the library's own location, its templates prefixed with its directory and file;
// the same drivers, each once, from locations in the environment with either separator.
TEST_F(Port, FindsDriversInTheirOwnLocationAndInTheEnvironment) {
  const auto own = Templates();
  const std::string prefix = DriverDirectory() + "#libCLProtocolGenCP.so#";
  for (const char* shortTemplate : {"KORVA#AreaScan#A2040M", "KORVA#LineScan#L4096"}) {
    EXPECT_NE(own.end(), std::find(own.begin(), own.end(), prefix + shortTemplate));
  }
  const std::string location = std::string(VQ_BINARY_DIR) + "/lib/clprotocol";
  for (const std::string& list : {"/nonexistent;" + location, "/nonexistent:" + location + "/",
                                  location + ";;" + location}) {
    ASSERT_TRUE(vq::platform::SetEnv("GENICAM_CLPROTOCOL", list));
    EXPECT_EQ(own, Templates()) << list;  // same drivers, each once
  }
}

// A driver offering malformed templates: they are left out, and the diagnostics name the
// driver; a driver reached again through a symbolic link is listed once; files that are no
// drivers are passed over.
TEST_F(Port, DropsMalformedTemplatesAndListsEachDriverOnce) {
  namespace fs = std::filesystem;
  const fs::path root = fs::path(::testing::TempDir()) / ("clp_drivers_" + std::to_string(getpid()));
  fs::remove_all(root);
  fs::create_directories(root / "a" / "Linux64_x64");
  fs::create_directories(root / "b" / "Linux64_x64");
  fs::copy_file(VQ_FAKE_DRIVER, root / "a" / "Linux64_x64" / "libCLProtocolFake.so");
  std::ofstream(root / "a" / "Linux64_x64" / "libNotADriver.so") << "not a library";
  std::ofstream(root / "a" / "Linux64_x64" / "readme.txt") << "text";
  fs::create_symlink(DriverDirectory() + "/libCLProtocolGenCP.so",
                     root / "b" / "Linux64_x64" / "libCLProtocolGenCP.so");
  ASSERT_TRUE(vq::platform::SetEnv("GENICAM_CLPROTOCOL",
                                   (root / "a").string() + ":" + (root / "b").string()));
  const auto templates = Templates();
  const std::string fake = fs::canonical(root / "a" / "Linux64_x64").string() + "#libCLProtocolFake.so#";
  std::vector<std::string> offered;
  for (const auto& t : templates) {
    if (t.rfind(fake, 0) == 0) offered.push_back(t.substr(fake.size()));
    EXPECT_EQ(std::string::npos, t.find("NotADriver")) << t;
  }
  EXPECT_EQ((std::vector<std::string>{"ACME#Cam", "ACME#Cam#M1"}), offered);
  GenICam::gcstring_vector messages;
  CLProtocol::CCLPort::GetDiagnostics(messages);
  ASSERT_EQ(3u, messages.size());
  for (const auto& message : messages) {
    EXPECT_NE(std::string::npos, std::string(message.c_str()).find("libCLProtocolFake.so"));
  }
  EXPECT_EQ(1, std::count(templates.begin(), templates.end(),
                          DriverDirectory() + "#libCLProtocolGenCP.so#KORVA#AreaScan#A2040M"));
  CLProtocol::CCLPort::Terminate();
  fs::remove_all(root);
}

// A driver location of its own: a copy of the GenCP driver and a description file named by
// its XML ID.
TEST_F(Port, DescriptionFilesInALocationAddTemplatesAndParameterNames) {
  namespace fs = std::filesystem;
  const fs::path location = fs::path(::testing::TempDir()) / "clp_own_location";
  fs::remove_all(location);
  fs::create_directories(location / "Linux64_x64");
  fs::copy_file(DriverDirectory() + "/libCLProtocolGenCP.so",
                location / "Linux64_x64" / "libCLProtocolGenCP.so");
  std::ofstream(location / "SchemaVersion.1.1@ACME#Gadget@XMLVersion.1.0.0.xml")
      << "<RegisterDescription><Integer Name=\"Gain\"><pValue>GainReg</pValue></Integer>"
         "<IntReg Name=\"GainReg\"><Address>0x1234</Address><Length>4</Length></IntReg>"
         "</RegisterDescription>";
  ASSERT_TRUE(vq::platform::SetEnv("GENICAM_CLPROTOCOL", location.string()));
  const auto templates = Templates();
  const std::string expected =
      fs::weakly_canonical(location / "Linux64_x64").string() + "#libCLProtocolGenCP.so#ACME#Gadget";
  EXPECT_NE(templates.end(), std::find(templates.begin(), templates.end(), expected));

  std::string error;
  auto driver = vq::platform::SharedLibrary::Open(
      (location / "Linux64_x64" / "libCLProtocolGenCP.so").string(), &error);
  ASSERT_TRUE(driver) << error;
  using VxComPort = CLINT32 (*)(CLINT32, const CLINT8*, CLINT64, void*, CLINT32, const CLINT8*);
  auto vxComPort = driver.FindFunction<VxComPort>("vxComPort");
  ASSERT_NE(nullptr, vxComPort);
  uint32_t address = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, vxComPort(1, "Gain", 4, &address, 4, "ACME#Gadget#M1#V1#S1"));
  EXPECT_EQ(0x1234u, address);
  EXPECT_NE(CL_ERR_NO_ERR, vxComPort(1, "Gain", 4, &address, 4, "ACME#Other"));
  CLProtocol::CCLPort::Terminate();  // releases the copy before its folder goes
  driver.Close();
  fs::remove_all(location);
}

TEST_F(Port, RegistersPortsUnderLocalNames) {
  SilentAdapter a, b;
  EXPECT_STREQ("Local#A", CLProtocol::CCLPort::RegisterSerial("A", &a).c_str());
  EXPECT_STREQ("Local#B", CLProtocol::CCLPort::RegisterSerial("B", &b).c_str());
  GenICam::gcstring_vector ids;
  CLProtocol::CCLPort::GetPortIDs(ids);
  EXPECT_EQ(2u, ids.size());
  EXPECT_EQ(&a, CLProtocol::CCLPort::GetPort("Local#A"));
  CLProtocol::CCLPort::UnRegisterSerial("Local#A");
  EXPECT_EQ(nullptr, CLProtocol::CCLPort::GetPort("Local#A"));
  EXPECT_EQ(&b, CLProtocol::CCLPort::GetPort("Local#B"));
  EXPECT_EQ(0, a.closes);  // never opened, so never closed
  CLProtocol::CCLPort::UnRegisterSerials();
  EXPECT_EQ(nullptr, CLProtocol::CCLPort::GetPort("Local#B"));
}

TEST_F(Port, ProbeOnASilentLineFailsWithCodeAndClosesOnUnregister) {
  SilentAdapter silent;
  const gcstring portID = CLProtocol::CCLPort::RegisterSerial("Silent", &silent);
  const gcstring deviceTemplate =
      gcstring((DriverDirectory() + "#libCLProtocolGenCP.so#KORVA").c_str());
  try {
    CLProtocol::CCLPort::ProbeDevice(portID, deviceTemplate, 50);
    FAIL() << "probe succeeded on a silent line";
  } catch (const GenICam::GenericException& e) {
    EXPECT_NE(nullptr, std::strstr(e.GetDescription(), "(Code: -20101) ")) << e.GetDescription();
  }
  EXPECT_EQ(1, silent.inits);
  CLProtocol::CCLPort::UnRegisterSerials();
  EXPECT_EQ(1, silent.closes);
}

struct FailureCase {
  const char* name;
  void (*call)();
  const char* expected;
};

class PortFailures : public Port, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(PortFailures, ThrowGenICamExceptions) {
  const std::string description = DescriptionOf(GetParam().call);
  EXPECT_NE(std::string::npos, description.find(GetParam().expected)) << description;
}

INSTANTIATE_TEST_SUITE_P(
    Table, PortFailures,
    ::testing::Values(
        FailureCase{"UnknownPort",
                    [] {
                      CLProtocol::CCLPort::ProbeDevice(
                          "Local#Nobody", (DriverDirectory() + "#libCLProtocolGenCP.so#KORVA").c_str());
                    },
                    "Unknown serial port"},
        FailureCase{"MissingDriver",
                    [] {
                      static SilentAdapter a;
                      CLProtocol::CCLPort::RegisterSerial("P", &a);
                      CLProtocol::CCLPort::ProbeDevice("Local#P", "/nowhere#libNothing.so#KORVA");
                    },
                    "(Code: -10098)"},
        FailureCase{"MalformedTemplate",
                    [] { CLProtocol::CCLPort::ProbeDevice("Local#P", "not a device id"); },
                    "(Code: -20100)"},
        FailureCase{"NoDriverDirectoryIsNoBareName",
                    [] {
                      CLProtocol::CCLPort::ProbeDevice(
                          "Local#P", "$(VQ_CLP_UNSET)#libCLProtocolGenCP.so#KORVA");
                    },
                    "(Code: -20100)"},
        FailureCase{"ReadWhileNotConnected",
                    [] {
                      CLProtocol::CCLPort port;
                      uint8_t bytes[4];
                      port.Read(bytes, 0, 4);
                    },
                    "not connected"},
        FailureCase{"XmlWhileNotConnected",
                    [] {
                      CLProtocol::CCLPort port;
                      port.GetXML(true);
                    },
                    "not connected"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Port, UnconnectedPortIsNotAvailable) {
  CLProtocol::CCLPort port;
  EXPECT_EQ(GenApi::NA, port.GetAccessMode());
  EXPECT_FALSE(port.IsConnected());
  EXPECT_STREQ("", port.GetDeviceID().c_str());
  CLUINT32 rates = 0;
  EXPECT_EQ(CL_ERR_INVALID_REFERENCE, port.clGetSupportedBaudRates(&rates));
}

}  // namespace
