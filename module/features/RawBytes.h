// Values in caller buffers of the host interface: copied byte for byte, so a
// buffer needs no particular alignment.
#pragma once

#include <cstring>

namespace vq {

template <typename T>
void StoreRaw(void* buffer, const T& value) {
  std::memcpy(buffer, &value, sizeof value);
}

template <typename T>
T LoadRaw(const void* buffer) {
  T value;
  std::memcpy(&value, buffer, sizeof value);
  return value;
}

}  // namespace vq
