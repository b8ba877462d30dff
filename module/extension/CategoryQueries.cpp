// The host's category queries over the camera's category table.
#include "extension/VQ_CameraExt.h"

#include "extension/ModuleState.h"

namespace vq {

std::uint32_t VQ_CameraExt::GetCategoryCount() {
  // Category queries come with the category-queries work; returns 0 until then.
  return 0;
}

std::int32_t VQ_CameraExt::GetCategoryName(std::uint32_t, char*, std::int32_t, void*, std::int32_t,
                                           std::uint32_t*) {
  // Category queries come with the category-queries work; returns 0 until then.
  return 0;
}

}  // namespace vq
