// The host's parameter operations: count, attributes, value write and button press.
#include "extension/VQ_CameraExt.h"

#include "extension/ModuleState.h"

namespace vq {

std::uint32_t VQ_CameraExt::GetParameterCount() {
  // Parameter operations come with the parameter-operations work; returns 0 until then.
  return 0;
}

std::int32_t VQ_CameraExt::GetParameterAttribute(std::uint32_t, std::uint32_t, void*,
                                                 std::int32_t) {
  // Parameter operations come with the parameter-operations work; returns 0 until then.
  return 0;
}

std::int32_t VQ_CameraExt::PressParameterButton(void*, std::uint32_t) {
  ModuleStateGuard moduleState;
  // Parameter operations come with the parameter-operations work; returns 0 until then.
  return 0;
}

std::int32_t VQ_CameraExt::SetParameterValue(std::uint32_t, const char*) {
  ModuleStateGuard moduleState;
  // Parameter operations come with the parameter-operations work; returns 0 until then.
  return 0;
}

}  // namespace vq
