// The GenCP driver, loaded at run time, against the in-process simulated camera where simulated
// time makes the case exact: templates, probing and start-up, error codes and texts,
// descriptions, parameter names, long writes continued, line noise, stopped probes, and the
// baud-rate change with its confirmation. (Fault runs over a pseudo-terminal are in the
// clprotocol suites.)
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
                      ProbeCase{"korva", CL_ERR_NO_DEVICE_FOUND},
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

TEST_F(DriverTest, RefusesBadArgumentsUnknownCookiesAndUnknownCodes) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  CLINT8 buffer[4];
  CLUINT32 size = sizeof buffer;
  EXPECT_EQ(CL_ERR_ERROR_NOT_FOUND, driver_.GetErrorText(-12345, buffer, &size, 0));
  EXPECT_EQ(CL_ERR_INVALID_PTR, driver_.GetErrorText(-30003, buffer, nullptr, 0));
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

// The zipped description of the area-scan camera, in packets (both examples are downloaded over
// a pseudo-terminal in the clprotocol suites).
TEST_F(DriverTest, DownloadsTheBestManifestEntryWithItsSha1) {
  StartCamera();
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
  EXPECT_GT(file.size(), 2 * vq::gencp::kMaxReadData);  // it came in several packets
  EXPECT_EQ(vq::gencp::toHex(vq::gencp::sha1(file.data(), file.size())), std::string(sha1));
  EXPECT_EQ(CL_ERR_NO_XMLDESCRIPTION_FOUND,
            driver_.GetXMLDescription(serial_.get(), cookie, "SchemaVersion.9.9@KORVA@XMLVersion.1.0.0",
                                      xml.data(), &size, 500));
}

// vxComPort function 1 through the downloaded description (the look-up itself has its own table
// in the clprotocol suites), and its refusal of bad calls.
TEST_F(DriverTest, ParameterNamesTranslateThroughTheDownloadedDescription) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  CLUINT32 size = 0;
  ASSERT_EQ(CL_ERR_BUFFER_TOO_SMALL,
            driver_.GetXMLDescription(serial_.get(), cookie, nullptr, nullptr, &size, 500));
  const struct {
    const char* name;
    CLINT32 expected;
    uint32_t address;
  } cases[] = {{"Width", CL_ERR_NO_ERR, 0x40108},
               {"DeviceSerialPortBaudRate", CL_ERR_NO_ERR, 0x10004},
               {"DeviceModelName", CL_ERR_NO_ERR, 0x44},
               {"NoSuchFeature", CL_ERR_PARAM_DATA_VALUE, 0}};
  for (const auto& c : cases) {
    uint32_t address = 0;
    EXPECT_EQ(c.expected, driver_.VxComPort(1, c.name, static_cast<CLINT64>(std::strlen(c.name)),
                                            &address, 4, kAreaScanId))
        << c.name;
    EXPECT_EQ(c.address, address) << c.name;
  }
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

TEST_F(DriverTest, LongWriteReturnsPendingAndCompletesWhenContinued) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().processingDelayMs = 3000;
  CLINT32 status = Write32(cookie, kWidthReg, 640, 500);
  EXPECT_EQ(CL_ERR_PENDING_WRITE, status);
  int continues = 0;
  while (status == CL_ERR_PENDING_WRITE && continues < 50) {
    status = driver_.ContinueWriteRegister(serial_.get(), cookie, 1, 500);
    ++continues;
  }
  EXPECT_EQ(CL_ERR_NO_ERR, status);
  EXPECT_GE(sim_->stats().pendingAcks, 1u);
  sim_->faults() = vq::sim::FaultPlan{};
  uint32_t value = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(640u, value);
}

TEST_F(DriverTest, RandomLineNoiseNeverHangsAndMostCallsSucceed) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().byteCorruptRate = 0.01;
  sim_->faults().byteDropRate = 0.01;
  sim_->faults().seed = 7;
  int ok = 0;
  for (int i = 0; i < 40; ++i) {
    uint32_t value = 0;
    const CLINT32 status = Read32(cookie, kWidthReg, value);
    if (status == CL_ERR_NO_ERR) {
      EXPECT_EQ(2048u, value);
      ++ok;
    } else {
      EXPECT_EQ(CL_ERR_TIMEOUT, status);
    }
  }
  EXPECT_GE(ok, 35);
  EXPECT_GT(sim_->stats().lostBytes, 0u);  // the noise was there
}

// A silent line, or a stop asked for through the parameter, ends a probe without a device.
TEST_F(DriverTest, ProbesEndWithoutADevice) {
  StartCamera();
  sim_->faults().silent = true;
  CLUINT32 cookie = 0;
  EXPECT_EQ(CL_ERR_NO_DEVICE_FOUND, Probe("KORVA", nullptr, &cookie, 200));
  EXPECT_EQ(0u, cookie);
  sim_->faults().silent = false;
  for (const CLUINT32 stop : {1u, 0u}) {
    ASSERT_EQ(CL_ERR_NO_ERR, driver_.SetParam(nullptr, CLP_STOP_PROBE_DEVICE, 0,
                                              reinterpret_cast<const CLINT8*>(&stop), 4, 0));
    EXPECT_EQ(stop ? CL_ERR_NO_DEVICE_FOUND : CL_ERR_NO_ERR, Probe("KORVA"));
  }
}

class BaudRates : public DriverTest {
 protected:
  CLUINT32 GetParam32(CLP_PARAMS param, CLUINT32 cookie) {
    CLUINT32 value = 0;
    EXPECT_EQ(CL_ERR_NO_ERR, driver_.GetParam(serial_.get(), param, cookie,
                                              reinterpret_cast<CLINT8*>(&value), 4, 500));
    return value;
  }
  CLINT32 SetBaud(CLUINT32 cookie, CLUINT32 value) {
    return driver_.SetParam(serial_.get(), CLP_DEVICE_BAUDERATE, cookie,
                            reinterpret_cast<const CLINT8*>(&value), 4, 500);
  }
};

// Only rates of both ends are offered and taken; a change is confirmed at the new rate, so the
// device never falls back; AUTOMAX takes the fastest common rate.
TEST_F(BaudRates, SwitchWithinTheCommonSetWithConfirmation) {
  StartCamera("korva-line");  // supports 9600, 19200, 57600, 115200
  serial_->supported = CL_BAUDRATE_9600 | CL_BAUDRATE_19200 | CL_BAUDRATE_57600 | CL_BAUDRATE_230400;
  const CLUINT32 cookie = Connect();
  EXPECT_EQ(CL_BAUDRATE_9600 | CL_BAUDRATE_19200 | CL_BAUDRATE_57600,
            GetParam32(CLP_DEVICE_SUPPORTED_BAUDERATES, cookie));
  EXPECT_EQ(CL_BAUDRATE_9600, GetParam32(CLP_DEVICE_BAUDERATE, cookie));
  EXPECT_EQ(CL_ERR_BAUD_RATE_NOT_SUPPORTED, SetBaud(cookie, CL_BAUDRATE_230400));
  EXPECT_EQ(CL_ERR_BAUD_RATE_NOT_SUPPORTED, SetBaud(cookie, CL_BAUDRATE_115200));
  EXPECT_EQ(CL_ERR_PARAM_DATA_VALUE, SetBaud(cookie, CL_BAUDRATE_9600 | CL_BAUDRATE_19200));
  EXPECT_EQ(CL_ERR_PARAM_READ_ONLY,
            driver_.SetParam(serial_.get(), CLP_DEVICE_SUPPORTED_BAUDERATES, cookie,
                             reinterpret_cast<const CLINT8*>(&cookie), 4, 500));
  CLUINT32 value = CL_BAUDRATE_19200;
  EXPECT_EQ(CL_ERR_PARAM_DATA_SIZE,
            driver_.SetParam(serial_.get(), CLP_DEVICE_BAUDERATE, cookie,
                             reinterpret_cast<const CLINT8*>(&value), 2, 500));
  EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());

  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_19200));
  EXPECT_EQ(CL_BAUDRATE_19200, sim_->device().baudRate());
  EXPECT_FALSE(sim_->device().awaitingBaudConfirmation());
  EXPECT_EQ(CL_BAUDRATE_19200, GetParam32(CLP_DEVICE_BAUDERATE, cookie));
  uint32_t width = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, 0x50000, width));
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_AUTOMAX));
  EXPECT_EQ(CL_BAUDRATE_57600, sim_->device().baudRate());
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_9600));
  EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());
  EXPECT_EQ(0u, sim_->device().baudFallbacks());
}

// Swallows the first write made after a switch away from 9600: the confirmation.
class LosesFirstConfirmation : public SimSerial {
 public:
  using SimSerial::SimSerial;
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override {
    if (baudRate != CL_BAUDRATE_9600 && !dropped_) armed_ = true;
    return SimSerial::clSetBaudRate(baudRate);
  }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 timeout) override {
    if (armed_) {
      armed_ = false;
      dropped_ = true;
      return CL_ERR_NO_ERR;  // "sent", but never arrives
    }
    return SimSerial::clSerialWrite(buffer, bufferSize, timeout);
  }

 private:
  bool armed_ = false;
  bool dropped_ = false;
};

TEST_F(BaudRates, LostConfirmationFallsBackAndRetries) {
  StartCamera();
  serial_ = std::make_unique<LosesFirstConfirmation>(*sim_);
  const CLUINT32 cookie = Connect();
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_38400));
  EXPECT_EQ(1u, sim_->device().baudFallbacks());
  EXPECT_EQ(CL_BAUDRATE_38400, sim_->device().baudRate());
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
}

}  // namespace
}  // namespace gencp_driver_test
