// A GenApi port over memory (a zero-filled register image that tests fill and
// inspect), and a description loaded into a node-map reference connected to
// one, the way the camera object does it.
#pragma once

#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "camera/GenICamRuntime.h"
#include "features/GenericFeature.h"
#include "support/DescriptionText.h"

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

struct LoadedNodeMap {
  std::unique_ptr<MemoryPort> port;
  std::unique_ptr<GenApi::CNodeMapRef> reference = CreateNodeMapReference();
  explicit LoadedNodeMap(const std::string& xmlText,
                         std::unique_ptr<MemoryPort> memory = std::make_unique<MemoryPort>())
      : port(std::move(memory)) {
    LoadNodeMapFromText(*reference, GenICam::gcstring(xmlText.c_str()));
    EXPECT_TRUE(ConnectNodeMap(*reference, port.get()));
  }
  GenApi::INode* Node(const char* name) const { return reference->_GetNode(name); }
  // A handle on the named node; the test fails when there is none.
  GenericFeature Feature(const char* name) const {
    GenApi::INode* node = Node(name);
    EXPECT_NE(node, nullptr) << name;
    return GenericFeature(node);
  }
};

}  // namespace vq::test
