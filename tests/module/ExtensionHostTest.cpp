// The extension object as a host sees it: created by the exported factory of
// the module loaded with dlopen, driven only through VQ_Ext.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "support/TestHost.h"

namespace vq::test {
namespace {

std::vector<std::uint32_t> calls;

std::int32_t RecordingHost(std::uint32_t code, std::uint32_t, void*, HostContext) {
  calls.push_back(code);
  return 1;
}

using Extension = std::unique_ptr<VQ_Ext>;

TEST(ExtensionObject, InitializeIsRefusedAndInitializeCameraCreatesTheCameraOnce) {
  calls.clear();
  Extension first(CreateModuleExtension());
  Extension second(CreateModuleExtension());
  ASSERT_TRUE(first && second);
  EXPECT_NE(first.get(), second.get());
  CommandRecord close{};
  close.openRequest = -1;
  for (VQ_Ext* extension : {first.get(), second.get()}) {
    EXPECT_EQ(extension->SetHostCallback(&RecordingHost, 7), 1);
    EXPECT_EQ(extension->Initialize(nullptr, nullptr, ParameterRecordList(3)), 0);
    // No camera yet: nothing to close.
    EXPECT_EQ(extension->ExecuteCommand(CMD_OPEN_CAMERA, &close, sizeof close), 0);
    EXPECT_EQ(extension->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList(2)), 1);
    EXPECT_EQ(extension->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList()), 1);
    EXPECT_EQ(extension->Initialize(nullptr, nullptr, ParameterRecordList(1)), 0);
    EXPECT_EQ(extension->ExecuteCommand(CMD_OPEN_CAMERA, &close, sizeof close), 1);
  }
  second.reset();  // the first object and its camera live on
  EXPECT_EQ(first->ExecuteCommand(CMD_OPEN_CAMERA, &close, sizeof close), 1);
  EXPECT_TRUE(calls.empty()) << "creating and closing the camera told the host something";
}

TEST(ExtensionObject, NameIsCutToTheBufferAndCarriesTheThreeValues) {
  Extension extension(CreateModuleExtension());
  const struct {
    std::int32_t size;
    const char* name;  // null: nothing written
  } rows[] = {{64, "Generic Camera"},
              {15, "Generic Camera"},
              {14, "Generic Camer"},
              {10, "Generic C"},
              {1, ""},
              {0, nullptr},
              {-5, nullptr}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    char buffer[65];
    std::memset(buffer, '#', sizeof buffer);
    std::uint32_t values[3] = {7, 7, 7};
    EXPECT_EQ(extension->GetExtensionName(buffer, row.size, &values[0], &values[1], &values[2]), 1);
    if (row.name == nullptr) {
      EXPECT_EQ(buffer[0], '#');
    } else {
      EXPECT_STREQ(buffer, row.name);
      EXPECT_EQ(buffer[row.size], '#') << "wrote past the buffer";
    }
    EXPECT_EQ(std::vector<std::uint32_t>(values, values + 3),
              (std::vector<std::uint32_t>{0, 0, 3}));
  }
}

// Called by vtable position, as a host that knows only positions does.
TEST(ExtensionObject, ReservedOperationsAnswerTheirConstantsWithOrWithoutCamera) {
  Extension extension(CreateModuleExtension());
  using Slot = std::int32_t (*)(VQ_Ext*, void*);
  const std::pair<int, std::int32_t> rows[] = {{4, 0},  {5, 1},  {9, 0},  {10, 0}, {11, 0},
                                               {14, 0}, {20, 0}, {21, 0}, {22, 0}, {23, 1},
                                               {24, 0}, {25, 0}, {26, 0}, {27, 0}, {28, 0}};
  for (bool withCamera : {false, true}) {
    if (withCamera) extension->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList(1));
    void* const* vtable = *reinterpret_cast<void* const* const*>(extension.get());
    int argument = 0;
    for (const auto& [slot, result] : rows) {
      EXPECT_EQ(reinterpret_cast<Slot>(vtable[slot])(extension.get(), &argument), result) << slot;
    }
  }
}

}  // namespace
}  // namespace vq::test
