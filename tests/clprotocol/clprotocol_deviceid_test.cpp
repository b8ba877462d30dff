// CDeviceID on full device IDs, full templates, short IDs and malformed text.
#include <CLProtocol/DeviceID.h>
#include <gtest/gtest.h>

#include <vq/platform/environment.h>
#include <string>

namespace {

struct DeviceIDCase {
  const char* name;
  const char* text;
  bool valid;
  const char* directory;
  const char* file;
  const char* manufacturer;
  const char* family;
  const char* model;
  const char* version;
  const char* serial;
  const char* shortID;
  const char* driverPath;
};

class DeviceIDTable : public ::testing::TestWithParam<DeviceIDCase> {};

TEST_P(DeviceIDTable, SplitsIntoFields) {
  const DeviceIDCase& c = GetParam();
  CLProtocol::CDeviceID id;
  ASSERT_EQ(c.valid, id.FromString(c.text)) << c.text;
  EXPECT_STREQ(c.directory, id.GetDriverDirectory().c_str());
  EXPECT_STREQ(c.file, id.GetDriverFileName().c_str());
  EXPECT_STREQ(c.manufacturer, id.GetCameraManufacturer().c_str());
  EXPECT_STREQ(c.family, id.GetCameraFamily().c_str());
  EXPECT_STREQ(c.model, id.GetCameraModel().c_str());
  EXPECT_STREQ(c.version, id.GetCameraVersion().c_str());
  EXPECT_STREQ(c.serial, id.GetCameraSerialNumber().c_str());
  EXPECT_STREQ(c.shortID, id.GetShortDeviceID().c_str());
  EXPECT_STREQ(c.driverPath, id.GetDriverPath().c_str());
  if (c.valid) {
    EXPECT_STREQ(c.text, id.GetDeviceID(false).c_str());
  }
  vq::platform::UnsetEnv("VQ_CLP_UNSET");
}

INSTANTIATE_TEST_SUITE_P(
    Table, DeviceIDTable,
    ::testing::Values(
        DeviceIDCase{"FullID", "/opt/clp/Linux64_x64#libCLProtocolGenCP.so#KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117",
                     true, "/opt/clp/Linux64_x64", "libCLProtocolGenCP.so", "KORVA", "AreaScan",
                     "A2040M", "_1_4_2", "KA2040M_00117", "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117",
                     "/opt/clp/Linux64_x64/libCLProtocolGenCP.so"},
        DeviceIDCase{"FullTemplateWithModel", "/d/Linux64_x64#libX.so#KORVA#LineScan#L4096", true,
                     "/d/Linux64_x64", "libX.so", "KORVA", "LineScan", "L4096", "", "",
                     "KORVA#LineScan#L4096", "/d/Linux64_x64/libX.so"},
        DeviceIDCase{"FullTemplateManufacturerOnly", "/d#libX.so#KORVA", true, "/d", "libX.so",
                     "KORVA", "", "", "", "", "KORVA", "/d/libX.so"},
        DeviceIDCase{"FullIDWithoutSerial", "/d#libX.so#Acme#Fam#Mod#Ver_2a", true, "/d", "libX.so",
                     "Acme", "Fam", "Mod", "Ver_2a", "", "Acme#Fam#Mod#Ver_2a", "/d/libX.so"},
        DeviceIDCase{"ShortID", "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117", true, "", "", "KORVA",
                     "AreaScan", "A2040M", "_1_4_2", "KA2040M_00117",
                     "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117", ""},
        DeviceIDCase{"NoDirectoryNoPath", "$(VQ_CLP_UNSET)#libX.so#Acme", true, "", "libX.so",
                     "Acme", "", "", "", "", "Acme", ""},
        DeviceIDCase{"ShortTemplate", "KORVA#AreaScan", true, "", "", "KORVA", "AreaScan", "", "",
                     "", "KORVA#AreaScan", ""},
        DeviceIDCase{"ManufacturerOnly", "KORVA", true, "", "", "KORVA", "", "", "", "", "KORVA", ""},
        DeviceIDCase{"Empty", "", false, "", "", "", "", "", "", "", "", ""},
        DeviceIDCase{"TooManyTokens", "/d#libX.so#A#B#C#D#E#F", false, "", "", "", "", "", "", "",
                     "", ""},
        DeviceIDCase{"TooManyShortTokens", "A#B#C#D#E#F", false, "", "", "", "", "", "", "", "", ""},
        DeviceIDCase{"NoManufacturer", "/d#libX.so#", false, "", "", "", "", "", "", "", "", ""},
        DeviceIDCase{"EmptyManufacturer", "/d#libX.so##Fam", false, "", "", "", "", "", "", "", "",
                     ""},
        DeviceIDCase{"NoFileName", "/d##KORVA", false, "", "", "", "", "", "", "", "", ""},
        DeviceIDCase{"BadCharacterInToken", "/d#libX.so#KOR VA#Fam", false, "", "", "", "", "", "",
                     "", "", ""},
        DeviceIDCase{"DottedVersion", "/d#libX.so#Acme#Fam#Mod#1.2.3", false, "", "", "", "", "",
                     "", "", "", ""},
        DeviceIDCase{"EmptyFamily", "/d#libX.so#Acme##Mod", true, "/d", "libX.so", "Acme", "",
                     "Mod", "", "", "Acme##Mod", "/d/libX.so"},
        DeviceIDCase{"OnlySeparators", "###", false, "", "", "", "", "", "", "", "", ""}),
    [](const auto& info) { return std::string(info.param.name); });

// Tokens that parse may still break the rule device IDs follow: C identifiers only.
TEST(DeviceID, TokensFollowTheIdentifierRule) {
  const struct {
    const char* text;
    bool identifiers;
  } cases[] = {{"/d#libX.so#KORVA#AreaScan#A2040M#_1_4_2#SN_1", true},
               {"KORVA", true},
               {"/d#libX.so#Acme##Mod", false},
               {"/d#libX.so#Acme#Fam#Mod#1_2_3", false},
               {"KORVA#2040", false}};
  for (const auto& c : cases) {
    CLProtocol::CDeviceID id;
    ASSERT_TRUE(id.FromString(c.text)) << c.text;
    EXPECT_EQ(c.identifiers, id.HasIdentifierTokens()) << c.text;
  }
}

TEST(DeviceID, ExpandsEnvironmentReferencesInTheDirectory) {
  ASSERT_TRUE(vq::platform::SetEnv("VQ_CLP_TEST_ROOT", "/opt/cams"));
  CLProtocol::CDeviceID id;
  ASSERT_TRUE(id.FromString("$(VQ_CLP_TEST_ROOT)/Linux64_x64#libX.so#Acme"));
  EXPECT_STREQ("/opt/cams/Linux64_x64", id.GetDriverDirectory().c_str());
  EXPECT_STREQ("$(VQ_CLP_TEST_ROOT)/Linux64_x64", id.GetDriverDirectory(false).c_str());
  EXPECT_STREQ("/opt/cams/Linux64_x64/libX.so", id.GetDriverPath().c_str());
  EXPECT_STREQ("/opt/cams/Linux64_x64#libX.so#Acme", id.GetDeviceID().c_str());
  vq::platform::UnsetEnv("VQ_CLP_TEST_ROOT");
}

TEST(DeviceID, FailedParseLeavesTheObjectEmpty) {
  CLProtocol::CDeviceID id;
  ASSERT_TRUE(id.FromString("/d#libX.so#Acme#Fam"));
  EXPECT_FALSE(id.FromString("bad text#with blanks"));
  EXPECT_STREQ("", id.GetCameraManufacturer().c_str());
  EXPECT_STREQ("", id.GetShortDeviceID().c_str());
  EXPECT_FALSE(id.HasDriver());
}

TEST(DeviceID, CopiesAreIndependent) {
  CLProtocol::CDeviceID a;
  ASSERT_TRUE(a.FromString("/d#libX.so#Acme#Fam"));
  CLProtocol::CDeviceID b(a);
  ASSERT_TRUE(a.FromString("Other"));
  EXPECT_STREQ("Acme", b.GetCameraManufacturer().c_str());
  EXPECT_STREQ("#", CLProtocol::CDeviceID::GetTokenSeparator());
}

}  // namespace
