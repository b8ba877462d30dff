// Enumeration entries, limits, typed writes, command completion and error
// texts of GenericFeature, on a real node map over a memory register image.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "features/CommandCompletion.h"
#include "features/GenericFeature.h"
#include "features/TypedFeatures.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

std::string Reg(const char* kind, const char* name, int address, int length,
                const char* extra = "") {
  return std::string("<") + kind + " Name=\"" + name + "\"><Address>" + std::to_string(address) +
         "</Address><Length>" + std::to_string(length) +
         "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + extra + "</" + kind +
         ">\n";
}

std::string IntReg(const char* name, int address, int length) {
  return Reg("IntReg", name, address, length,
             "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess>");
}

const std::string kFeatures = Description(
    R"(
  <Category Name="Root"><pFeature>Mode</pFeature></Category>
  <Integer Name="Off"><Value>0</Value></Integer>
  <Enumeration Name="Mode">
    <EnumEntry Name="Zero"><Value>0</Value></EnumEntry>
    <EnumEntry Name="One"><pIsAvailable>Off</pIsAvailable><Value>1</Value></EnumEntry>
    <EnumEntry Name="Two"><Value>2</Value></EnumEntry>
    <pValue>ModeReg</pValue>
  </Enumeration>
  <Enumeration Name="Odd">
    <EnumEntry Name="FiveA"><DisplayName>First five</DisplayName><Value>5</Value></EnumEntry>
    <EnumEntry Name="FiveB"><DisplayName>Second five</DisplayName><Value>5</Value></EnumEntry>
    <EnumEntry Name="Wrapped"><Value>4294967296</Value></EnumEntry>
    <EnumEntry Name="AllOnes"><DisplayName>All ones</DisplayName><Value>4294967295</Value></EnumEntry>
    <EnumEntry Name="Minus"><Value>-1</Value></EnumEntry>
    <pValue>OddReg</pValue>
  </Enumeration>
  <Integer Name="Count"><pValue>CountReg</pValue></Integer>
  <Integer Name="Wide"><pValue>WideReg</pValue><Min>-9223372036854775808</Min><Max>4294967295</Max><Inc>8</Inc></Integer>
  <Float Name="Ratio"><pValue>RatioReg</pValue><Min>-0.5</Min><Max>1.0</Max></Float>
  <Float Name="Huge"><pValue>RatioReg</pValue><Max>1e300</Max></Float>
  <Boolean Name="Flag"><pValue>FlagReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <String Name="Free"><Value>x</Value></String>
  <Command Name="Instant"><ImposedAccessMode>WO</ImposedAccessMode><pValue>InstantReg</pValue><CommandValue>1</CommandValue></Command>
  <Command Name="Stuck"><pValue>StuckReg</pValue><CommandValue>1</CommandValue></Command>
)" + IntReg("ModeReg", 0x100, 4) +
    IntReg("OddReg", 0x108, 8) + IntReg("WideReg", 0x110, 8) + IntReg("CountReg", 0x130, 8) + IntReg("FlagReg", 0x118, 4) +
    IntReg("InstantReg", 0x11C, 4) + IntReg("StuckReg", 0x120, 4) +
    Reg("FloatReg", "RatioReg", 0x128, 8, "<Endianess>LittleEndian</Endianess>") +
    Reg("StringReg", "HexLength", 0x200, 0x40) + Reg("StringReg", "DecLength", 0x300, 128) +
    Reg("Register", "Blob", 0x400, 4));

class FeatureValueAccess : public ::testing::Test {
 protected:
  LoadedNodeMap map{kFeatures};
  GenericFeature Feature(const char* name) { return map.Feature(name); }
  EnumerationFeature Bound(const char* name) {
    EnumerationFeature enumeration;
    EXPECT_EQ(Feature(name).AsEnumeration(enumeration), 1) << name;
    return enumeration;
  }
};

TEST_F(FeatureValueAccess, OnlyEnumerationsBind) {
  EnumerationFeature enumeration;
  for (const char* name : {"Wide", "Flag", "Root"}) {
    EXPECT_EQ(Feature(name).AsEnumeration(enumeration), 0) << name;
  }
  EXPECT_FALSE(enumeration.IsBound());
  EXPECT_EQ(GenericFeature().AsEnumeration(enumeration), 0);
  EXPECT_EQ(Feature("Mode").AsEnumeration(enumeration), 1);
  EXPECT_TRUE(enumeration.IsBound());
}

struct EntryRow {
  const char* enumeration;
  std::uint32_t index;
  std::int32_t result;
  const char* symbolic;  // "#" when nothing is written
  std::uint32_t value;
  std::uint32_t available;
};

TEST_F(FeatureValueAccess, EntriesByPositionListAvailableAndUnavailableAlike) {
  constexpr std::uint32_t kUntouched = 0xEEEEEEEE;
  const EntryRow rows[] = {
      {"Mode", 0, 1, "Zero", 0, 1},
      {"Mode", 1, 1, "One", 1, 0},
      {"Mode", 2, 1, "Two", 2, 1},
      {"Mode", 3, 0, "#", kUntouched, kUntouched},
      {"Mode", 0x80000000u, 0, "#", kUntouched, kUntouched},
      {"Odd", 2, 1, "Wrapped", 0, 1},  // 2^32 keeps its low 32 bits
      {"Odd", 4, 1, "Minus", 0xFFFFFFFFu, 1},
  };
  for (const EntryRow& row : rows) {
    SCOPED_TRACE(std::string(row.enumeration) + " " + std::to_string(row.index));
    EnumerationFeature enumeration = Bound(row.enumeration);
    char symbolic[16] = "#";
    std::uint32_t value = kUntouched;
    std::uint32_t available = kUntouched;
    EXPECT_EQ(enumeration.GetEntrySymbolic(row.index, symbolic, sizeof symbolic), row.result);
    EXPECT_EQ(enumeration.GetEntryValue(row.index, value), row.result);
    EXPECT_EQ(enumeration.IsEntryAvailable(row.index, available), row.result);
    EXPECT_STREQ(symbolic, row.symbolic);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(available, row.available);
    EXPECT_EQ(enumeration.LastError(), "");
  }
  std::uint32_t count = 0;
  EXPECT_EQ(Bound("Mode").GetEntryCount(count), 1);
  EXPECT_EQ(count, 3u);
}

TEST_F(FeatureValueAccess, EntriesByValueWidenAsUnsignedAndTakeTheFirstMatch) {
  const struct {
    std::uint32_t value;
    std::int32_t result;
    const char* symbolic;
    const char* displayName;
  } rows[] = {
      {5, 1, "FiveA", "First five"},
      {4294967295u, 1, "AllOnes", "All ones"},  // never the entry of value -1
      {0, 0, "#", "#"},                        // 2^32 is not 0
      {7, 0, "#", "#"},
  };
  for (const auto& row : rows) {
    EnumerationFeature enumeration = Bound("Odd");
    char symbolic[16] = "#";
    char displayName[16] = "#";
    EXPECT_EQ(enumeration.GetSymbolicOfValue(row.value, symbolic, sizeof symbolic), row.result);
    EXPECT_EQ(enumeration.GetDisplayNameOfValue(row.value, displayName, sizeof displayName),
              row.result);
    EXPECT_STREQ(symbolic, row.symbolic) << row.value;
    EXPECT_STREQ(displayName, row.displayName) << row.value;
  }
}

// Limits come as 4 bytes; fill rows fill the whole buffer given.
struct LimitRow {
  const char* feature;
  char limit;  // 'n' minimum, 'x' maximum, 'i' increment
  std::uint32_t size;
  std::int32_t result;
  float expected;       // read from the first 4 bytes
  unsigned char fill;   // when not 0xAA: every byte of the buffer
};

TEST_F(FeatureValueAccess, LimitsAreFloatsOrFillBytes) {
  const float kInfinity = std::numeric_limits<float>::infinity();
  const LimitRow rows[] = {
      {"Wide", 'n', 4, 1, -9223372036854775808.0f, 0xAA},
      {"Wide", 'x', 4, 1, 4294967296.0f, 0xAA},  // nearest float of 4294967295
      {"Wide", 'i', 4, 1, 8.0f, 0xAA},
      {"Ratio", 'n', 4, 1, -0.5f, 0xAA},
      {"Ratio", 'x', 4, 1, 1.0f, 0xAA},
      {"Huge", 'x', 4, 1, kInfinity, 0xAA},  // beyond the float range
      {"Ratio", 'i', 4, 1, 0.0f, 0x00},      // floats have no increment here
      {"Flag", 'n', 4, 1, 0.0f, 0x00},
      {"Flag", 'x', 8, 1, 0.0f, 0xFF},
      {"Flag", 'i', 4, 1, 0.0f, 0x00},
      {"HexLength", 'x', 4, 1, 64.0f, 0xAA},
      {"DecLength", 'x', 4, 1, 128.0f, 0xAA},
      {"DecLength", 'x', 8, 0, 0.0f, 0xAA},  // nothing written
      {"Free", 'x', 4, 1, 0.0f, 0xAA},       // no "Length": maximum 0
      {"DecLength", 'n', 8, 1, 0.0f, 0x00},
  };
  for (const LimitRow& row : rows) {
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

// A write: the buffer, what the register then holds, and lastError.
struct WriteRow {
  const char* feature;
  double number;          // for 8-byte writes
  std::uint32_t word;     // for 4-byte writes
  std::uint32_t size;
  std::int32_t result;
  std::int64_t address;   // register read back, -1 for none
  std::int64_t stored;
  const char* lastError;  // "*" for any non-empty text, "=" for unchanged
};

TEST_F(FeatureValueAccess, WritesConvertByInterfaceAndVerify) {
  const WriteRow rows[] = {
      {"Count", -2.9, 0, 8, 1, 0x130, -2, ""},  // success empties lastError
      {"Count", 9007199254740993.0, 0, 8, 1, 0x130, 9007199254740992ll, ""},
      {"Wide", 3.0, 0, 8, 0, 0x110, 0, "*"},    // not a multiple of the increment
      {"Ratio", 1.5, 0, 8, 0, -1, 0, "*"},      // above the maximum
      {"Flag", 0, 7, 4, 1, 0x118, 1, ""},
      {"Flag", 0, 1, 8, 0, 0x118, 1, "="},      // wrong size: nothing happens
      {"Odd", 0, 0xFFFFFFFFu, 4, 1, 0x108, 4294967295ll, ""},
      {"Odd", 0, 5, 8, 0, 0x108, 4294967295ll, "="},
      {"Mode", 0, 9, 4, 0, 0x100, 0, "*"},  // no such entry
      {"Blob", 0, 1, 4, 0, -1, 0, "Write error: Unknown feature type"},
  };
  for (const WriteRow& row : rows) {
    SCOPED_TRACE(std::string(row.feature) + " " + std::to_string(row.number) + " " +
                 std::to_string(row.word));
    GenericFeature feature = Feature(row.feature);
    feature.SetLastError("before");
    unsigned char buffer[8] = {};
    if (row.size == 8 && row.word == 0) {
      std::memcpy(buffer, &row.number, 8);
    } else {
      std::memcpy(buffer, &row.word, 4);
    }
    EXPECT_EQ(feature.SetValue(buffer, row.size), row.result);
    const std::string error = row.lastError;
    if (error == "*") {
      EXPECT_NE(feature.LastError(), "");
      EXPECT_NE(feature.LastError(), "before");
    } else {
      EXPECT_EQ(feature.LastError(), error == "=" ? "before" : error);
    }
    if (row.address >= 0) {
      EXPECT_EQ(static_cast<std::int64_t>(map.port->GetLittleEndian(row.address, 8)), row.stored);
    }
  }
}

TEST_F(FeatureValueAccess, StringWriteSendsSizeCharactersAndTerminatesTheCallersText) {
  char text[] = "ABCDEF";
  GenericFeature feature = Feature("Free");
  EXPECT_EQ(feature.SetValue(text, 3), 1);
  EXPECT_EQ(text[3], '\0');
  StringFeature readBack(map.Node("Free"));
  std::string value;
  EXPECT_EQ(readBack.GetValue(value), 1);
  EXPECT_EQ(value, "ABC");
}

TEST_F(FeatureValueAccess, CommandsCompleteOrGiveUpAfterTheLimit) {
  GenericFeature instant = Feature("Instant");
  std::uint32_t unused = 0;
  EXPECT_EQ(instant.SetValue(&unused, 4), 1);  // done at the first poll
  EXPECT_EQ(instant.LastError(), "");
  EXPECT_EQ(map.port->GetLittleEndian(0x11C, 4), 1u);

  // The register never clears: completion never comes.
  std::string lastError;
  EXPECT_EQ(ExecuteAndAwait(map.Node("Stuck"), lastError, CommandPolling{10, 50}), 0);
  EXPECT_EQ(lastError, "Command 'Stuck' did not complete within 50 ms");
}

TEST(ErrorTexts, MessageAndCodeComeFromTheTextAfterCode) {
  const struct {
    const char* lastError;
    const char* message;
    std::int32_t code;
  } rows[] = {
      {"Write failed (Code: -10004) time-out on serial link",
       "CLProtocol message: 'time-out on serial link", -10004},
      {"value (42) out of range", "value (42) out of range", 0},
      {"done (Code: -30100) ", "CLProtocol message: '", -30100},
      {"done (Code: -30100)", "CLProtocol message: '", -30100},  // ")" ends the text
      {"x (Code:-10004) 17 more", "CLProtocol message: '17 more", 17},
      {"x (Code:-10004) more", "CLProtocol message: 'more", 0},
      {"Code: 99999999999", "Code: 99999999999", 2147483647},
      {"", "", 0},
  };
  for (const auto& row : rows) {
    GenericFeature feature;
    feature.SetLastError(row.lastError);
    EXPECT_EQ(feature.FormatErrorMessage(), row.message) << row.lastError;
    EXPECT_EQ(feature.GetErrorCode(), row.code) << row.lastError;
  }
}

}  // namespace
}  // namespace vq::test
