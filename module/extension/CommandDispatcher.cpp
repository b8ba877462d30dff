// The host's camera-level commands: QueryCommand asks for a value,
// ExecuteCommand performs an action. Identifiers with fixed answers are handled
// here, the camera's services in ServiceCommands, opening and closing the
// camera below. Opening is the one place at the host boundary where GenICam
// exceptions are caught and reported.
#include <cstring>

#include "camera/GenericCamera.h"
#include "extension/ModuleState.h"
#include "extension/ServiceCommands.h"
#include "extension/VQ_CameraExt.h"
#include "features/BoundedText.h"

namespace vq {

namespace {

constexpr std::uint32_t kWordSize = 4;

void StoreZero(void* data) {
  const std::uint32_t zero = 0;
  std::memcpy(data, &zero, sizeof zero);
}

// Reports an exception that escaped Open as "<description> (File: <file> , Line <n>)".
void ReportOpenFailure(GenericCamera& camera, const GenICam::GenericException& failure) {
  char text[kMessageBufferSize];
  FormatText(text, sizeof text, "%s (File: %s , Line %d)", failure.GetDescription(),
             failure.GetSourceFileName(), static_cast<int>(failure.GetSourceLine()));
  camera.ReportMessage(MESSAGE_FAILURE, text);
}

}  // namespace

std::int32_t VQ_CameraExt::QueryCommand(std::uint32_t id, void* data, std::uint32_t size) {
  if (id == 0) return 0;
  if (IsQueryServiceCommand(id)) return QueryServiceCommand(camera_.get(), id, data, size);
  if (data == nullptr) return 0;  // every other row writes into the host's buffer
  if (id == 1 || id == 6 || id == 7) {
    if (size < kWordSize) return 0;
    StoreZero(data);
    return 1;
  }
  // Unlisted identifiers: 0 at the start of the buffer. The host passes a
  // word-sized buffer for every query, so the size is not consulted.
  StoreZero(data);
  return 0;
}

std::int32_t VQ_CameraExt::ExecuteCommand(std::uint32_t id, void* data, std::uint32_t size) {
  ModuleStateGuard moduleState;
  if (id == CMD_OPEN_CAMERA) return OpenOrCloseCamera(static_cast<CommandRecord*>(data));
  if (id == 27) return 0;
  if (IsExecuteServiceCommand(id)) return ExecuteServiceCommand(camera_.get(), id, data, size);
  // 8, 12, 13 and every identifier without a row: accepted, nothing to do.
  return 1;
}

std::int32_t VQ_CameraExt::OpenOrCloseCamera(CommandRecord* record) {
  // Before InitializeCamera there is no camera to open or close.
  if (record == nullptr || !camera_) return 0;
  if (record->openRequest < 0) {
    camera_->Close();
    return 1;
  }
  try {
    ModuleStateGuard openState;
    const std::uint32_t status =
        camera_->Open(record->portIndex, record->parentWindow, record->alwaysShowSelector,
                      record->showSelectorWhenNoMatch);
    record->openStatus = status;
    return status == OPEN_CONNECTED || status == OPEN_NOTHING_TO_LOAD ? 1 : 0;
  } catch (const GenICam::GenericException& failure) {
    ReportOpenFailure(*camera_, failure);
    camera_->Close();
    record->openStatus = OPEN_FAILED;
    return 0;
  }
}

}  // namespace vq
