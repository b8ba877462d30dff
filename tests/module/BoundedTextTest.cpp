#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "features/BoundedText.h"

namespace {

constexpr std::size_t kGuard = 16;

// A buffer pre-filled with '#' so that untouched bytes are visible.
struct Canvas {
  char bytes[kGuard];
  Canvas() { std::memset(bytes, '#', sizeof(bytes)); }
  bool Untouched() const {
    for (char c : bytes)
      if (c != '#') return false;
    return true;
  }
};

struct CopyRow {
  const char* name;
  std::size_t size;
  const char* text;
  const char* expected;  // null: nothing written
};

class CopyTextSizes : public ::testing::TestWithParam<CopyRow> {};

TEST_P(CopyTextSizes, WritesAtMostSizeMinusOneCharactersAndATerminator) {
  const CopyRow& row = GetParam();
  Canvas canvas;
  vq::CopyText(canvas.bytes, row.size, row.text);
  if (row.expected == nullptr) {
    EXPECT_TRUE(canvas.Untouched());
    return;
  }
  EXPECT_STREQ(canvas.bytes, row.expected);
  const std::size_t written = std::strlen(row.expected) + 1;
  for (std::size_t i = written; i < kGuard; ++i) EXPECT_EQ(canvas.bytes[i], '#') << i;
}

INSTANTIATE_TEST_SUITE_P(
    BoundedCopy, CopyTextSizes,
    ::testing::Values(
        CopyRow{"SizeZero", 0, "Camera", nullptr}, CopyRow{"SizeOne", 1, "Camera", ""},
        CopyRow{"ExactFit", 7, "Camera", "Camera"}, CopyRow{"OneShort", 6, "Camera", "Camer"},
        CopyRow{"Roomy", 12, "Camera", "Camera"}, CopyRow{"EmptyText", 4, "", ""},
        CopyRow{"NullText", 4, nullptr, ""}, CopyRow{"AboveLimit", 2147483648u, "Camera", nullptr},
        CopyRow{"AtLimitSignedMinusOne", static_cast<std::size_t>(-1), "Camera", nullptr}),
    [](const ::testing::TestParamInfo<CopyRow>& info) { return std::string(info.param.name); });

TEST(BoundedCopy, NullBufferIsRefused) {
  vq::CopyText(nullptr, 8, "Camera");  // must not crash
  SUCCEED();
}

struct FormatRow {
  const char* name;
  std::size_t size;
  std::uint32_t result;
  const char* expected;  // null: nothing written
};

class FormatTextSizes : public ::testing::TestWithParam<FormatRow> {};

TEST_P(FormatTextSizes, CutsAndReportsLikeTheBoundedCopy) {
  const FormatRow& row = GetParam();
  Canvas canvas;
  EXPECT_EQ(vq::FormatText(canvas.bytes, row.size, "index %d.", 42), row.result);
  if (row.expected == nullptr) {
    EXPECT_TRUE(canvas.Untouched());
  } else {
    EXPECT_STREQ(canvas.bytes, row.expected);
  }
}

// "index 42." has 9 characters.
INSTANTIATE_TEST_SUITE_P(
    BoundedFormat, FormatTextSizes,
    ::testing::Values(FormatRow{"SizeZero", 0, vq::kTextInvalidArgument, nullptr},
                      FormatRow{"SizeOne", 1, vq::kTextTruncated, ""},
                      FormatRow{"ExactFit", 10, vq::kTextOk, "index 42."},
                      FormatRow{"OneShort", 9, vq::kTextTruncated, "index 42"},
                      FormatRow{"Roomy", 16, vq::kTextOk, "index 42."},
                      FormatRow{"AboveLimit", 2147483648u, vq::kTextInvalidArgument, nullptr}),
    [](const ::testing::TestParamInfo<FormatRow>& info) { return std::string(info.param.name); });

TEST(BoundedFormat, ResultCodesAreTheHostOnes) {
  EXPECT_EQ(vq::kTextOk, 0u);
  EXPECT_EQ(vq::kTextInvalidArgument, 0x80070057u);
  EXPECT_EQ(vq::kTextTruncated, 0x8007007Au);
}

TEST(BoundedFormat, NullBufferIsRefused) {
  EXPECT_EQ(vq::FormatText(nullptr, 8, "%s", "x"), vq::kTextInvalidArgument);
}

TEST(BoundedFormat, LongArgumentIsCutAt511Characters) {
  const std::string longText(600, 'a');
  char buffer[512];
  EXPECT_EQ(vq::FormatText(buffer, sizeof(buffer), "%s", longText.c_str()), vq::kTextTruncated);
  EXPECT_EQ(std::strlen(buffer), 511u);
}

}  // namespace
