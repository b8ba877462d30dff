// The host's category queries over the camera's category table.
#include <cstring>

#include "extension/VQ_CameraExt.h"
#include "features/BoundedText.h"

namespace vq {

std::uint32_t VQ_CameraExt::GetCategoryCount() {
  return camera_ ? camera_->GetCategoryCount() : 0;
}

std::int32_t VQ_CameraExt::GetCategoryName(std::uint32_t categoryIndex, char* nameBuffer,
                                           std::int32_t nameSize, void* secondBuffer,
                                           std::int32_t secondSize, std::uint32_t* outValue) {
  if (outValue != nullptr) *outValue = 0;
  const char* name = camera_ ? camera_->GetCategoryName(categoryIndex) : nullptr;
  if (name == nullptr || name[0] == '\0') return 0;
  // A name as long as the buffer is accepted and comes back one character
  // short. Sizes below 1 are refused, since the buffer's last byte is written.
  if (nameSize <= 0 || std::strlen(name) > static_cast<std::size_t>(nameSize)) return 0;
  if (nameBuffer == nullptr) return 0;
  CopyText(nameBuffer, static_cast<std::size_t>(nameSize), name);
  nameBuffer[nameSize - 1] = '\0';
  if (secondBuffer != nullptr && secondSize > 0) {
    std::memset(secondBuffer, 0, static_cast<std::size_t>(secondSize));
  }
  return 1;
}

}  // namespace vq
