// Pieces of the GenCP driver that need no serial link: device-ID tokens, XML IDs, the device
// list, register look-up in descriptions, and ZIP inflation of bad input. (Template matching is
// tested through probes in the gencp suites.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DriverFailure.h"
#include "Identity.h"
#include "RegisterLookup.h"
#include "Templates.h"
#include "XmlId.h"
#include "Zip.h"

namespace {

using namespace vq::gencpdrv;

struct TokenCase {
  const char* raw;
  const char* token;
};

class Tokens : public ::testing::TestWithParam<TokenCase> {};

TEST_P(Tokens, KeepOnlyIdentifierCharacters) {
  EXPECT_EQ(GetParam().token, toIdentifierToken(GetParam().raw));
}

// Tokens are C identifiers: never empty, never starting with a digit.
INSTANTIATE_TEST_SUITE_P(Table, Tokens,
                         ::testing::Values(TokenCase{"KORVA", "KORVA"}, TokenCase{"1.4.2", "_1_4_2"},
                                           TokenCase{"KA2040M-00117", "KA2040M_00117"},
                                           TokenCase{"  Area  Scan ", "Area_Scan"},
                                           TokenCase{"a_b", "a_b"}, TokenCase{"a_.b", "a__b"},
                                           TokenCase{"--", "_"}, TokenCase{"", "_"},
                                           TokenCase{"K\xC3\xB6rva", "K_rva"},
                                           TokenCase{"Ver 2a (beta)", "Ver_2a_beta"}));

struct StringCase {
  std::vector<uint8_t> bytes;
  uint32_t encoding;
  const char* text;
};

class Strings : public ::testing::TestWithParam<StringCase> {};

TEST_P(Strings, DecodeWholeInTheirEncoding) {
  const auto& c = GetParam();
  EXPECT_EQ(c.text, registerString(c.bytes.data(), c.bytes.size(), c.encoding));
}

INSTANTIATE_TEST_SUITE_P(
    Table, Strings,
    ::testing::Values(StringCase{{'K', 'O', 0, 'X'}, kEncodingAscii, "KO"},
                      StringCase{{'K', 'O', 'R'}, kEncodingUtf8, "KOR"},
                      StringCase{{0, 'K', 0, 'O', 0, 0, 0, 'X'}, kEncodingUtf16, "KO"},
                      StringCase{{'K', 0, 'O', 0, 0, 0}, kEncodingUtf16, "KO"},
                      StringCase{{0xFF, 0xFE, 'K', 0, 0xF6, 0}, kEncodingUtf16, "K\xC3\xB6"},
                      StringCase{{0xD8, 0x3D, 0xDE, 0x00, 0, 'A'}, kEncodingUtf16,
                                 "\xF0\x9F\x98\x80" "A"},
                      StringCase{{0, 'K', 0}, kEncodingUtf16, "K"}));

TEST(XmlIds, RoundTripAndRejectMalformedText) {
  const auto id = XmlId::parse("SchemaVersion.1.1@KORVA#AreaScan#A2040M@XMLVersion.1.4.2");
  ASSERT_TRUE(id);
  EXPECT_EQ(1u, id->schemaMinor);
  EXPECT_EQ("KORVA#AreaScan#A2040M", id->deviceTemplate);
  EXPECT_EQ(2u, id->fileSubminor);
  EXPECT_EQ("SchemaVersion.1.1@KORVA#AreaScan#A2040M@XMLVersion.1.4.2", id->toString());
  for (const char* bad : {"", "@@", "SchemaVersion.1@KORVA@XMLVersion.1.0.0",
                          "SchemaVersion.1.1@KORVA@XMLVersion.1.0", "SchemaVersion.1.1@@XMLVersion.1.0.0",
                          "SchemaVersion.1.1@KO RVA@XMLVersion.1.0.0",
                          "SchemaVersion.1.1@KORVA@XMLVersion.1.0.0@extra",
                          "SchemaVersion.99999999999.1@KORVA@XMLVersion.1.0.0"}) {
    EXPECT_FALSE(XmlId::parse(bad)) << bad;
  }
}

TEST(XmlIds, PreferHigherSchemaThenLongerTemplateThenHigherVersion) {
  const auto a = *XmlId::parse("SchemaVersion.1.1@KORVA@XMLVersion.9.0.0");
  const auto b = *XmlId::parse("SchemaVersion.1.0@KORVA#AreaScan@XMLVersion.9.0.0");
  const auto c = *XmlId::parse("SchemaVersion.1.1@KORVA#AreaScan@XMLVersion.1.0.0");
  EXPECT_TRUE(preferredOver(a, b));
  EXPECT_TRUE(preferredOver(c, a));
  EXPECT_FALSE(preferredOver(a, a));
  EXPECT_TRUE(isSupportedSchema(b));
  EXPECT_FALSE(isSupportedSchema(*XmlId::parse("SchemaVersion.99.0@KORVA@XMLVersion.9.0.0")));
  EXPECT_FALSE(isSupportedSchema(*XmlId::parse("SchemaVersion.1.2@KORVA@XMLVersion.9.0.0")));
}

TEST(DeviceList, SkipsCommentsBlanksAndInvalidLines) {
  const auto templates =
      parseDeviceList("; comment\n\nKORVA#AreaScan#A2040M\r\n  KORVA#LineScan  \nbad line\nKORVA#AreaScan#A2040M\n");
  EXPECT_EQ((std::vector<std::string>{"KORVA#AreaScan#A2040M", "KORVA#LineScan"}), templates);
  EXPECT_TRUE(parseDeviceList("").empty());
}

struct LookupCase {
  const char* name;
  const char* xml;
  const char* feature;
  long long address;  // -1: not found
};

class Lookup : public ::testing::TestWithParam<LookupCase> {};

TEST_P(Lookup, FollowsValuePointersToRegisters) {
  const auto address = findRegisterAddress(GetParam().xml, GetParam().feature);
  if (GetParam().address < 0) {
    EXPECT_FALSE(address);
  } else {
    ASSERT_TRUE(address);
    EXPECT_EQ(static_cast<uint64_t>(GetParam().address), *address);
  }
}

constexpr const char* kDescription = R"(<?xml version="1.0"?>
<RegisterDescription>
  <Integer Name="Width"><pValue>WidthReg</pValue></Integer>
  <IntReg Name="WidthReg"><Address>0x40108</Address><Length>4</Length></IntReg>
  <Integer Name="Base"><Value>0x1000</Value></Integer>
  <IntReg Name="Offsetted"><Address>0x10</Address><pAddress>Base</pAddress></IntReg>
  <Integer Name="LoopA"><pValue>LoopB</pValue></Integer>
  <Integer Name="LoopB"><pValue>LoopA</pValue></Integer>
  <StructReg Name="Flags"><Address>0x200</Address><StructEntry Name="FlagA"><Bit>0</Bit></StructEntry></StructReg>
  <Integer Name="Computed"><pValue>Knife</pValue></Integer>
  <IntSwissKnife Name="Knife"><Formula>1</Formula></IntSwissKnife>
</RegisterDescription>)";

INSTANTIATE_TEST_SUITE_P(
    Table, Lookup,
    ::testing::Values(LookupCase{"Feature", kDescription, "Width", 0x40108},
                      LookupCase{"Register", kDescription, "WidthReg", 0x40108},
                      LookupCase{"PointerAddress", kDescription, "Offsetted", 0x1010},
                      LookupCase{"StructEntry", kDescription, "FlagA", 0x200},
                      LookupCase{"Cycle", kDescription, "LoopA", -1},
                      LookupCase{"Formula", kDescription, "Computed", -1},
                      LookupCase{"Unknown", kDescription, "Nothing", -1},
                      LookupCase{"MalformedXml", "<RegisterDescription><IntReg Name=", "Width", -1},
                      LookupCase{"EmptyText", "", "Width", -1},
                      LookupCase{"BadNumber", "<a><IntReg Name=\"R\"><Address>0xZZ</Address></IntReg></a>",
                                 "R", -1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Zip, RefusesDamagedArchivesWithTheDescriptionCode) {
  const std::vector<std::vector<uint8_t>> bad = {
      {}, {'P', 'K', 3, 4}, std::vector<uint8_t>(100, 0xAB), {'<', 'x', 'm', 'l', '>'}};
  for (const auto& archive : bad) {
    try {
      inflateSingleXml(archive);
      ADD_FAILURE() << "accepted " << archive.size() << " bytes";
    } catch (const DriverFailure& failure) {
      EXPECT_EQ(CL_ERR_NO_XMLDESCRIPTION_FOUND, failure.code());
    }
  }
}

}  // namespace
