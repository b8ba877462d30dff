// The GenCP driver, loaded at run time, against the in-process simulated camera: templates,
// probing, register access, descriptions, error codes and texts, parameter names.
#include <cstring>
#include <string>
#include <vector>

#include "gencp_driver_harness.h"
#include "vq/gencp/Sha1.h"
#include "vq/sim/Device.h"

namespace gencp_driver_test {
namespace {

std::vector<std::string> SplitTabs(const std::string& text) {
  std::vector<std::string> items;
  size_t start = 0;
  while (start < text.size()) {
    size_t tab = text.find('\t', start);
    if (tab == std::string::npos) tab = text.size();
    items.push_back(text.substr(start, tab - start));
    start = tab + 1;
  }
  return items;
}

TEST_F(DriverTest, ReportsInterfaceVersionOneTwoAndItsParameters) {
  CLUINT32 major = 0, minor = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.GetCLProtocolVersion(&major, &minor));
  EXPECT_EQ(1u, major);
  EXPECT_EQ(2u, minor);
  for (CLP_PARAMS param : {CLP_LOG_LEVEL, CLP_LOG_CALLBACK, CLP_STOP_PROBE_DEVICE,
                           CLP_DEVICE_BAUDERATE, CLP_DEVICE_SUPPORTED_BAUDERATES}) {
    EXPECT_EQ(CL_ERR_NO_ERR, driver_.IsParamSupported(param)) << param;
  }
  EXPECT_EQ(CL_ERR_PARAM_NOT_SUPPORTED, driver_.IsParamSupported(static_cast<CLP_PARAMS>(99)));
  EXPECT_EQ(CL_ERR_IN_USE, driver_.InitLib(nullptr, CLP_LOG_ERROR));
}

TEST_F(DriverTest, ListsTemplatesFromItsDeviceListWithTheSizeProtocol) {
  CLUINT32 size = 0;
  ASSERT_EQ(CL_ERR_BUFFER_TOO_SMALL, driver_.GetShortDeviceIDTemplates(nullptr, &size));
  ASSERT_GT(size, 1u);
  std::vector<CLINT8> small(size - 1);
  CLUINT32 smallSize = size - 1;
  EXPECT_EQ(CL_ERR_BUFFER_TOO_SMALL, driver_.GetShortDeviceIDTemplates(small.data(), &smallSize));
  EXPECT_EQ(size, smallSize);
  std::vector<CLINT8> text(size);
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.GetShortDeviceIDTemplates(text.data(), &size));
  const auto templates = SplitTabs(text.data());
  EXPECT_NE(templates.end(), std::find(templates.begin(), templates.end(), "KORVA#AreaScan#A2040M"));
  EXPECT_NE(templates.end(), std::find(templates.begin(), templates.end(), "KORVA#LineScan#L4096"));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.GetShortDeviceIDTemplates(nullptr, nullptr));
}

struct ProbeCase {
  const char* shortTemplate;
  CLINT32 expected;
};

class ProbeTemplates : public DriverTest, public ::testing::WithParamInterface<ProbeCase> {};

TEST_P(ProbeTemplates, AcceptsTokenWisePrefixesOnly) {
  StartCamera();
  std::string id;
  CLUINT32 cookie = 0;
  EXPECT_EQ(GetParam().expected, Probe(GetParam().shortTemplate, &id, &cookie));
  if (GetParam().expected == CL_ERR_NO_ERR) {
    EXPECT_EQ(kAreaScanId, id);
    EXPECT_NE(0u, cookie);
  } else {
    EXPECT_EQ(0u, cookie);
  }
  if (GetParam().expected == CL_ERR_INVALID_DEVICEID) {
    EXPECT_EQ(0u, sim_->stats().bytesIn);
  }
}

// Tokens are C identifiers: a template breaking that rule fails before any line traffic.
INSTANTIATE_TEST_SUITE_P(
    Table, ProbeTemplates,
    ::testing::Values(ProbeCase{"KORVA", CL_ERR_NO_ERR}, ProbeCase{"KORVA#AreaScan", CL_ERR_NO_ERR},
                      ProbeCase{"KORVA#AreaScan#A2040M", CL_ERR_NO_ERR},
                      ProbeCase{kAreaScanId, CL_ERR_NO_ERR},
                      ProbeCase{"KORVA#Area", CL_ERR_NO_DEVICE_FOUND},
                      ProbeCase{"KORVA#LineScan", CL_ERR_NO_DEVICE_FOUND},
                      ProbeCase{"KORVA#AreaScan#A2040M#_1_4_2#OTHER", CL_ERR_NO_DEVICE_FOUND},
                      ProbeCase{"ACME", CL_ERR_NO_DEVICE_FOUND},
                      ProbeCase{"", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"KO RVA", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"#AreaScan", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"KORVA##A2040M", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"KORVA#AreaScan#A2040M#1_4_2", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"KORVA#2040", CL_ERR_INVALID_DEVICEID},
                      ProbeCase{"a#b#c#d#e#f", CL_ERR_INVALID_DEVICEID}));

// Start-up as GenCP has it, whatever the device's strings and capabilities: tokens are C
// identifiers, the device is opened and its heartbeat switched off.
struct StartCase {
  const char* name;
  const char* overrides;
  const char* id;
};

class StartUp : public DriverTest, public ::testing::WithParamInterface<StartCase> {};

TEST_P(StartUp, OpensTheDeviceAndSwitchesItsHeartbeatOff) {
  StartCamera("korva-area", GetParam().overrides);
  std::string id;
  CLUINT32 cookie = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, Probe("KORVA", &id, &cookie));
  EXPECT_EQ(GetParam().id, id);
  EXPECT_EQ(vq::sim::kPrivilegeOpen, sim_->device().accessPrivilege());
  EXPECT_FALSE(sim_->device().heartbeatEnabled());
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Write32(cookie, kWidthReg, 640));  // writes need the privilege
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(640u, value);
}

INSTANTIATE_TEST_SUITE_P(
    Table, StartUp,
    ::testing::Values(StartCase{"Ascii", "", kAreaScanId},
                      StartCase{"EmptyAndDigitTokens", "version = 2.0\nserial_number = -",
                                "KORVA#AreaScan#A2040M#_2_0#_"},
                      StartCase{"NoHeartbeatToSwitchOff", "heartbeat_timeout_ms = 0", kAreaScanId}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DriverTest, ProbeFollowsTheBufferSizeProtocol) {
  StartCamera();
  CLINT8 tiny[4] = {};
  CLUINT32 size = sizeof tiny;
  CLUINT32 cookie = 0;
  EXPECT_EQ(CL_ERR_BUFFER_TOO_SMALL,
            driver_.ProbeDevice(serial_.get(), "KORVA", tiny, &size, &cookie, 500));
  EXPECT_EQ(std::strlen(kAreaScanId) + 1, size);
  EXPECT_EQ(0u, cookie);
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.ProbeDevice(nullptr, "KORVA", tiny, &size, &cookie, 500));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.ProbeDevice(serial_.get(), nullptr, tiny, &size, &cookie, 500));
}

TEST_F(DriverTest, ReadsAndWritesRegisters) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  uint32_t value = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(2048u, value);
  ASSERT_EQ(CL_ERR_NO_ERR, Write32(cookie, kWidthReg, 1024));
  ASSERT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(1024u, value);
}

TEST_F(DriverTest, SplitsLargeReadsIntoPackets) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  const auto& file = sim_->device().descriptionFile();
  ASSERT_GT(file.size(), 2500u);
  std::vector<uint8_t> data(2500);
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.ReadRegister(serial_.get(), cookie, 0x100000,
                                                reinterpret_cast<CLINT8*>(data.data()), 2500, 500));
  EXPECT_TRUE(std::equal(data.begin(), data.end(), file.begin()));
  EXPECT_GE(sim_->stats().commands, 3u);
}

// Every device status becomes a distinct code of the custom range with a text; -30100 is only
// ever a write done with a warning.
struct StatusCase {
  uint16_t status;
  bool write;
  CLINT32 expected;
  const char* text;
};

class DeviceStatuses : public DriverTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(DeviceStatuses, BecomeDistinctCustomCodesWithTexts) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().forcedStatus = GetParam().status;
  sim_->faults().forcedStatusCount = 1;
  uint32_t value = 0;
  const CLINT32 status = GetParam().write ? Write32(cookie, kWidthReg, 7)
                                          : Read32(cookie, kWidthReg, value);
  EXPECT_EQ(GetParam().expected, status);
  EXPECT_NE(std::string::npos, driver_.ErrorText(status).find(GetParam().text))
      << driver_.ErrorText(status);
  EXPECT_FALSE(driver_.ErrorText(CL_ERR_GET_LAST_ERROR, cookie).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Table, DeviceStatuses,
    ::testing::Values(StatusCase{0x8001, false, -30001, "not implemented"},
                      StatusCase{0x8003, false, -30003, "invalid address"},
                      StatusCase{0x8004, true, -30004, "write protect"},
                      StatusCase{0x8006, true, -30006, "access denied"},
                      StatusCase{0x800B, false, -30011, "time-out"},
                      StatusCase{0x800F, false, -30015, "configuration"},
                      StatusCase{0x8064, true, -30098, "does not know"},
                      StatusCase{0x8FFF, false, -30099, "generic"},
                      StatusCase{0xA001, false, -30097, "technology"},
                      StatusCase{0xC123, true, -30096, "device-specific"},
                      StatusCase{0x0001, true, -30100, "warning"},
                      StatusCase{0x4005, true, -30100, "warning"}));

TEST_F(DriverTest, UnknownCodesHaveNoText) {
  CLINT8 text[8];
  CLUINT32 size = sizeof text;
  EXPECT_EQ(CL_ERR_ERROR_NOT_FOUND, driver_.GetErrorText(-12345, text, &size, 0));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.GetErrorText(-30003, text, nullptr, 0));
}

TEST_F(DriverTest, RefusesBadArgumentsAndUnknownCookies) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  CLINT8 buffer[4];
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.ReadRegister(serial_.get(), cookie, kWidthReg, nullptr, 4, 500));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.ReadRegister(nullptr, cookie, kWidthReg, buffer, 4, 500));
  EXPECT_EQ(CL_ERR_INVALID_INDEX, driver_.ReadRegister(serial_.get(), cookie, kWidthReg, buffer, -1, 500));
  EXPECT_EQ(CL_ERR_INVALID_INDEX, driver_.ReadRegister(serial_.get(), cookie, -4, buffer, 4, 500));
  EXPECT_EQ(CL_ERR_INVALID_COOKIE,
            driver_.ReadRegister(serial_.get(), cookie + 1000, kWidthReg, buffer, 4, 500));
  EXPECT_EQ(CL_ERR_NO_ERR, driver_.ReadRegister(serial_.get(), cookie, kWidthReg, buffer, 0, 500));
  EXPECT_EQ(CL_ERR_NO_ERR, driver_.Disconnect(cookie));
  EXPECT_EQ(CL_ERR_INVALID_COOKIE, driver_.Disconnect(cookie));
  EXPECT_EQ(CL_ERR_INVALID_COOKIE, driver_.ReadRegister(serial_.get(), cookie, kWidthReg, buffer, 4, 500));
}

class Descriptions : public DriverTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(Descriptions, DownloadsTheBestManifestEntryAsText) {
  StartCamera(GetParam());
  const CLUINT32 cookie = Connect();
  CLUINT32 size = 0;
  ASSERT_EQ(CL_ERR_BUFFER_TOO_SMALL, driver_.GetXMLIDs(serial_.get(), cookie, nullptr, &size, 500));
  std::vector<CLINT8> ids(size);
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.GetXMLIDs(serial_.get(), cookie, ids.data(), &size, 500));
  const auto list = SplitTabs(ids.data());
  ASSERT_EQ(1u, list.size());
  EXPECT_EQ(0u, list[0].rfind("SchemaVersion.", 0)) << list[0];
  EXPECT_NE(std::string::npos, list[0].find("@KORVA#")) << list[0];

  size = 0;
  ASSERT_EQ(CL_ERR_BUFFER_TOO_SMALL,
            driver_.GetXMLDescription(serial_.get(), cookie, list[0].c_str(), nullptr, &size, 500));
  std::vector<CLINT8> xml(size);
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.GetXMLDescription(serial_.get(), cookie, list[0].c_str(),
                                                     xml.data(), &size, 500));
  EXPECT_EQ(profile_.descriptionText, std::string(xml.data()));
  // The SHA-1 a client keys its cache by is the manifest's.
  CLINT8 sha1[41] = {};
  size = sizeof sha1;
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.GetXMLSha1(serial_.get(), cookie, list[0].c_str(), sha1, &size, 500));
  const auto& file = sim_->device().descriptionFile();
  EXPECT_EQ(vq::gencp::toHex(vq::gencp::sha1(file.data(), file.size())), std::string(sha1));
  EXPECT_EQ(CL_ERR_NO_XMLDESCRIPTION_FOUND,
            driver_.GetXMLDescription(serial_.get(), cookie, "SchemaVersion.9.9@KORVA@XMLVersion.1.0.0",
                                      xml.data(), &size, 500));
}

INSTANTIATE_TEST_SUITE_P(ZippedAndPlain, Descriptions, ::testing::Values("korva-area", "korva-line"));

struct NameCase {
  const char* name;
  CLINT32 expected;
  uint32_t address;
};

class ParameterNames : public DriverTest, public ::testing::WithParamInterface<NameCase> {};

TEST_P(ParameterNames, TranslateThroughTheDownloadedDescription) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  CLUINT32 size = 0;
  ASSERT_EQ(CL_ERR_BUFFER_TOO_SMALL,
            driver_.GetXMLDescription(serial_.get(), cookie, nullptr, nullptr, &size, 500));
  uint32_t address = 0;
  const std::string name = GetParam().name;
  EXPECT_EQ(GetParam().expected,
            driver_.VxComPort(1, name.c_str(), static_cast<CLINT64>(name.size()), &address, 4, kAreaScanId));
  if (GetParam().expected == CL_ERR_NO_ERR) {
    EXPECT_EQ(GetParam().address, address);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, ParameterNames,
    ::testing::Values(NameCase{"Width", CL_ERR_NO_ERR, 0x40108},
                      NameCase{"WidthReg", CL_ERR_NO_ERR, 0x40108},
                      NameCase{"DeviceSerialPortBaudRate", CL_ERR_NO_ERR, 0x10004},
                      NameCase{"DeviceModelName", CL_ERR_NO_ERR, 0x44},
                      NameCase{"NoSuchFeature", CL_ERR_PARAM_DATA_VALUE, 0}));

TEST_F(DriverTest, ParameterNameEntryRefusesBadCalls) {
  uint32_t address = 0;
  EXPECT_EQ(CL_ERR_PARAM_NOT_SUPPORTED, driver_.VxComPort(2, "Width", 5, &address, 4, "KORVA"));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.VxComPort(1, nullptr, 5, &address, 4, "KORVA"));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.VxComPort(1, "Width", 5, nullptr, 4, "KORVA"));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.VxComPort(1, "Width", 5, &address, 4, nullptr));
  EXPECT_EQ(CL_ERR_BUFFER_TOO_SMALL, driver_.VxComPort(1, "Width", 5, &address, 2, "KORVA"));
  EXPECT_EQ(CL_ERR_PARAM_DATA_SIZE, driver_.VxComPort(1, "Width", -1, &address, 4, "KORVA"));
  EXPECT_EQ(CL_ERR_NO_XMLDESCRIPTION_FOUND,
            driver_.VxComPort(1, "Width", 5, &address, 4, "NOBODY#Nothing"));
}

}  // namespace
}  // namespace gencp_driver_test
