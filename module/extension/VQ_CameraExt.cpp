#include "extension/VQ_CameraExt.h"

#include <new>

#include "camera/GenICamRuntime.h"
#include "extension/ModuleState.h"
#include "features/BoundedText.h"

namespace vq {

VQ_CameraExt::~VQ_CameraExt() {
  camera_.reset();  // the camera's teardown closes the connection
  ParameterRecordList().swap(parameterRecords_);
}

// Parameter records travel by value: each operation owns its list argument and
// releases it on return, whatever path it takes.

namespace {

void Release(ParameterRecordList& records) { ParameterRecordList().swap(records); }

}  // namespace

std::int32_t VQ_CameraExt::Initialize(void*, void*, ParameterRecordList records) {
  Release(records);
  return 0;  // this form of initialisation is not supported
}

std::int32_t VQ_CameraExt::InitializeCamera(void*, void*, void*, ParameterRecordList records) {
  if (camera_) {
    Release(records);
    return 1;
  }
  ModuleStateGuard moduleState;
  parameterRecords_ = records;
  LocateGenICamRuntime();
  camera_.reset(new (std::nothrow) GenericCamera(parameterRecords_));
  if (camera_) {
    camera_->hostCallback = hostCallback_;
    camera_->hostContext = hostContext_;
  }
  Release(records);
  return 1;
}

std::int32_t VQ_CameraExt::ReservedOperation4(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation5(void*) { return 1; }

std::int32_t VQ_CameraExt::GetExtensionName(char* buffer, std::int32_t size, std::uint32_t* value1,
                                            std::uint32_t* value2, std::uint32_t* value3) {
  CopyText(buffer, static_cast<std::uint32_t>(size), kExtensionName);
  if (buffer != nullptr && size > 0) buffer[size - 1] = '\0';
  if (value1 != nullptr) *value1 = 0;
  if (value2 != nullptr) *value2 = 0;
  if (value3 != nullptr) *value3 = 3;
  return 1;
}

std::int32_t VQ_CameraExt::ReservedOperation9(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation10(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation11(void*) { return 0; }

std::int32_t VQ_CameraExt::SetHostCallback(HostCallback callback, HostContext context) {
  hostCallback_ = callback;
  hostContext_ = context;
  return 1;
}

std::int32_t VQ_CameraExt::ReservedOperation14(void*) { return 0; }

std::int32_t VQ_CameraExt::ReservedOperation20(void*) {
  ModuleStateGuard moduleState;
  return 0;
}

std::int32_t VQ_CameraExt::ReservedOperation21(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation22(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation23(void*) { return 1; }
std::int32_t VQ_CameraExt::ReservedOperation24(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation25(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation26(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation27(void*) { return 0; }
std::int32_t VQ_CameraExt::ReservedOperation28(void*) { return 0; }

}  // namespace vq
