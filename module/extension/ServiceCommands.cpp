#include "extension/ServiceCommands.h"

#include <cstring>
#include <vector>

#include "camera/GenericCamera.h"
#include "features/FeatureInfoRecord.h"
#include "features/RawBytes.h"
#include "vq/VQ_Ext.h"

namespace vq {

namespace {

constexpr std::uint32_t kParameterTextsQuerySize = sizeof(ParameterTextsQuery);

std::int32_t QueryParameterTexts(GenericCamera& camera, void* data, std::uint32_t size) {
  if (size < kParameterTextsQuerySize) return 0;
  const auto query = LoadRaw<ParameterTextsQuery>(data);
  if (query.texts == nullptr) return 0;
  return camera.AppendParameterTexts(query.parameterIndex, *query.texts);
}

// The level name arrives in a 516-byte block that need not hold a NUL.
std::int32_t SetVisibilityLevel(GenericCamera& camera, const void* data, std::uint32_t size) {
  if (size != VISIBILITY_LEVEL_DATA_SIZE) return 0;
  char name[VISIBILITY_LEVEL_DATA_SIZE + 1] = {};
  std::memcpy(name, data, VISIBILITY_LEVEL_DATA_SIZE);
  return camera.SetVisibilityLevel(name);
}

}  // namespace

bool IsQueryServiceCommand(std::uint32_t id) {
  switch (id) {
    case CMD_MAX_BAUD_RATE:
    case CMD_CURRENT_BAUD_RATE:
    case CMD_VISIBILITY_LEVEL:
    case CMD_PARAMETER_TEXTS:
    case CMD_MODEL_NAME:
    case CMD_CAN_SAVE_CONFIGURATION:
    case CMD_HELP_FILE_NAME:
    case CMD_IS_PARAMETER_VISIBLE:
      return true;
    default:
      return false;
  }
}

bool IsExecuteServiceCommand(std::uint32_t id) {
  return id == CMD_REFRESH_PARAMETER || id == CMD_SET_BAUD_RATE || id == CMD_VISIBILITY_LEVEL ||
         id == CMD_SAVE_CONFIGURATION;
}

// Rows that read or write the host's buffer refuse a null one; before
// InitializeCamera there is no camera and every row answers 0.

std::int32_t QueryServiceCommand(GenericCamera* camera, std::uint32_t id, void* data,
                                 std::uint32_t size) {
  if (camera == nullptr) return 0;
  if (id == CMD_CAN_SAVE_CONFIGURATION) return camera->HasSaveConfiguration();
  if (data == nullptr) return 0;
  switch (id) {
    case CMD_MAX_BAUD_RATE:
      StoreRaw(data, camera->GetMaxCommonBaudRate());
      return 1;
    case CMD_CURRENT_BAUD_RATE:
      StoreRaw(data, camera->GetCurrentBaudRate());
      return 1;
    case CMD_VISIBILITY_LEVEL:
      if (size < VISIBILITY_LEVEL_DATA_SIZE) return 0;
      return camera->GetVisibilityLevelName(static_cast<char*>(data), kFeatureTextSize);
    case CMD_PARAMETER_TEXTS:
      return QueryParameterTexts(*camera, data, size);
    case CMD_MODEL_NAME:
      camera->GetDeviceModelName(static_cast<char*>(data), size);
      return 1;
    case CMD_HELP_FILE_NAME:
      return camera->GetHelpFileName(static_cast<char*>(data), size);
    case CMD_IS_PARAMETER_VISIBLE:
      return camera->IsCameraParameterVisible(static_cast<const char*>(data));
    default:
      return 0;
  }
}

std::int32_t ExecuteServiceCommand(GenericCamera* camera, std::uint32_t id, void* data,
                                   std::uint32_t size) {
  if (camera == nullptr) return 0;
  if (id == CMD_SAVE_CONFIGURATION) return camera->SaveConfiguration();
  if (data == nullptr) return 0;
  switch (id) {
    case CMD_REFRESH_PARAMETER:
      return camera->RefreshCameraParameter(static_cast<const char*>(data));
    case CMD_SET_BAUD_RATE:
      return camera->SetBaudRate(LoadRaw<std::uint32_t>(data));
    case CMD_VISIBILITY_LEVEL:
      return SetVisibilityLevel(*camera, data, size);
    default:
      return 0;
  }
}

}  // namespace vq
