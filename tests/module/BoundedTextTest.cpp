// The bounded copy and format every text the module hands out goes through:
// at most size - 1 characters and a terminator, nothing at all for a buffer
// that is null, empty or larger than 2^31 - 1 bytes.
#include <gtest/gtest.h>

#include <cstring>

#include "features/BoundedText.h"

namespace {

TEST(BoundedText, CopyAndFormatWriteAtMostSizeMinusOneCharacters) {
  const struct {
    std::size_t size;
    const char* copied;     // of "Camera"; null: nothing written
    const char* formatted;  // of "index %d." with 42
    std::uint32_t result;   // of the format
  } rows[] = {{0, nullptr, nullptr, vq::kTextInvalidArgument},
              {1, "", "", vq::kTextTruncated},
              {6, "Camer", "index", vq::kTextTruncated},
              {7, "Camera", "index ", vq::kTextTruncated},
              {10, "Camera", "index 42.", vq::kTextOk},
              {16, "Camera", "index 42.", vq::kTextOk},
              {2147483648u, nullptr, nullptr, vq::kTextInvalidArgument},
              {static_cast<std::size_t>(-1), nullptr, nullptr, vq::kTextInvalidArgument}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    char copy[16], format[16];
    std::memset(copy, '#', sizeof copy);
    std::memset(format, '#', sizeof format);
    vq::CopyText(copy, row.size, "Camera");
    EXPECT_EQ(vq::FormatText(format, row.size, "index %d.", 42), row.result);
    if (row.copied == nullptr) {
      EXPECT_EQ(copy[0], '#');
      EXPECT_EQ(format[0], '#');
      continue;
    }
    EXPECT_STREQ(copy, row.copied);
    EXPECT_STREQ(format, row.formatted);
    const std::size_t written = std::strlen(row.copied) + 1;
    EXPECT_EQ(copy[written], '#') << "wrote past the terminator";
  }
  char buffer[4] = "##";
  vq::CopyText(buffer, sizeof buffer, nullptr);
  EXPECT_STREQ(buffer, "");
  vq::CopyText(nullptr, 8, "Camera");
  EXPECT_EQ(vq::FormatText(nullptr, 8, "%s", "x"), vq::kTextInvalidArgument);
}

}  // namespace
