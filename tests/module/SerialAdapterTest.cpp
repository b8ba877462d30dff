// The serial adapter: what reaches the host as code-22 requests, how the host's
// answers come back, and the protocol driver's entry.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "camera/GenericCamera.h"
#include "camera/SerialAdapter.h"

namespace vq {
namespace {

// The host side: answers with `answer`, fills the record as told, records what came.
struct Host {
  std::int32_t answer = 1;
  std::int32_t status = 0;
  std::uint32_t countBack = 0;
  std::uint32_t largestPort = 3;
  std::uint32_t textValid = 1;
  std::string cameraText = "A2040M rev B";
  std::uint32_t lastRequest = 0;
  SerialRequestRecord lastRecord{};
};

std::int32_t Serve(std::uint32_t code, std::uint32_t detail, void* data, HostContext context) {
  auto& host = *reinterpret_cast<Host*>(context);
  EXPECT_EQ(code, HOST_SERIAL_REQUEST);
  host.lastRequest = detail;
  if (detail == SERIAL_SELECT_PORT) {
    *static_cast<std::uint32_t*>(data) = host.largestPort;
    return host.answer;
  }
  auto& record = *static_cast<SerialRequestRecord*>(data);
  host.lastRecord = record;
  if (detail == SERIAL_QUERY_PORT_INFO) {
    auto& block = *static_cast<PortInformationBlock*>(record.data);
    std::strcpy(block.cameraText, host.cameraText.c_str());
    block.cameraTextValid = host.textValid;
  }
  record.status = host.status;
  record.value = host.countBack;
  return host.answer;
}

class SerialAdapterTest : public ::testing::Test {
 protected:
  void Connect() {
    camera_.hostCallback = &Serve;
    camera_.hostContext = reinterpret_cast<HostContext>(&host_);
  }
  Host host_;
  GenericCamera camera_{ParameterRecordList()};
  SerialAdapter adapter_{camera_};
};

TEST_F(SerialAdapterTest, RefusedOrMissingCallbackIsMinus10007AndLeavesTheCount) {
  char buffer[8];
  CLUINT32 mask = 0;
  for (bool withCallback : {false, true}) {
    if (withCallback) {
      Connect();
      host_.answer = 0;
    }
    CLUINT32 count = 5;
    EXPECT_EQ(adapter_.clSerialRead(buffer, &count, 100), kSerialRequestRefused);
    EXPECT_EQ(adapter_.clSerialWrite(buffer, &count, 100), kSerialRequestRefused);
    EXPECT_EQ(count, 5u);
    EXPECT_EQ(adapter_.clGetSupportedBaudRates(&mask), kSerialRequestRefused);
    EXPECT_EQ(adapter_.clSetBaudRate(16), kSerialRequestRefused);
    EXPECT_EQ(adapter_.IsPortAlive(), 0);
  }
}

TEST_F(SerialAdapterTest, TransfersCarryTheRecordAndReturnTheHostsStatus) {
  Connect();
  ASSERT_EQ(adapter_.SelectPort(2), 1);
  char buffer[16];
  struct Case {
    std::uint32_t request;
    std::int32_t status;
  };
  for (const Case c : {Case{SERIAL_READ, -10004}, Case{SERIAL_WRITE, 0}}) {
    host_.status = c.status;
    host_.countBack = 3;
    CLUINT32 count = 16;
    const CLINT32 result = c.request == SERIAL_READ ? adapter_.clSerialRead(buffer, &count, 250)
                                                    : adapter_.clSerialWrite(buffer, &count, 250);
    EXPECT_EQ(result, c.status);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(host_.lastRequest, c.request);
    EXPECT_EQ(host_.lastRecord.portIndex, 2u);
    EXPECT_EQ(host_.lastRecord.timeout, 250u);
    EXPECT_EQ(host_.lastRecord.value, 16u);
    EXPECT_EQ(host_.lastRecord.data, buffer);
  }
  host_.status = 0;
  EXPECT_EQ(adapter_.clSetBaudRate(16), 0);
  EXPECT_EQ(host_.lastRequest, SERIAL_SET_BAUD_RATE);
  EXPECT_EQ(host_.lastRecord.value, 16u);
  CLUINT32 mask = 0;
  EXPECT_EQ(adapter_.clGetSupportedBaudRates(&mask), 0);
  EXPECT_EQ(host_.lastRequest, SERIAL_GET_BAUD_RATES);
  EXPECT_EQ(host_.lastRecord.data, &mask);
}

TEST_F(SerialAdapterTest, SelectPortAcceptsUpToTheHostsLargestIndex) {
  Connect();
  EXPECT_EQ(adapter_.SelectPort(3), 1);
  EXPECT_EQ(adapter_.PortIndex(), 3u);
  EXPECT_EQ(adapter_.SelectPort(4), 0);
  EXPECT_EQ(adapter_.PortIndex(), 3u);
  host_.answer = 0;
  EXPECT_EQ(adapter_.SelectPort(1), 0);
  EXPECT_EQ(adapter_.PortIndex(), 3u);
}

TEST_F(SerialAdapterTest, PortInformationNeedsExactlyOneAndTheValidFlag) {
  Connect();
  struct Case {
    std::int32_t answer;
    std::uint32_t valid;
    std::int32_t result;
    const char* text;
  };
  const Case cases[] = {
      {1, 1, 1, "A2040M rev B"}, {1, 0, 1, ""}, {1, 2, 1, ""}, {2, 1, 0, "untouched"},
      {0, 1, 0, "untouched"},
  };
  for (const Case& c : cases) {
    host_.answer = c.answer;
    host_.textValid = c.valid;
    std::uint32_t index = 99;
    std::string text = "untouched";
    EXPECT_EQ(adapter_.QueryPortInfo(5, index, text), c.result);
    EXPECT_EQ(text, c.text);
    EXPECT_EQ(host_.lastRecord.value, 5u);
    EXPECT_EQ(index, c.result == 1 ? 5u : 99u);
  }
}

TEST_F(SerialAdapterTest, DriverLibraryThatCannotServeLeavesTranslationFailing) {
  const std::string lib = std::string(VQ_BINARY_DIR) + "/lib/";
  struct Case {
    std::string path;
    std::int32_t result;
  };
  const Case cases[] = {
      {"", kLibraryNotLoaded},
      {lib + "no-such-driver.so", kLibraryNotLoaded},
      {std::string(VQ_SOURCE_DIR) + "/README.md", kLibraryNotLoaded},  // not a library
      {lib + "libGCBase.so", kFunctionNotFound},                       // no vxComPort
      {lib + "clprotocol/Linux64_x64/libCLProtocolGenCP.so", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(adapter_.LoadDriverLibrary(c.path.c_str()), c.result);
    std::uint32_t address = 77;
    // Without a description of this device even the real driver cannot translate.
    EXPECT_EQ(adapter_.TranslateParameterName("ExposureTime", address, "NOBODY#Nothing"), 0);
    EXPECT_EQ(address, 77u);
    adapter_.FreeDriverLibrary();
  }
}

TEST_F(SerialAdapterTest, ProbeFailureIsRequest22WithTheGivenPort) {
  Connect();
  host_.answer = 0;  // the answer is not used
  camera_.ReportProbeFailure(6);
  EXPECT_EQ(host_.lastRequest, SERIAL_REPORT_PROBE_FAILURE);
  EXPECT_EQ(host_.lastRecord.portIndex, 6u);
}

}  // namespace
}  // namespace vq
