// A camera opened through the test host, with the host-side helpers the
// parameter tests share: attributes by code, parameters by display name, the
// visibility level through command 48.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/TestHost.h"
#include "vq/platform/environment.h"

namespace vq::test {

// The simulated KORVA identity the GenCP driver's template list knows.
constexpr const char* kKorvaModel = "A2040M";

// A text query's answer in a buffer of `size` bytes pre-filled with '#'; "#"
// when refused.
inline std::string QueryText(VQ_Ext& ext, std::uint32_t id, std::uint32_t size) {
  std::vector<char> buffer(size + 1, '#');
  buffer[size] = '\0';
  return ext.QueryCommand(id, buffer.data(), size) ? std::string(buffer.data()) : "#";
}

inline std::uint32_t QueryWord(VQ_Ext& ext, std::uint32_t id) {
  std::uint32_t word = 0xEEEEEEEE;
  EXPECT_EQ(ext.QueryCommand(id, &word, sizeof word), 1) << id;
  return word;
}

inline std::vector<std::string> CategoryNames(VQ_Ext& ext) {
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < ext.GetCategoryCount(); ++i) {
    char name[512] = {};
    std::uint32_t value = 7;
    if (ext.GetCategoryName(i, name, sizeof name, nullptr, 0, &value)) names.push_back(name);
  }
  return names;
}

// The levels of the messages the host was sent, in order.
inline std::vector<std::uint32_t> MessageLevels(const TestHost& host) {
  std::vector<std::uint32_t> levels;
  for (const HostMessage& message : host.messages) levels.push_back(message.level);
  return levels;
}

class HostCamera {
  // Declared first: the camera outlives the host that talks to it.
  SimulatedLink camera_;

 public:
  explicit HostCamera(const sim::Profile& profile) : camera_(profile) {
    platform::SetEnv("VQ_DIALOG", "none");
    host.cameraText = kKorvaModel;
    host.Attach(0, &camera_);
  }

  // Opens through command 25; true when the camera opened.
  bool Open() {
    std::uint32_t status = 9;
    return host.Open(0, 0, 0, &status) == 1 && status == 0;
  }

  VQ_Ext& Ext() { return host.Extension(); }
  SimulatedLink& Link() { return camera_; }
  sim::Simulator& Simulator() { return camera_.simulator(); }

  std::int32_t SetLevel(const char* name) {
    char data[VISIBILITY_LEVEL_DATA_SIZE] = {};
    std::strncpy(data, name, sizeof data - 1);
    return Ext().ExecuteCommand(CMD_VISIBILITY_LEVEL, data, sizeof data);
  }

  // Text attributes (0, 2) with a 512-byte buffer; "#" when refused.
  std::string Text(std::uint32_t index, std::uint32_t code) {
    char text[512] = "#";
    if (!Ext().GetParameterAttribute(index, code, text, sizeof text)) return "#";
    return text;
  }
  template <typename T>
  T Word(std::uint32_t index, std::uint32_t code) {
    T value{};
    EXPECT_EQ(Ext().GetParameterAttribute(index, code, &value, sizeof value), 1)
        << index << " code " << code;
    return value;
  }

  // The parameter with this display name at the current level; fails the test
  // when there is none.
  std::uint32_t Index(const std::string& displayName) {
    for (std::uint32_t i = 0; i < Ext().GetParameterCount(); ++i) {
      if (Text(i, PARAM_DISPLAY_NAME) == displayName) return i;
    }
    ADD_FAILURE() << "no parameter " << displayName;
    return 0xFFFFFFFFu;
  }

  // Register bytes of the simulated camera, big-endian.
  std::uint64_t Register(std::uint64_t address, int length) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(Simulator().device().registers().peek(address, length, bytes));
    std::uint64_t value = 0;
    for (std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
  }

  TestHost host;
};

// A suite whose camera is opened before each test, with the open's records
// cleared.
class OpenedCamera : public ::testing::Test {
 protected:
  explicit OpenedCamera(const sim::Profile& profile) : camera(profile) {}
  void SetUp() override {
    ASSERT_TRUE(camera.Open());
    camera.host.ClearRecords();
  }
  VQ_Ext& Ext() { return camera.Ext(); }
  HostCamera camera;
};

}  // namespace vq::test
