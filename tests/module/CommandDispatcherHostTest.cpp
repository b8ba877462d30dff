// QueryCommand and ExecuteCommand as a host sees them: the identifiers with
// fixed answers, unlisted identifiers, size rules, and the open record.
#include <gtest/gtest.h>

#include <cstring>

#include "support/TestHost.h"
#include "vq/platform/environment.h"

namespace vq::test {
namespace {

constexpr std::uint32_t kFill = 0xA5A5A5A5u;

TEST(CommandDispatcher, QueriesWithFixedAnswers) {
  TestHost host;
  struct Case {
    std::uint32_t id;
    std::uint32_t size;
    std::int32_t result;
    std::uint32_t word;  // the buffer's first word afterwards
  };
  const Case cases[] = {
      {0, 4, 0, kFill},    // untouched
      {1, 3, 0, kFill},    // too small: nothing written
      {1, 4, 1, 0},        {6, 8, 1, 0}, {7, 4, 1, 0},
      {2, 4, 0, 0},        // unlisted: 0 written, result 0
      {30, 4, 0, 0},       {47, 4, 0, 0}, {55, 0, 0, 0}, {0xFFFFFFFFu, 4, 0, 0},
  };
  for (const Case& c : cases) {
    std::uint32_t buffer[2] = {kFill, kFill};
    EXPECT_EQ(host.Extension().QueryCommand(c.id, buffer, c.size), c.result) << c.id;
    EXPECT_EQ(buffer[0], c.word) << c.id;
    EXPECT_EQ(buffer[1], kFill) << c.id;
  }
  EXPECT_EQ(host.Extension().QueryCommand(2, nullptr, 4), 0);
}

TEST(CommandDispatcher, ExecutesWithFixedAnswers) {
  TestHost host;
  struct Case {
    std::uint32_t id;
    std::int32_t result;
  };
  const Case cases[] = {{8, 1},  {12, 1}, {13, 1}, {27, 0}, {0, 1},  {7, 1},
                        {9, 1},  {24, 1}, {28, 1}, {47, 1}, {53, 1}, {1000, 1}};
  for (const Case& c : cases) {
    std::uint32_t buffer = kFill;
    EXPECT_EQ(host.Extension().ExecuteCommand(c.id, &buffer, sizeof buffer), c.result) << c.id;
    EXPECT_EQ(buffer, kFill) << c.id;
  }
  EXPECT_TRUE(host.serialRequests.empty());
  EXPECT_TRUE(host.messages.empty());
}

TEST(CommandDispatcher, OpenRecordCloseAndNull) {
  TestHost host;
  EXPECT_EQ(host.Extension().ExecuteCommand(CMD_OPEN_CAMERA, nullptr, 540), 0);
  CommandRecord record;
  std::memset(&record, 0x5A, sizeof record);
  record.openRequest = -1;
  EXPECT_EQ(host.Extension().ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), 1);
  EXPECT_EQ(record.openStatus, 0x5A5A5A5Au);  // a close writes no status
  for (unsigned char byte : record.hostReserved) ASSERT_EQ(byte, 0x5A);
  EXPECT_TRUE(host.serialRequests.empty());
}

TEST(CommandDispatcher, OperationsBeforeTheCameraExistAreRefused) {
  // A host that skips InitializeCamera: nothing crashes, everything says no.
  VQ_Ext* extension = CreateModuleExtension();
  ASSERT_NE(extension, nullptr);
  CommandRecord record{};
  EXPECT_EQ(extension->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), 0);
  record.openRequest = -1;
  EXPECT_EQ(extension->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record), 0);
  delete extension;
}

}  // namespace
}  // namespace vq::test
