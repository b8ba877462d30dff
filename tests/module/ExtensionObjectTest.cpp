// The extension object from the inside: what it stores, when it creates its
// camera, and the module-state switch around its entry points.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "extension/ModuleState.h"
#include "extension/VQCameraExtApp.h"
#include "extension/VQ_CameraExt.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq {
namespace {

std::int32_t FirstHost(std::uint32_t, std::uint32_t, void*, HostContext) { return 1; }
std::int32_t SecondHost(std::uint32_t, std::uint32_t, void*, HostContext) { return 2; }

ParameterRecordList Records(std::initializer_list<unsigned char> fills) {
  ParameterRecordList records;
  for (unsigned char fill : fills) {
    ParameterRecord record;
    for (std::size_t i = 0; i < sizeof(record.bytes); ++i) record.bytes[i] = fill + i % 7;
    records.push_back(record);
  }
  return records;
}

TEST(ExtensionObject, StartsWithoutCallbackCameraOrRecords) {
  VQ_CameraExt extension;
  EXPECT_EQ(extension.StoredHostCallback(), nullptr);
  EXPECT_EQ(extension.StoredHostContext(), 0u);
  EXPECT_EQ(extension.Camera(), nullptr);
  EXPECT_TRUE(extension.ParameterRecords().empty());
}

TEST(ExtensionObject, InitializeLeavesTheObjectUnchanged) {
  VQ_CameraExt extension;
  EXPECT_EQ(extension.Initialize(nullptr, nullptr, Records({1, 2})), 0);
  EXPECT_EQ(extension.Camera(), nullptr);
  EXPECT_TRUE(extension.ParameterRecords().empty());
}

TEST(ExtensionObject, CameraTakesTheCallbackRegisteredBeforeIt) {
  VQ_CameraExt extension;
  EXPECT_EQ(extension.SetHostCallback(&FirstHost, 77), 1);
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, Records({})), 1);
  ASSERT_NE(extension.Camera(), nullptr);
  EXPECT_EQ(extension.Camera()->hostCallback, &FirstHost);
  EXPECT_EQ(extension.Camera()->hostContext, 77u);
  EXPECT_TRUE(extension.ParameterRecords().empty());  // an empty list is stored as such

  // A later registration changes the object's fields, not the camera's copy.
  EXPECT_EQ(extension.SetHostCallback(&SecondHost, 88), 1);
  EXPECT_EQ(extension.StoredHostCallback(), &SecondHost);
  EXPECT_EQ(extension.StoredHostContext(), 88u);
  EXPECT_EQ(extension.Camera()->hostCallback, &FirstHost);
  EXPECT_EQ(extension.Camera()->hostContext, 77u);
}

TEST(ExtensionObject, RecordsAreStoredByteIdenticalInOrder) {
  VQ_CameraExt extension;
  const ParameterRecordList records = Records({0x00, 0x80, 0xFE});
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, records), 1);
  ASSERT_EQ(extension.ParameterRecords().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(std::memcmp(extension.ParameterRecords()[i].bytes, records[i].bytes, 776), 0) << i;
  }
}

TEST(ExtensionObject, SecondInitializeCameraKeepsTheFirstCameraAndList) {
  VQ_CameraExt extension;
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, Records({5})), 1);
  GenericCamera* first = extension.Camera();
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, Records({6, 7})), 1);
  EXPECT_EQ(extension.Camera(), first);
  ASSERT_EQ(extension.ParameterRecords().size(), 1u);
  EXPECT_EQ(extension.ParameterRecords()[0].bytes[0], 5);
}

TEST(ExtensionObject, InitializeCameraPointsTheLibrarySearchAtTheRuntime) {
  platform::SetEnv("GENICAM_ROOT_V2_3", "/opt/genicam");
  platform::SetLibraryDirectory("");
  VQ_CameraExt extension;
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, Records({})), 1);
  EXPECT_EQ(platform::GetLibraryDirectory(), "/opt/genicam/bin/Win64_x64");
  platform::UnsetEnv("GENICAM_ROOT_V2_3");
  platform::SetLibraryDirectory("");
}

TEST(ModuleState, ApplicationObjectIsRunningOnceLoaded) {
  EXPECT_TRUE(TheModuleApplication().IsRunning());
  EXPECT_EQ(&TheModuleApplication().Resources(), &ThisModuleResources());
}

TEST(ModuleState, GuardMakesThisModulesResourcesCurrentAndRestoresTheCallers) {
  EXPECT_EQ(CurrentModuleResources(), nullptr);
  EXPECT_EQ(LoadModuleString(IDS_BUTTON_CLICKED), "");
  {
    ModuleStateGuard outer;
    EXPECT_EQ(CurrentModuleResources(), &ThisModuleResources());
    EXPECT_EQ(LoadModuleString(IDS_BUTTON_CLICKED), "%s button was clicked.");
    ASSERT_NE(CurrentModuleResources()->FindDialog(IDD_CAMERA_XML_SELECTOR), nullptr);
    EXPECT_STREQ(CurrentModuleResources()->FindDialog(IDD_CAMERA_XML_SELECTOR)->caption,
                 "Camera XML Selector");
    {
      ModuleStateGuard nested;
      EXPECT_EQ(CurrentModuleResources(), &ThisModuleResources());
    }
    EXPECT_EQ(CurrentModuleResources(), &ThisModuleResources());
  }
  EXPECT_EQ(CurrentModuleResources(), nullptr);
  EXPECT_EQ(LoadModuleString(9999), "");
}

TEST(ModuleState, GuardRestoresTheCallersStateWhenAnExceptionLeaves) {
  EXPECT_THROW(
      {
        ModuleStateGuard guard;
        throw std::runtime_error("leaves the operation");
      },
      std::runtime_error);
  EXPECT_EQ(CurrentModuleResources(), nullptr);
}

TEST(ModuleState, SwitchingOperationsLeaveTheCallersStateAsItWas) {
  VQ_CameraExt extension;
  extension.InitializeCamera(nullptr, nullptr, nullptr, Records({}));
  extension.PressParameterButton(nullptr, 0);
  extension.ExecuteCommand(8, nullptr, 0);
  extension.SetParameterValue(0, "1");
  extension.ReservedOperation20(nullptr);
  EXPECT_EQ(CurrentModuleResources(), nullptr);
}

}  // namespace
}  // namespace vq
