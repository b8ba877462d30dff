// Profiles, values files and description reading, on the shipped example profiles and on
// broken inputs.
#include <gtest/gtest.h>

#include <algorithm>

#include "sim_test_support.h"
#include "vq/sim/DescriptionMap.h"
#include "vq/sim/Values.h"

using namespace vq::sim;

TEST(SimProfile, ExampleProfilesLoad) {
  const Profile area = simtest::areaProfile();
  EXPECT_EQ(area.manufacturer, "KORVA");
  EXPECT_EQ(area.family, "AreaScan");
  EXPECT_TRUE(area.zipDescription);
  EXPECT_EQ(area.saveCommand, "KORVASaveCameraConfiguration");
  EXPECT_EQ(area.supportedBaudRates, 0xFFu);
  const Profile line = simtest::lineProfile();
  EXPECT_EQ(line.family, "LineScan");
  EXPECT_FALSE(line.zipDescription);
  EXPECT_EQ(line.supportedBaudRates, 0x1Bu);
}

TEST(SimProfile, DefaultProfileIsTheAreaScanCamera) {
  const std::string dir = findDefaultProfile();
  ASSERT_FALSE(dir.empty());
  EXPECT_EQ(loadProfile(dir).family, "AreaScan");
  EXPECT_EQ(findDefaultProfile("/nonexistent/bin/vqcam-sim"), dir);
}

TEST(SimProfile, AreaDescriptionHasTheNodesTheModuleNeeds) {
  const auto info = readDescription(simtest::areaProfile().descriptionText);
  EXPECT_TRUE(info.skipped.empty());
  EXPECT_EQ(info.schemaMajor, 1u);
  EXPECT_EQ(info.schemaMinor, 1u);
  EXPECT_EQ(info.fileMajor, 1u);
  EXPECT_EQ(info.fileMinor, 4u);
  EXPECT_EQ(info.fileSubMinor, 2u);
  EXPECT_EQ(info.modelName, "KORVA_A2040M");
  auto hasRegister = [&](const std::string& name, uint64_t address) {
    return std::any_of(info.registers.begin(), info.registers.end(), [&](const RegisterDef& r) {
      return r.name == name && r.address == address;
    });
  };
  EXPECT_TRUE(hasRegister("DeviceModelName", 0x44));
  EXPECT_TRUE(hasRegister("DeviceSerialPortBaudRateReg", 0x10004));
  const auto save =
      std::find_if(info.commands.begin(), info.commands.end(),
                   [](const CommandDef& c) { return c.name == "KORVASaveCameraConfiguration"; });
  ASSERT_NE(save, info.commands.end());
  EXPECT_EQ(save->address, 0x40510u);
  EXPECT_EQ(save->commandValue, 1);
  EXPECT_EQ(info.commands.size(), 7u);
}

TEST(SimProfile, BrokenProfilesAreRefusedWithAReason) {
  const std::string dir = simtest::areaProfileDir();
  struct Case {
    const char* name;
    const char* ini;
    const char* expected;
  };
  const Case cases[] = {
      {"NoModel", "manufacturer = KORVA\ndescription = KORVA_AreaScan.xml\n", "model"},
      {"NoDescription", "manufacturer = KORVA\nmodel = X\n", "description"},
      {"MissingFile", "manufacturer = KORVA\nmodel = X\ndescription = nope.xml\n", "nope.xml"},
      {"BadCompression",
       "manufacturer = KORVA\nmodel = X\ndescription = KORVA_AreaScan.xml\ncompression = rar\n",
       "compression"},
      {"No9600",
       "manufacturer = KORVA\nmodel = X\ndescription = KORVA_AreaScan.xml\nbaud_rates = 0x10\n",
       "9600"},
      {"NotANumber",
       "manufacturer = KORVA\nmodel = X\ndescription = KORVA_AreaScan.xml\nsave_time_ms = soon\n",
       "save_time_ms"},
      {"NoEquals", "manufacturer KORVA\n", "line 1"},
  };
  for (const auto& c : cases) {
    try {
      parseProfile(c.ini, dir);
      ADD_FAILURE() << c.name << " was accepted";
    } catch (const ProfileError& e) {
      EXPECT_NE(std::string(e.what()).find(c.expected), std::string::npos)
          << c.name << ": " << e.what();
    }
  }
}

TEST(SimProfile, MalformedDescriptionIsRefused) {
  EXPECT_THROW(readDescription("<RegisterDescription><IntReg"), ProfileError);
  EXPECT_THROW(readDescription("<Other/>"), ProfileError);
  EXPECT_THROW(readDescription(""), ProfileError);
  // Computed addresses cannot be served; such registers are listed as skipped.
  const auto info = readDescription(
      "<RegisterDescription><IntReg Name='A'><pAddress>B</pAddress><Length>4</Length></IntReg>"
      "<IntReg Name='C'><Address>0x10</Address><Address>0x4</Address><Length>2</Length>"
      "<AccessMode>RW</AccessMode></IntReg></RegisterDescription>");
  ASSERT_EQ(info.skipped.size(), 1u);
  EXPECT_EQ(info.skipped[0], "A");
  ASSERT_EQ(info.registers.size(), 1u);
  EXPECT_EQ(info.registers[0].address, 0x14u);
  EXPECT_EQ(info.registers[0].access, Access::RW);
}

TEST(SimValues, EveryTypeEncodesBigEndian) {
  const auto values = parseValues(
      "# comment\n0x10 u8 0xAB\n0x20 u16 258\n0x30 u32 0x01020304\n0x40 i16 -2\n"
      "0x50 f32 1.0\n0x60 str hello world\n0x70 hex 00 ff 10\n\n0x80 u64 1 # trailing\n");
  ASSERT_EQ(values.size(), 8u);
  EXPECT_EQ(values[0].bytes, (std::vector<uint8_t>{0xAB}));
  EXPECT_EQ(values[1].bytes, (std::vector<uint8_t>{0x01, 0x02}));
  EXPECT_EQ(values[2].bytes, (std::vector<uint8_t>{1, 2, 3, 4}));
  EXPECT_EQ(values[3].bytes, (std::vector<uint8_t>{0xFF, 0xFE}));
  EXPECT_EQ(values[4].bytes, (std::vector<uint8_t>{0x3F, 0x80, 0, 0}));
  EXPECT_EQ(std::string(values[5].bytes.begin(), values[5].bytes.end()), "hello world");
  EXPECT_EQ(values[6].bytes, (std::vector<uint8_t>{0x00, 0xFF, 0x10}));
  EXPECT_EQ(values[7].bytes, (std::vector<uint8_t>{0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(SimValues, MalformedLinesNameTheLine) {
  for (const char* text : {"0x10 u32\n", "zz u32 1\n", "0x10 q32 1\n", "0x10 hex abc\n",
                           "0x10 u32 twelve\n", "0x10\n", "-5 u8 1\n"}) {
    EXPECT_THROW(parseValues(text), ProfileError) << text;
  }
}
