// CDeviceID on full device IDs, full templates, short IDs and malformed text.
#include <CLProtocol/DeviceID.h>
#include <gtest/gtest.h>

#include <vq/platform/environment.h>
#include <string>

namespace {

struct DeviceIDCase {
  const char* name;
  const char* text;
  const char* directory;
  const char* file;
  const char* manufacturer;
  const char* family;
  const char* model;
  const char* version;
  const char* serial;
  const char* shortID;
  const char* driverPath;
  bool identifiers;  // every token a C identifier, as device IDs must have them
};

class DeviceIDTable : public ::testing::TestWithParam<DeviceIDCase> {};

TEST_P(DeviceIDTable, SplitsIntoFields) {
  const DeviceIDCase& c = GetParam();
  CLProtocol::CDeviceID id;
  ASSERT_TRUE(id.FromString(c.text)) << c.text;
  EXPECT_STREQ(c.directory, id.GetDriverDirectory().c_str());
  EXPECT_STREQ(c.file, id.GetDriverFileName().c_str());
  EXPECT_STREQ(c.manufacturer, id.GetCameraManufacturer().c_str());
  EXPECT_STREQ(c.family, id.GetCameraFamily().c_str());
  EXPECT_STREQ(c.model, id.GetCameraModel().c_str());
  EXPECT_STREQ(c.version, id.GetCameraVersion().c_str());
  EXPECT_STREQ(c.serial, id.GetCameraSerialNumber().c_str());
  EXPECT_STREQ(c.shortID, id.GetShortDeviceID().c_str());
  EXPECT_STREQ(c.driverPath, id.GetDriverPath().c_str());
  EXPECT_STREQ(c.text, id.GetDeviceID(false).c_str());
  EXPECT_EQ(c.identifiers, id.HasIdentifierTokens());
}

INSTANTIATE_TEST_SUITE_P(
    Table, DeviceIDTable,
    ::testing::Values(
        DeviceIDCase{"FullID", "/opt/clp/Linux64_x64#libCLProtocolGenCP.so#KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117",
                     "/opt/clp/Linux64_x64", "libCLProtocolGenCP.so", "KORVA", "AreaScan",
                     "A2040M", "_1_4_2", "KA2040M_00117", "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117",
                     "/opt/clp/Linux64_x64/libCLProtocolGenCP.so", true},
        DeviceIDCase{"FullTemplateWithModel", "/d/Linux64_x64#libX.so#KORVA#LineScan#L4096",
                     "/d/Linux64_x64", "libX.so", "KORVA", "LineScan", "L4096", "", "",
                     "KORVA#LineScan#L4096", "/d/Linux64_x64/libX.so", true},
        DeviceIDCase{"FullTemplateManufacturerOnly", "/d#libX.so#KORVA", "/d", "libX.so",
                     "KORVA", "", "", "", "", "KORVA", "/d/libX.so", true},
        DeviceIDCase{"FullIDWithoutSerial", "/d#libX.so#Acme#Fam#Mod#Ver_2a", "/d", "libX.so",
                     "Acme", "Fam", "Mod", "Ver_2a", "", "Acme#Fam#Mod#Ver_2a", "/d/libX.so", true},
        DeviceIDCase{"ShortID", "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117", "", "", "KORVA",
                     "AreaScan", "A2040M", "_1_4_2", "KA2040M_00117",
                     "KORVA#AreaScan#A2040M#_1_4_2#KA2040M_00117", "", true},
        DeviceIDCase{"NoDirectoryNoPath", "$(VQ_CLP_UNSET)#libX.so#Acme", "", "libX.so",
                     "Acme", "", "", "", "", "Acme", "", true},
        DeviceIDCase{"ShortTemplate", "KORVA#AreaScan", "", "", "KORVA", "AreaScan", "", "",
                     "", "KORVA#AreaScan", "", true},
        DeviceIDCase{"ManufacturerOnly", "KORVA", "", "", "KORVA", "", "", "", "", "KORVA", "", true},
        DeviceIDCase{"EmptyFamily", "/d#libX.so#Acme##Mod", "/d", "libX.so", "Acme", "",
                     "Mod", "", "", "Acme##Mod", "/d/libX.so", false},
        DeviceIDCase{"DigitFirstVersion", "/d#libX.so#Acme#Fam#Mod#1_2_3", "/d", "libX.so", "Acme",
                     "Fam", "Mod", "1_2_3", "", "Acme#Fam#Mod#1_2_3", "/d/libX.so", false},
        DeviceIDCase{"DigitFirstFamily", "KORVA#2040", "", "", "KORVA", "2040", "", "", "",
                     "KORVA#2040", "", false}),
    [](const auto& info) { return std::string(info.param.name); });

// Malformed text is refused, and leaves an object that held an ID empty.
TEST(DeviceID, MalformedTextIsRefused) {
  for (const char* bad : {"", "/d#libX.so#A#B#C#D#E#F", "A#B#C#D#E#F", "/d#libX.so#",
                          "/d#libX.so##Fam", "/d##KORVA", "/d#libX.so#KOR VA#Fam",
                          "/d#libX.so#Acme#Fam#Mod#1.2.3", "###", "bad text#with blanks"}) {
    CLProtocol::CDeviceID id;
    ASSERT_TRUE(id.FromString("/d#libX.so#Acme#Fam"));
    EXPECT_FALSE(id.FromString(bad)) << bad;
    EXPECT_STREQ("", id.GetCameraManufacturer().c_str()) << bad;
    EXPECT_STREQ("", id.GetShortDeviceID().c_str()) << bad;
    EXPECT_FALSE(id.HasDriver()) << bad;
  }
}

TEST(DeviceID, ExpandsEnvironmentReferencesInTheDirectory) {
  ASSERT_TRUE(vq::platform::SetEnv("VQ_CLP_TEST_ROOT", "/opt/cams"));
  vq::platform::UnsetEnv("VQ_CLP_UNSET");
  CLProtocol::CDeviceID id;
  ASSERT_TRUE(id.FromString("$(VQ_CLP_TEST_ROOT)/Linux64_x64#libX.so#Acme"));
  EXPECT_STREQ("/opt/cams/Linux64_x64", id.GetDriverDirectory().c_str());
  EXPECT_STREQ("$(VQ_CLP_TEST_ROOT)/Linux64_x64", id.GetDriverDirectory(false).c_str());
  EXPECT_STREQ("/opt/cams/Linux64_x64/libX.so", id.GetDriverPath().c_str());
  EXPECT_STREQ("/opt/cams/Linux64_x64#libX.so#Acme", id.GetDeviceID().c_str());
  vq::platform::UnsetEnv("VQ_CLP_TEST_ROOT");
}

}  // namespace
