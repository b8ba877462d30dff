#include "Guard.h"

#include <cstring>
#include <mutex>

namespace vq::gencpdrv {

namespace {
std::mutex gLastErrorMutex;
std::string gLastError;
}  // namespace

void setGlobalLastError(const std::string& text) {
  std::lock_guard<std::mutex> lock(gLastErrorMutex);
  gLastError = text;
}

std::string globalLastError() {
  std::lock_guard<std::mutex> lock(gLastErrorMutex);
  return gLastError;
}

CLINT32 copyText(const std::string& text, CLINT8* buffer, CLUINT32* bufferSize) {
  if (bufferSize == nullptr) return CL_ERR_INVALID_PTR;
  if (text.size() >= 0xFFFFFFFFu) return CL_ERR_OUT_OF_MEMORY;
  const auto needed = static_cast<CLUINT32>(text.size() + 1);
  if (buffer == nullptr || *bufferSize < needed) {
    *bufferSize = needed;
    return CL_ERR_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text.c_str(), needed);
  *bufferSize = needed;
  return CL_ERR_NO_ERR;
}

}  // namespace vq::gencpdrv
