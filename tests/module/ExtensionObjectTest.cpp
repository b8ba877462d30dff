// The extension object from the inside: InitializeCamera points the library
// search at the GenICam runtime named by the environment, and the
// module-state switch around the entry points restores the caller's state.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "camera/GenICamRuntime.h"
#include "extension/ModuleState.h"
#include "extension/VQ_CameraExt.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq {
namespace {

TEST(RuntimeLocation, InitializeCameraAppendsTheRuntimeSubdirectoryToTheRoot) {
  const std::optional<std::string> saved = platform::GetEnv(kGenICamRootVariable);
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
    if (row.root) {
      platform::SetEnv(kGenICamRootVariable, *row.root);
    } else {
      platform::UnsetEnv(kGenICamRootVariable);
    }
    platform::SetLibraryDirectory("/previous");
    VQ_CameraExt extension;
    EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList()), 1);
    EXPECT_EQ(platform::GetLibraryDirectory(), row.directory);
  }
  if (saved) {
    platform::SetEnv(kGenICamRootVariable, *saved);
  } else {
    platform::UnsetEnv(kGenICamRootVariable);
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

}  // namespace
}  // namespace vq
