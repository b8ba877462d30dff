// The extension object as a host sees it (created by the exported factory of
// the module loaded with dlopen, driven only through VQ_Ext): creation and
// name, the reserved operations by vtable position, the commands with fixed
// answers and size rules, and every operation before a camera is open or
// before the camera object exists.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "support/HostCamera.h"

namespace vq::test {
namespace {

using Extension = std::unique_ptr<VQ_Ext>;
constexpr std::uint32_t kFill = 0xA5A5A5A5u;
std::vector<std::uint32_t> calls;

std::int32_t RecordingHost(std::uint32_t code, std::uint32_t, void*, HostContext) {
  calls.push_back(code);
  return 1;
}

TEST(ExtensionObject, InitializeIsRefusedAndInitializeCameraCreatesTheCameraOnce) {
  calls.clear();
  Extension first(CreateModuleExtension()), second(CreateModuleExtension());
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
  const std::pair<std::int32_t, const char*> rows[] = {
      {15, "Generic Camera"}, {14, "Generic Camer"}, {1, ""}, {0, nullptr}, {-5, nullptr}};
  for (const auto& [size, name] : rows) {  // name null: nothing written
    char buffer[65];
    std::memset(buffer, '#', sizeof buffer);
    std::uint32_t values[3] = {7, 7, 7};
    EXPECT_EQ(extension->GetExtensionName(buffer, size, &values[0], &values[1], &values[2]), 1);
    EXPECT_EQ(std::string(buffer, name ? size : 1), name ? std::string(name) + '\0' : "#") << size;
    EXPECT_EQ(buffer[name ? size : 1], '#') << "wrote past the buffer at size " << size;
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

TEST(CommandDispatcher, FixedAnswersUnlistedIdentifiersAndTheCloseRecord) {
  TestHost host;
  VQ_Ext& ext = host.Extension();
  // Queries: id, size, result, the buffer's first word afterwards.
  const std::uint32_t queries[][4] = {{0, 4, 0, kFill},  // untouched
                                      {1, 3, 0, kFill},  // too small: nothing written
                                      {1, 4, 1, 0},          {6, 8, 1, 0},  {7, 4, 1, 0},
                                      {2, 4, 0, 0},  // unlisted: 0 written, result 0
                                      {30, 4, 0, 0},         {47, 4, 0, 0}, {55, 0, 0, 0},
                                      {0xFFFFFFFFu, 4, 0, 0}};
  for (const auto& q : queries) {
    std::uint32_t buffer[2] = {kFill, kFill};
    EXPECT_EQ(ext.QueryCommand(q[0], buffer, q[1]), std::int32_t(q[2])) << q[0];
    EXPECT_EQ(buffer[0], q[3]) << q[0];
    EXPECT_EQ(buffer[1], kFill) << q[0];
  }
  EXPECT_EQ(ext.QueryCommand(2, nullptr, 4), 0);
  const std::pair<std::uint32_t, std::int32_t> executes[] = {{8, 1},  {12, 1}, {13, 1}, {27, 0},
                                                             {0, 1},  {7, 1},  {9, 1},  {24, 1},
                                                             {28, 1}, {47, 1}, {53, 1}, {1000, 1}};
  for (const auto& [id, result] : executes) {
    std::uint32_t buffer = kFill;
    EXPECT_EQ(ext.ExecuteCommand(id, &buffer, sizeof buffer), result) << id;
    EXPECT_EQ(buffer, kFill) << id;
  }
  EXPECT_EQ(ext.ExecuteCommand(CMD_OPEN_CAMERA, nullptr, 540), 0);
  CommandRecord record;
  std::memset(&record, 0x5A, sizeof record);
  record.openRequest = -1;
  EXPECT_EQ(ext.ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), 1);
  EXPECT_EQ(record.openStatus, 0x5A5A5A5Au);  // a close writes no status
  for (unsigned char byte : record.hostReserved) ASSERT_EQ(byte, 0x5A);
  EXPECT_TRUE(host.serialRequests.empty());
  EXPECT_TRUE(host.messages.empty());
}

TEST(CommandDispatcher, EveryOperationBeforeAnOpenAnswersWithoutTouchingTheHost) {
  TestHost host;                                          // camera created, nothing opened
  std::unique_ptr<VQ_Ext> bare(CreateModuleExtension());  // InitializeCamera never called
  ASSERT_NE(bare, nullptr);
  for (VQ_Ext* ext : {&host.Extension(), bare.get()}) {
    const bool camera = ext == &host.Extension();
    SCOPED_TRACE(camera ? "camera not open" : "no camera");
    char buffer[600];
    std::uint32_t value = 7;
    EXPECT_EQ(ext->GetParameterCount() + ext->GetCategoryCount(), 0u);
    EXPECT_EQ(ext->GetCategoryName(0, buffer, 64, nullptr, 0, &value), 0);
    EXPECT_EQ(value, 0u);
    for (std::uint32_t code = 0; code <= 14; ++code) {
      EXPECT_EQ(ext->GetParameterAttribute(0, code, buffer, code == 0 || code == 2 ? 512 : 4), 0);
    }
    EXPECT_EQ(ext->SetParameterValue(0, "1") + ext->PressParameterButton(nullptr, 0), 0);
    for (std::uint32_t id : {CMD_MAX_BAUD_RATE, CMD_CURRENT_BAUD_RATE}) {
      std::uint32_t rate = 7;
      EXPECT_EQ(ext->QueryCommand(id, &rate, sizeof rate), camera ? 1 : 0) << id;
      EXPECT_EQ(rate, camera ? 1u : 7u) << id;  // 9600 baud
    }
    EXPECT_EQ(QueryText(*ext, CMD_VISIBILITY_LEVEL, 516), camera ? "Guru" : "#");
    char level[VISIBILITY_LEVEL_DATA_SIZE] = "Expert";
    EXPECT_EQ(ext->ExecuteCommand(CMD_VISIBILITY_LEVEL, level, sizeof level), camera ? 1 : 0);
    std::vector<ParameterTextItem> texts;
    ParameterTextsQuery query{0, 0, &texts};
    EXPECT_EQ(ext->QueryCommand(CMD_PARAMETER_TEXTS, &query, sizeof query), 0);
    EXPECT_TRUE(texts.empty());
    EXPECT_EQ(QueryText(*ext, CMD_MODEL_NAME, 8), camera ? "########" : "#");  // nothing written
    EXPECT_EQ(QueryText(*ext, CMD_HELP_FILE_NAME, 8), "#");
    char name[] = "Width";
    std::uint32_t bit = 1;
    EXPECT_EQ(ext->QueryCommand(CMD_CAN_SAVE_CONFIGURATION, nullptr, 0) +
                  ext->ExecuteCommand(CMD_SAVE_CONFIGURATION, nullptr, 0) +
                  ext->QueryCommand(CMD_IS_PARAMETER_VISIBLE, name, sizeof name) +
                  ext->ExecuteCommand(CMD_REFRESH_PARAMETER, name, sizeof name) +
                  ext->ExecuteCommand(CMD_SET_BAUD_RATE, &bit, sizeof bit),
              0);
    CommandRecord record{};
    record.openRequest = camera ? -1 : 0;  // an open would ask the host
    EXPECT_EQ(ext->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), camera ? 1 : 0);
    record.openRequest = -1;
    EXPECT_EQ(ext->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), camera ? 1 : 0);
  }
  EXPECT_TRUE(host.messages.empty());
  EXPECT_TRUE(host.serialRequests.empty());
}

}  // namespace
}  // namespace vq::test
