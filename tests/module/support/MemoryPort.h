// A GenApi port over memory: a zero-filled register image that tests fill and
// inspect, and that counts the reads that reach it.
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <cstring>
#include <map>

namespace vq::test {

class MemoryPort : public GenApi::IPort {
 public:
  GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

  void Read(void* buffer, int64_t address, int64_t length) override {
    ++reads_;
    auto* bytes = static_cast<uint8_t*>(buffer);
    for (int64_t i = 0; i < length; ++i) {
      auto found = image_.find(address + i);
      bytes[i] = found == image_.end() ? 0 : found->second;
    }
  }

  void Write(const void* buffer, int64_t address, int64_t length) override {
    ++writes_;
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    for (int64_t i = 0; i < length; ++i) image_[address + i] = bytes[i];
  }

  // Stores value little-endian in length bytes at address.
  void SetLittleEndian(int64_t address, uint64_t value, int length) {
    for (int i = 0; i < length; ++i) image_[address + i] = uint8_t(value >> (8 * i));
  }
  uint64_t GetLittleEndian(int64_t address, int length) const {
    uint64_t value = 0;
    for (int i = length - 1; i >= 0; --i) {
      auto found = image_.find(address + i);
      value = (value << 8) | (found == image_.end() ? 0 : found->second);
    }
    return value;
  }
  void SetBytes(int64_t address, const void* data, int64_t length) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    for (int64_t i = 0; i < length; ++i) image_[address + i] = bytes[i];
  }

  int reads() const { return reads_; }
  int writes() const { return writes_; }

 private:
  std::map<int64_t, uint8_t> image_;
  int reads_ = 0;
  int writes_ = 0;
};

}  // namespace vq::test
