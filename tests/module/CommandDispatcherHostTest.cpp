// QueryCommand and ExecuteCommand as a host sees them: the identifiers with
// fixed answers, unlisted identifiers, size rules and the open record; and
// every operation before a camera is open, or before the camera object exists.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "support/HostCamera.h"

namespace vq::test {
namespace {

constexpr std::uint32_t kFill = 0xA5A5A5A5u;

TEST(CommandDispatcher, QueriesWithFixedAnswers) {
  TestHost host;
  const struct {
    std::uint32_t id;
    std::uint32_t size;
    std::int32_t result;
    std::uint32_t word;          // the buffer's first word afterwards
  } rows[] = {{0, 4, 0, kFill},  // untouched
              {1, 3, 0, kFill},  // too small: nothing written
              {1, 4, 1, 0},     {6, 8, 1, 0},
              {7, 4, 1, 0},     {2, 4, 0, 0},  // unlisted: 0 written, result 0
              {30, 4, 0, 0},    {47, 4, 0, 0},
              {55, 0, 0, 0},    {0xFFFFFFFFu, 4, 0, 0}};
  for (const auto& row : rows) {
    std::uint32_t buffer[2] = {kFill, kFill};
    EXPECT_EQ(host.Extension().QueryCommand(row.id, buffer, row.size), row.result) << row.id;
    EXPECT_EQ(buffer[0], row.word) << row.id;
    EXPECT_EQ(buffer[1], kFill) << row.id;
  }
  EXPECT_EQ(host.Extension().QueryCommand(2, nullptr, 4), 0);
}

TEST(CommandDispatcher, ExecutesWithFixedAnswersAndTheCloseRecord) {
  TestHost host;
  const std::pair<std::uint32_t, std::int32_t> rows[] = {{8, 1},  {12, 1}, {13, 1}, {27, 0},
                                                         {0, 1},  {7, 1},  {9, 1},  {24, 1},
                                                         {28, 1}, {47, 1}, {53, 1}, {1000, 1}};
  for (const auto& [id, result] : rows) {
    std::uint32_t buffer = kFill;
    EXPECT_EQ(host.Extension().ExecuteCommand(id, &buffer, sizeof buffer), result) << id;
    EXPECT_EQ(buffer, kFill) << id;
  }
  EXPECT_EQ(host.Extension().ExecuteCommand(CMD_OPEN_CAMERA, nullptr, 540), 0);
  CommandRecord record;
  std::memset(&record, 0x5A, sizeof record);
  record.openRequest = -1;
  EXPECT_EQ(host.Extension().ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), 1);
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
    EXPECT_EQ(ext->SetParameterValue(0, "1"), 0);
    EXPECT_EQ(ext->PressParameterButton(nullptr, 0), 0);
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
