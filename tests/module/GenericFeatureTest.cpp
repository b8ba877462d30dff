// Reading features through GenericFeature: type, access and visibility codes,
// names and descriptions, typed reads and register invalidation, against a
// description loaded into a real node map over a memory register image.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "features/FeatureCodes.h"
#include "features/GenericFeature.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

std::string IntReg(const char* name, int address, int length, const char* access,
                   const char* extra = "") {
  return std::string("<IntReg Name=\"") + name + "\">" + extra + "<Address>" +
         std::to_string(address) + "</Address><Length>" + std::to_string(length) +
         "</Length><AccessMode>" + access +
         "</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
         "<Endianess>LittleEndian</Endianess></IntReg>\n";
}

const std::string kFeatures = Description(
    R"(
  <Category Name="Root"><pFeature>Width</pFeature></Category>
  <Integer Name="ImplementedFlag"><Value>0</Value></Integer>
  <Integer Name="NotImplemented"><pIsImplemented>ImplementedFlag</pIsImplemented><Value>1</Value></Integer>
  <Integer Name="NotAvailable"><pIsAvailable>ImplementedFlag</pIsAvailable><Value>1</Value></Integer>
  <Float Name="Gain"><ToolTip>Gain tip</ToolTip><Visibility>Expert</Visibility><pValue>GainReg</pValue></Float>
  <FloatReg Name="GainReg"><Address>0x200</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></FloatReg>
  <Boolean Name="Flag"><Visibility>Guru</Visibility><pValue>FlagReg</pValue><OnValue>1</OnValue><OffValue>0</OffValue></Boolean>
  <String Name="Label"><Visibility>Invisible</Visibility><Value>ABCDEFGH</Value></String>
  <Enumeration Name="Mode">
    <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Big"><Value>4294967301</Value></EnumEntry>
    <pValue>ModeReg</pValue>
  </Enumeration>
  <Command Name="Start"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>
  <Register Name="Blob"><Address>0x300</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>
  <Integer Name="Limited"><pValue>LimitedReg</pValue><pMax>MaxKnife</pMax></Integer>
  <IntSwissKnife Name="MaxKnife"><pVariable Name="A">MaxA</pVariable><pVariable Name="B">MaxB</pVariable><Formula>A+B</Formula></IntSwissKnife>
)" + IntReg("Width", 0x100, 4, "RW", "<Description>Exposure</Description>") +
    IntReg("Ro", 0x104, 4, "RO") + IntReg("Wo", 0x108, 4, "WO") +
    IntReg("FlagReg", 0x10C, 4, "RW") + IntReg("ModeReg", 0x110, 8, "RW") +
    IntReg("StartReg", 0x118, 4, "RW") + IntReg("Big", 0x120, 8, "RW") +
    IntReg("LimitedReg", 0x130, 4, "RW") + IntReg("MaxA", 0x134, 4, "RW") +
    IntReg("MaxB", 0x138, 4, "RW") + IntReg("Control", 0x13C, 4, "RW"));

class GenericFeatureTest : public ::testing::Test {
 protected:
  LoadedNodeMap map{kFeatures};
  GenericFeature Feature(const char* name) { return map.Feature(name); }
};

struct TypeRow {
  const char* node;
  std::uint32_t type;
  std::int32_t result;
};

TEST_F(GenericFeatureTest, TypeCodesFollowTheValueInterfaceFirst) {
  const TypeRow rows[] = {
      {"Width", FEATURE_TYPE_INTEGER, 1},  // an IntReg is an integer before a register
      {"Gain", FEATURE_TYPE_FLOAT, 1},       {"GainReg", FEATURE_TYPE_FLOAT, 1},
      {"Flag", FEATURE_TYPE_BOOLEAN, 1},     {"Start", FEATURE_TYPE_BOOLEAN, 1},
      {"Mode", FEATURE_TYPE_ENUMERATION, 1}, {"Label", FEATURE_TYPE_STRING, 1},
      {"Blob", FEATURE_TYPE_REGISTER, 1},    {"Root", FEATURE_TYPE_NONE, 0},
      {"Device", FEATURE_TYPE_NONE, 0},      {"EnumEntry_Mode_Off", FEATURE_TYPE_NONE, 0},
  };
  for (const TypeRow& row : rows) {
    std::uint32_t code = 99;
    EXPECT_EQ(Feature(row.node).GetType(code), row.result) << row.node;
    EXPECT_EQ(code, row.type) << row.node;
  }
  std::uint32_t code = 99;
  EXPECT_EQ(GenericFeature().GetType(code), 0);
  EXPECT_EQ(code, 0u);
}

TEST_F(GenericFeatureTest, AccessModesMapToTheirCodes) {
  const std::pair<const char*, std::uint32_t> rows[] = {
      {"Width", FEATURE_ACCESS_RW},        {"Ro", FEATURE_ACCESS_RO},
      {"Wo", FEATURE_ACCESS_WO},           {"NotImplemented", FEATURE_ACCESS_NI},
      {"NotAvailable", FEATURE_ACCESS_NA},
  };
  for (const auto& row : rows) {
    std::uint32_t code = 99;
    EXPECT_EQ(Feature(row.first).GetAccessMode(code), 1) << row.first;
    EXPECT_EQ(code, row.second) << row.first;
  }
}

TEST_F(GenericFeatureTest, VisibilityLevelsMapToTheirCodes) {
  const std::pair<const char*, std::uint32_t> rows[] = {
      {"Width", FEATURE_VISIBILITY_BEGINNER},
      {"Gain", FEATURE_VISIBILITY_EXPERT},
      {"Flag", FEATURE_VISIBILITY_GURU},
      {"Label", FEATURE_VISIBILITY_INVISIBLE},
  };
  for (const auto& row : rows) {
    std::uint32_t code = 99;
    EXPECT_EQ(Feature(row.first).GetVisibility(code), 1) << row.first;
    EXPECT_EQ(code, row.second) << row.first;
  }
}

TEST_F(GenericFeatureTest, NamesAreBoundedCopies) {
  char buffer[8];
  EXPECT_EQ(Feature("LimitedReg").GetName(buffer, sizeof(buffer)), 1);
  EXPECT_STREQ(buffer, "Limited");
  EXPECT_EQ(Feature("Width").GetDisplayName(buffer, sizeof(buffer)), 1);
  EXPECT_STREQ(buffer, "Width");
  std::memset(buffer, '#', sizeof(buffer));
  EXPECT_EQ(Feature("Width").GetName(buffer, 0), 1);
  EXPECT_EQ(buffer[0], '#');
}

TEST_F(GenericFeatureTest, DescriptionIsMeasuredThenCopied) {
  char buffer[16];
  std::memset(buffer, '#', sizeof(buffer));
  std::uint32_t size = 8;  // "Exposure" has 8 characters: cut by one
  EXPECT_EQ(Feature("Width").GetDescription(buffer, size), 1);
  EXPECT_STREQ(buffer, "Exposur");
  EXPECT_EQ(size, 8u);

  std::memset(buffer, '#', sizeof(buffer));
  size = 4;
  EXPECT_EQ(Feature("Width").GetDescription(buffer, size), 0);
  EXPECT_EQ(size, 9u);
  EXPECT_EQ(buffer[0], '#');

  size = sizeof(buffer);
  EXPECT_EQ(Feature("Gain").GetDescription(buffer, size), 1);
  EXPECT_STREQ(buffer, "Gain tip");  // tool tip stands in for an empty description

  std::memset(buffer, '#', sizeof(buffer));
  size = 0;
  EXPECT_EQ(Feature("Mode").GetDescription(buffer, size), 1);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(buffer[0], '#');
}

// One typed read: the register image, the buffer size, and what comes back.
struct ReadRow {
  const char* feature;
  std::int64_t address;  // register set before the read, -1 for none
  std::uint64_t stored;
  std::uint32_t size;
  std::int32_t result;
  std::uint64_t expected;  // the buffer's first 8 bytes afterwards
};

TEST_F(GenericFeatureTest, TypedReadsFillTheirFormOrNothing) {
  constexpr std::uint64_t kUntouched = 0x5555555555555555ull;
  auto bits = [](double value) {
    std::uint64_t raw;
    std::memcpy(&raw, &value, 8);
    return raw;
  };
  const std::uint64_t gainBits = bits(1.5);
  const ReadRow rows[] = {
      {"Big", 0x120, 1234567890123ull, 8, 1, bits(1234567890123.0)},
      {"Big", 0x120, 9007199254740993ull, 8, 1, bits(9007199254740992.0)},  // nearest double
      {"Gain", 0x200, gainBits, 4, 0, kUntouched},
      {"Gain", 0x200, gainBits, 8, 1, gainBits},
      {"Flag", 0x10C, 1, 8, 0, kUntouched},
      {"Flag", 0x10C, 1, 4, 1, 0x5555555500000001ull},
      {"Mode", 0x110, 4294967301ull, 8, 0, kUntouched},
      {"Mode", 0x110, 4294967301ull, 4, 1, 0x5555555500000005ull},  // low 32 bits
      {"Label", -1, 0, 4, 1, 0x5555555500434241ull},                // "ABC"
      {"Label", -1, 0, 0, 1, kUntouched},
      {"Wo", -1, 0, 8, 0, kUntouched},  // GenApi refuses: lastError stays empty
  };
  for (const ReadRow& row : rows) {
    SCOPED_TRACE(std::string(row.feature) + " size " + std::to_string(row.size));
    if (row.address >= 0) {
      map.port->SetLittleEndian(row.address, row.stored, 8);
      map.Node(row.feature)->InvalidateNode();
    }
    std::uint64_t buffer = kUntouched;
    GenericFeature feature = Feature(row.feature);
    EXPECT_EQ(feature.GetValue(&buffer, row.size), row.result);
    EXPECT_EQ(buffer, row.expected);
    EXPECT_EQ(feature.LastError(), "");
  }
}

TEST_F(GenericFeatureTest, UnreadableTypesRecordTheUnknownTypeText) {
  for (const char* name : {"Start", "Blob", "Root"}) {
    GenericFeature feature = Feature(name);
    std::uint64_t buffer = 0;
    EXPECT_EQ(feature.GetValue(&buffer, 8), 0) << name;
    EXPECT_EQ(feature.LastError(), "Read error: Unknown feature type ") << name;
  }
  GenericFeature empty;
  std::uint64_t buffer = 0;
  EXPECT_EQ(empty.GetValue(&buffer, 8), 0);
  EXPECT_EQ(empty.LastError(), "Read error: Unknown feature type ");
}

TEST_F(GenericFeatureTest, InvalidationReachesRegistersThroughFormulaNodes) {
  // Limited has the invalidating children LimitedReg (a register) and
  // MaxKnife (a formula over MaxA and MaxB). Control is not among them.
  for (int address : {0x130, 0x134, 0x138, 0x13C}) map.port->SetLittleEndian(address, 1, 4);
  auto read = [&](const char* name) {
    double value = 0;
    EXPECT_EQ(Feature(name).GetValue(&value, 8), 1) << name;
    return value;
  };
  for (const char* name : {"LimitedReg", "MaxA", "MaxB", "Control"}) EXPECT_EQ(read(name), 1);
  for (int address : {0x130, 0x134, 0x138, 0x13C}) map.port->SetLittleEndian(address, 2, 4);

  GenericFeature limited = Feature("Limited");
  limited.InvalidateRegisters(limited.Node());

  EXPECT_EQ(read("LimitedReg"), 2);
  EXPECT_EQ(read("MaxA"), 2);
  EXPECT_EQ(read("MaxB"), 2);
  EXPECT_EQ(read("Control"), 1);  // still served from the cache
}

}  // namespace
}  // namespace vq::test
