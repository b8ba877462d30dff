// GenericFeature on a real node map over a memory register image, for what the
// host interface cannot reach or reaches only in part: typed reads that refuse
// a wrong size, enumeration entries by position and by value, limits and
// their fill bytes, the string write's terminator, a command that never
// completes, error texts, and register invalidation through formulas.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "features/CommandCompletion.h"
#include "features/GenericFeature.h"
#include "features/TypedFeatures.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

// Entries are ordered so that a comparison of only the low 32 bits, or a
// signed widening, would find an earlier entry than the right one.
const std::string kFeatures = Description(
    R"(
  <Category Name="Root"><pFeature>Mode</pFeature></Category>
  <Integer Name="Off"><Value>0</Value></Integer>
  <Enumeration Name="Mode">
    <EnumEntry Name="Wrapped"><Value>4294967296</Value></EnumEntry>
    <EnumEntry Name="Zero"><Value>0</Value></EnumEntry>
    <EnumEntry Name="One"><pIsAvailable>Off</pIsAvailable><Value>1</Value></EnumEntry>
    <EnumEntry Name="Minus"><Value>-1</Value></EnumEntry>
    <EnumEntry Name="AllOnes"><DisplayName>All ones</DisplayName><Value>4294967295</Value></EnumEntry>
    <EnumEntry Name="Big"><Value>4294967301</Value></EnumEntry>
    <EnumEntry Name="FiveA"><DisplayName>First five</DisplayName><Value>5</Value></EnumEntry>
    <EnumEntry Name="FiveB"><DisplayName>Second five</DisplayName><Value>5</Value></EnumEntry>
    <pValue>ModeReg</pValue>
  </Enumeration>
  <Integer Name="Wide"><pValue>WideReg</pValue><Min>-9223372036854775808</Min><Max>4294967295</Max></Integer>
  <Float Name="Ratio"><pValue>RatioReg</pValue><Min>-0.5</Min><Max>1.0</Max></Float>
  <Float Name="Huge"><pValue>RatioReg</pValue><Max>1e300</Max></Float>
  <FloatReg Name="RatioReg"><Address>0x128</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess></FloatReg>
  <Boolean Name="Flag"><pValue>FlagReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <String Name="Free"><Value>ABCDEFGH</Value></String>
  <StringReg Name="HexLength"><Address>0x200</Address><Length>0x40</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
  <StringReg Name="DecLength"><Address>0x300</Address><Length>128</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
  <Command Name="Stuck"><pValue>StuckReg</pValue><CommandValue>1</CommandValue></Command>
  <Integer Name="Limited"><pValue>LimitedReg</pValue><pMax>MaxKnife</pMax></Integer>
  <IntSwissKnife Name="MaxKnife"><pVariable Name="A">MaxA</pVariable><pVariable Name="B">MaxB</pVariable><Formula>A+B</Formula></IntSwissKnife>
)" + IntRegNode("ModeReg", 0x100, 8) +
    IntRegNode("WideReg", 0x110, 8) + IntRegNode("FlagReg", 0x118, 4) +
    IntRegNode("StuckReg", 0x120, 4) + IntRegNode("Wo", 0x108, 4, "WO") +
    IntRegNode("LimitedReg", 0x130, 4) + IntRegNode("MaxA", 0x134, 4) +
    IntRegNode("MaxB", 0x138, 4) + IntRegNode("Control", 0x13C, 4));

class FeatureValueAccess : public ::testing::Test {
 protected:
  LoadedNodeMap map{kFeatures};
  GenericFeature Feature(const char* name) { return map.Feature(name); }
};

TEST_F(FeatureValueAccess, TypedReadsFillTheirFormOrNothing) {
  constexpr std::uint64_t kUntouched = 0x5555555555555555ull;
  double ratio = 0.75;
  std::uint64_t ratioBits;
  std::memcpy(&ratioBits, &ratio, 8);
  map.port->Store(0x128, ratioBits, 8);
  map.port->Store(0x118, 1, 4);
  map.port->Store(0x100, 4294967301ull, 8);
  const struct {
    const char* feature;
    std::uint32_t size;
    std::int32_t result;
    std::uint64_t expected;  // the buffer's first 8 bytes afterwards
  } rows[] = {{"Ratio", 4, 0, kUntouched},
              {"Ratio", 8, 1, ratioBits},
              {"Flag", 8, 0, kUntouched},
              {"Flag", 4, 1, 0x5555555500000001ull},
              {"Mode", 8, 0, kUntouched},
              {"Mode", 4, 1, 0x5555555500000005ull},  // low 32 bits
              {"Free", 4, 1, 0x5555555500434241ull},  // "ABC"
              {"Free", 0, 1, kUntouched},
              {"Wo", 8, 0, kUntouched}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.feature) + " size " + std::to_string(row.size));
    std::uint64_t buffer = kUntouched;
    EXPECT_EQ(Feature(row.feature).GetValue(&buffer, row.size), row.result);
    EXPECT_EQ(buffer, row.expected);
  }
}

TEST_F(FeatureValueAccess, EntriesByPositionListEveryEntryByTheirLow32Bits) {
  constexpr std::uint32_t kUntouched = 0xEEEEEEEE;
  const struct {
    std::uint32_t index;
    std::int32_t result;
    const char* symbolic;  // "#" when nothing is written
    std::uint32_t value;
    std::uint32_t available;
  } rows[] = {{0, 1, "Wrapped", 0, 1},
              {2, 1, "One", 1, 0},
              {3, 1, "Minus", 0xFFFFFFFFu, 1},
              {8, 0, "#", kUntouched, kUntouched},
              {0x80000000u, 0, "#", kUntouched, kUntouched}};
  EnumerationFeature enumeration;
  ASSERT_EQ(Feature("Mode").AsEnumeration(enumeration), 1);
  std::uint32_t count = 0;
  EXPECT_EQ(enumeration.GetEntryCount(count), 1);
  EXPECT_EQ(count, 8u);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.index);
    char symbolic[16] = "#";
    std::uint32_t value = kUntouched;
    std::uint32_t available = kUntouched;
    EXPECT_EQ(enumeration.GetEntrySymbolic(row.index, symbolic, sizeof symbolic), row.result);
    EXPECT_EQ(enumeration.GetEntryValue(row.index, value), row.result);
    EXPECT_EQ(enumeration.IsEntryAvailable(row.index, available), row.result);
    EXPECT_STREQ(symbolic, row.symbolic);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(available, row.available);
  }
}

TEST_F(FeatureValueAccess, EntriesByValueWidenAsUnsignedAndTakeTheFirstMatch) {
  const struct {
    std::uint32_t value;
    std::int32_t result;
    const char* symbolic;
    const char* displayName;
  } rows[] = {{5, 1, "FiveA", "First five"},
              {4294967295u, 1, "AllOnes", "All ones"},
              {0, 1, "Zero", "EnumEntry_Mode_Zero"},
              {7, 0, "#", "#"}};
  EnumerationFeature enumeration;
  ASSERT_EQ(Feature("Mode").AsEnumeration(enumeration), 1);
  for (const auto& row : rows) {
    char symbolic[32] = "#";
    char displayName[32] = "#";
    EXPECT_EQ(enumeration.GetSymbolicOfValue(row.value, symbolic, sizeof symbolic), row.result);
    EXPECT_EQ(enumeration.GetDisplayNameOfValue(row.value, displayName, sizeof displayName),
              row.result);
    EXPECT_STREQ(symbolic, row.symbolic) << row.value;
    EXPECT_STREQ(displayName, row.displayName) << row.value;
  }
}

// Limits come as 4-byte floats; fill rows fill the whole buffer given. (The
// limits of the KORVA example's integers and floats: KorvaHostTest.)
TEST_F(FeatureValueAccess, LimitsAreFloatsOrFillBytes) {
  const struct {
    const char* feature;
    char limit;  // 'n' minimum, 'x' maximum, 'i' increment
    std::uint32_t size;
    std::int32_t result;
    float expected;      // read from the first 4 bytes
    unsigned char fill;  // when not 0xAA: every byte of the buffer
  } rows[] = {{"Wide", 'n', 4, 1, -9223372036854775808.0f, 0xAA},
              {"Huge", 'x', 4, 1, std::numeric_limits<float>::infinity(), 0xAA},
              {"Flag", 'n', 4, 1, 0.0f, 0x00},
              {"Flag", 'x', 8, 1, 0.0f, 0xFF},
              {"Flag", 'i', 4, 1, 0.0f, 0x00},
              {"HexLength", 'x', 4, 1, 64.0f, 0xAA},
              {"DecLength", 'x', 4, 1, 128.0f, 0xAA},
              {"DecLength", 'x', 8, 0, 0.0f, 0xAA},  // nothing written
              {"Free", 'x', 4, 1, 0.0f, 0xAA},       // no "Length": maximum 0
              {"DecLength", 'n', 8, 1, 0.0f, 0x00}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.feature) + " " + row.limit);
    unsigned char buffer[8];
    std::memset(buffer, 0xAA, sizeof buffer);
    GenericFeature feature = Feature(row.feature);
    const std::int32_t result = row.limit == 'n'   ? feature.GetMin(buffer, row.size)
                                : row.limit == 'x' ? feature.GetMax(buffer, row.size)
                                                   : feature.GetInc(buffer, row.size);
    EXPECT_EQ(result, row.result);
    if (row.fill != 0xAA) {
      for (std::uint32_t i = 0; i < sizeof buffer; ++i) {
        EXPECT_EQ(buffer[i], i < row.size ? row.fill : 0xAA) << i;
      }
    } else if (row.result == 1) {
      float value;
      std::memcpy(&value, buffer, sizeof value);
      EXPECT_EQ(value, row.expected);
      EXPECT_EQ(buffer[4], 0xAA);
    } else {
      EXPECT_EQ(buffer[0], 0xAA);
    }
  }
}

TEST_F(FeatureValueAccess, StringWriteSendsSizeCharactersAndTerminatesTheCallersText) {
  char text[] = "ABCDEF";
  EXPECT_EQ(Feature("Free").SetValue(text, 3), 1);
  EXPECT_EQ(text[3], '\0');
  char value[8];
  EXPECT_EQ(Feature("Free").GetValue(value, sizeof value), 1);
  EXPECT_STREQ(value, "ABC");
}

TEST_F(FeatureValueAccess, CommandThatNeverCompletesIsGivenUpAfterTheLimit) {
  std::string lastError;
  EXPECT_EQ(ExecuteAndAwait(map.Node("Stuck"), lastError, CommandPolling{10, 50}), 0);
  EXPECT_EQ(lastError, "Command 'Stuck' did not complete within 50 ms");
  EXPECT_EQ(map.port->Load(0x120, 4), 1u);  // it was executed
}

TEST_F(FeatureValueAccess, InvalidationReachesRegistersThroughFormulaNodes) {
  // Limited has the invalidating children LimitedReg (a register) and
  // MaxKnife (a formula over MaxA and MaxB). Control is not among them.
  const int addresses[] = {0x130, 0x134, 0x138, 0x13C};
  const char* names[] = {"LimitedReg", "MaxA", "MaxB", "Control"};
  auto read = [&](const char* name) {
    double value = 0;
    EXPECT_EQ(Feature(name).GetValue(&value, 8), 1) << name;
    return value;
  };
  for (int address : addresses) map.port->Store(address, 1, 4);
  for (const char* name : names) EXPECT_EQ(read(name), 1) << name;
  for (int address : addresses) map.port->Store(address, 2, 4);
  GenericFeature limited = Feature("Limited");
  limited.InvalidateRegisters(limited.Node());
  const double expected[] = {2, 2, 2, 1};  // Control still served from the cache
  for (int i = 0; i < 4; ++i) EXPECT_EQ(read(names[i]), expected[i]) << names[i];
}

TEST(ErrorTexts, MessageAndCodeComeFromTheTextAfterCode) {
  const struct {
    const char* lastError;
    const char* message;
    std::int32_t code;
  } rows[] = {{"Write failed (Code: -10004) time-out on serial link",
               "CLProtocol message: 'time-out on serial link", -10004},
              {"value (42) out of range", "value (42) out of range", 0},
              {"done (Code: -30100) ", "CLProtocol message: '", -30100},
              {"done (Code: -30100)", "CLProtocol message: '", -30100},  // ")" ends the text
              {"x (Code:-10004) 17 more", "CLProtocol message: '17 more", 17},
              {"x (Code:-10004) more", "CLProtocol message: 'more", 0},
              {"Code: 99999999999", "Code: 99999999999", 2147483647},
              {"", "", 0}};
  for (const auto& row : rows) {
    GenericFeature feature;
    feature.SetLastError(row.lastError);
    EXPECT_EQ(feature.FormatErrorMessage(), row.message) << row.lastError;
    EXPECT_EQ(feature.GetErrorCode(), row.code) << row.lastError;
  }
}

}  // namespace
}  // namespace vq::test
