// The extension object and the serial adapter from the inside: InitializeCamera
// points the library search at the GenICam runtime named by the environment;
// the module-state switch around the entry points restores the caller's
// state; the adapter with a host that refuses or is missing, port selection
// and information by the host's answers, and the protocol driver's library.
// (Transfers through a real host: the open tests.)
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "camera/GenICamRuntime.h"
#include "camera/GenericCamera.h"
#include "camera/SerialAdapter.h"
#include "extension/ModuleState.h"
#include "extension/VQ_CameraExt.h"
#include "support/PtyScreen.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq {
namespace {

TEST(RuntimeLocation, InitializeCameraAppendsTheRuntimeSubdirectoryToTheRoot) {
  const struct {
    std::optional<std::string> root;  // none: unset
    std::string directory;            // "/previous": nothing handed over
  } rows[] = {{"/opt/genicam", "/opt/genicam/bin/Win64_x64"},
              {"/opt/genicam/", "/opt/genicam//bin/Win64_x64"},
              {"C:\\GenICam\\", "C:\\GenICam\\/bin/Win64_x64"},
              {std::string(259, 'r'), std::string(259, 'r') + "/bin/Win64_x64"},
              {std::string(260, 'r'), "/previous"},  // too long for the buffer
              {"", "/previous"},
              {std::nullopt, "/previous"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.root.value_or("unset").substr(0, 20));
    test::ScopedEnv root(kGenICamRootVariable, row.root);
    platform::SetLibraryDirectory("/previous");
    VQ_CameraExt extension;
    EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList()), 1);
    EXPECT_EQ(platform::GetLibraryDirectory(), row.directory);
  }
  platform::SetLibraryDirectory("");
}

TEST(ModuleState, GuardMakesThisModulesResourcesCurrentAndRestoresTheCallers) {
  EXPECT_EQ(CurrentModuleResources(), nullptr);
  EXPECT_EQ(LoadModuleString(IDS_BUTTON_CLICKED), "");
  {
    ModuleStateGuard outer;
    EXPECT_EQ(LoadModuleString(IDS_BUTTON_CLICKED), "%s button was clicked.");
    { ModuleStateGuard nested; }
    EXPECT_EQ(CurrentModuleResources(), &ThisModuleResources());
  }
  EXPECT_EQ(CurrentModuleResources(), nullptr);
  EXPECT_THROW(
      {
        ModuleStateGuard guard;
        throw std::runtime_error("leaves the operation");
      },
      std::runtime_error);
  EXPECT_EQ(CurrentModuleResources(), nullptr);
  // The switching entry points leave the caller's state as it was.
  VQ_CameraExt extension;
  extension.InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList());
  extension.PressParameterButton(nullptr, 0);
  extension.ExecuteCommand(8, nullptr, 0);
  extension.SetParameterValue(0, "1");
  extension.ReservedOperation20(nullptr);
  EXPECT_EQ(CurrentModuleResources(), nullptr);
}

// The host side: answers with `answer`, fills the port information, keeps the last record.
struct Host {
  std::int32_t answer = 1;
  std::uint32_t largestPort = 3;
  std::uint32_t textValid = 1;
  std::string cameraText = "A2040M rev B";
  SerialRequestRecord lastRecord{};
};

std::int32_t Serve(std::uint32_t code, std::uint32_t detail, void* data, HostContext context) {
  auto& host = *reinterpret_cast<Host*>(context);
  EXPECT_EQ(code, HOST_SERIAL_REQUEST);
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

// (The outcomes of every host answer to the port information: the open tests.)
TEST_F(SerialAdapterTest, PortSelectionAndInformationFollowTheHostsAnswers) {
  Connect();
  EXPECT_EQ(adapter_.SelectPort(3), 1);
  EXPECT_EQ(adapter_.SelectPort(4), 0);  // beyond the host's largest index
  EXPECT_EQ(adapter_.PortIndex(), 3u);
  std::uint32_t index = 99;
  std::string text;
  EXPECT_EQ(adapter_.QueryPortInfo(5, index, text), 1);
  EXPECT_EQ(host_.lastRecord.value, 5u);  // the port asked about
  EXPECT_EQ(index, 5u);
  EXPECT_EQ(text, "A2040M rev B");
  host_.answer = 0;
  EXPECT_EQ(adapter_.SelectPort(1), 0);
  EXPECT_EQ(adapter_.PortIndex(), 3u);
  index = 99;
  EXPECT_EQ(adapter_.QueryPortInfo(5, index, text), 0);
  EXPECT_EQ(index, 99u);
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
      {lib + "clprotocol/Linux64_x64/libCLProtocolGenCP.so", 0}};
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

}  // namespace
}  // namespace vq
