// A GenApi port over memory: a zero-filled register image that tests fill and
// inspect.
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <map>

namespace vq::test {

class MemoryPort : public GenApi::IPort {
 public:
  GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

  void Read(void* buffer, int64_t address, int64_t length) override {
    auto* bytes = static_cast<uint8_t*>(buffer);
    for (int64_t i = 0; i < length; ++i) {
      auto found = image_.find(address + i);
      bytes[i] = found == image_.end() ? 0 : found->second;
    }
  }

  void Write(const void* buffer, int64_t address, int64_t length) override {
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    for (int64_t i = 0; i < length; ++i) image_[address + i] = bytes[i];
  }

  // Stores value big-endian in length bytes at address.
  void Store(int64_t address, uint64_t value, int length) {
    for (int i = 0; i < length; ++i) image_[address + i] = uint8_t(value >> (8 * (length - 1 - i)));
  }
  uint64_t Load(int64_t address, int length) {
    uint64_t value = 0;
    for (int i = 0; i < length; ++i) value = value << 8 | image_[address + i];
    return value;
  }

 private:
  std::map<int64_t, uint8_t> image_;
};

}  // namespace vq::test
