// The simulated camera below the protocol: profiles, values files and descriptions read, the
// address space, and the device (bootstrap, manifest, commands, configuration store).
#include <gtest/gtest.h>

#include <algorithm>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Constants.h"
#include "vq/gencp/Endian.h"
#include "vq/gencp/Sha1.h"
#include "vq/sim/DescriptionMap.h"
#include "vq/sim/Device.h"
#include "vq/sim/RegisterSpace.h"
#include "vq/sim/Values.h"

using namespace vq::sim;
using namespace vq::gencp;

namespace {

uint32_t u32At(const Device& device, uint64_t address) {
  const auto outcome = device.read(address, 4);
  return outcome.data.size() == 4 ? readU32(outcome.data.data()) : 0xDEADBEEF;
}

std::string stringAt(const Device& device, uint64_t address) {
  const auto outcome = device.read(address, 64);
  std::string text(outcome.data.begin(), outcome.data.end());
  return text.substr(0, text.find('\0'));
}

// A device whose host has opened it (writes outside the bootstrap block need that).
Device openDevice(const Profile& profile) {
  Device device(profile);
  device.write(abrm::kAccessPrivilege, simtest::u32Bytes(kPrivilegeOpen));
  return device;
}

}  // namespace

TEST(SimProfile, DefaultProfileIsTheAreaScanCamera) {
  const std::string dir = findDefaultProfile();
  ASSERT_FALSE(dir.empty());
  EXPECT_EQ(loadProfile(dir).family, "AreaScan");
  EXPECT_EQ(findDefaultProfile("/nonexistent/bin/vqcam-sim"), dir);
}

TEST(SimProfile, AreaDescriptionGivesRegistersAndCommands) {
  const auto info = readDescription(simtest::areaProfile().descriptionText);
  EXPECT_TRUE(info.skipped.empty());
  EXPECT_EQ(info.modelName, "KORVA_A2040M");
  EXPECT_TRUE(std::any_of(info.registers.begin(), info.registers.end(), [](const RegisterDef& r) {
    return r.name == "DeviceSerialPortBaudRateReg" && r.address == 0x10004;
  }));
  const auto save =
      std::find_if(info.commands.begin(), info.commands.end(),
                   [](const CommandDef& c) { return c.name == "KORVASaveCameraConfiguration"; });
  ASSERT_NE(save, info.commands.end());
  EXPECT_EQ(save->address, 0x40510u);
  EXPECT_EQ(save->commandValue, 1);
  EXPECT_EQ(info.commands.size(), 7u);
}

TEST(SimProfile, BrokenProfilesAreRefusedWithAReason) {
  const std::string base = "manufacturer = KORVA\nmodel = X\ndescription = KORVA_AreaScan.xml\n";
  const struct {
    std::string ini;
    const char* expected;
  } cases[] = {
      {"manufacturer = KORVA\ndescription = KORVA_AreaScan.xml\n", "model"},
      {"manufacturer = KORVA\nmodel = X\n", "description"},
      {"manufacturer = KORVA\nmodel = X\ndescription = nope.xml\n", "nope.xml"},
      {base + "compression = rar\n", "compression"},
      {base + "baud_rates = 0x10\n", "9600"},
      {base + "save_time_ms = soon\n", "save_time_ms"},
      {"manufacturer KORVA\n", "line 1"},
  };
  for (const auto& c : cases) {
    try {
      parseProfile(c.ini, simtest::areaProfileDir());
      ADD_FAILURE() << c.ini << " was accepted";
    } catch (const ProfileError& e) {
      EXPECT_NE(std::string(e.what()).find(c.expected), std::string::npos) << e.what();
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

TEST(SimValues, EveryTypeEncodesBigEndianAndMalformedLinesAreRefused) {
  const auto values = parseValues(
      "# comment\n0x10 u8 0xAB\n0x20 u16 258\n0x30 u32 0x01020304\n0x40 i16 -2\n"
      "0x50 f32 1.0\n0x60 str hello world\n0x70 hex 00 ff 10\n\n0x80 u64 1 # trailing\n");
  const std::vector<std::vector<uint8_t>> expected = {
      {0xAB}, {1, 2}, {1, 2, 3, 4}, {0xFF, 0xFE}, {0x3F, 0x80, 0, 0},
      {'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd'}, {0, 0xFF, 0x10},
      {0, 0, 0, 0, 0, 0, 0, 1}};
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i].bytes, expected[i]) << i;
  for (const char* text : {"0x10 u32\n", "zz u32 1\n", "0x10 q32 1\n", "0x10 hex abc\n",
                           "0x10 u32 twelve\n", "0x10\n", "-5 u8 1\n"}) {
    EXPECT_THROW(parseValues(text), ProfileError) << text;
  }
}

TEST(SimRegisterSpace, AccessStatusTable) {
  RegisterSpace space;
  space.add(0x100, 4, Access::RW);
  space.add(0x104, 4, Access::RO);
  space.add(0x108, 4, Access::WO);
  std::vector<uint8_t> out;
  struct Case {
    const char* name;
    uint64_t address;
    uint64_t length;
    uint16_t readStatus;
    uint16_t writeStatus;
  };
  const Case cases[] = {
      {"ReadWrite", 0x100, 4, kStatusSuccess, kStatusSuccess},
      {"ReadOnly", 0x104, 4, kStatusSuccess, kStatusWriteProtect},
      {"WriteOnly", 0x108, 4, kStatusAccessDenied, kStatusSuccess},
      {"SpanRwRo", 0x102, 4, kStatusSuccess, kStatusWriteProtect},
      {"BeforeFirst", 0xFC, 4, kStatusInvalidAddress, kStatusInvalidAddress},
      {"PastLast", 0x10A, 4, kStatusInvalidAddress, kStatusInvalidAddress},
      {"Gap", 0x200, 1, kStatusInvalidAddress, kStatusInvalidAddress},
      {"WrapsAround", UINT64_MAX - 1, 4, kStatusInvalidAddress, kStatusInvalidAddress},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(space.read(c.address, c.length, out), c.readStatus) << c.name;
    EXPECT_EQ(space.write(c.address, std::vector<uint8_t>(c.length, 0x11)), c.writeStatus)
        << c.name;
  }
}

TEST(SimRegisterSpace, BlocksMergeAndReadsSpanThemInOrder) {
  RegisterSpace space;
  space.add(0x10, 2, Access::RW);
  space.add(0x12, 2, Access::RW);
  ASSERT_EQ(space.write(0x11, {1, 2, 3}), kStatusSuccess);
  std::vector<uint8_t> out;
  ASSERT_EQ(space.read(0x10, 4, out), kStatusSuccess);
  EXPECT_EQ(out, (std::vector<uint8_t>{0, 1, 2, 3}));

  RegisterSpace merged;
  merged.add(0x20, 4, Access::RO);
  merged.poke(0x20, {9, 9, 9, 9});
  merged.add(0x22, 4, Access::RW);  // overlaps the end of the first
  ASSERT_EQ(merged.blocks().size(), 1u);
  const auto& block = merged.blocks().begin()->second;
  EXPECT_EQ(block.address, 0x20u);
  EXPECT_EQ(block.data.size(), 6u);
  EXPECT_EQ(block.access, Access::RW);
  ASSERT_TRUE(merged.peek(0x20, 6, out));
  EXPECT_EQ(out, (std::vector<uint8_t>{9, 9, 9, 9, 0, 0}));
  // A block bridging two others merges all three.
  merged.add(0x40, 2, Access::RO);
  merged.add(0x25, 0x1C, Access::RO);
  EXPECT_EQ(merged.blocks().size(), 1u);
  merged.add(0x80, 0, Access::RW);
  EXPECT_EQ(merged.blocks().size(), 1u);
}

TEST(SimDevice, EveryDescriptionRegisterIsServedWithItsAccess) {
  for (const auto& dir : {simtest::areaProfileDir(), simtest::lineProfileDir()}) {
    Device device(loadProfile(dir));
    ASSERT_FALSE(device.description().registers.empty());
    for (const auto& reg : device.description().registers) {
      const auto outcome = device.read(reg.address, reg.length);
      EXPECT_EQ(outcome.status, kStatusSuccess) << dir << " " << reg.name;
      EXPECT_EQ(outcome.data.size(), reg.length) << reg.name;
      if (reg.access == Access::RO && reg.address >= abrm::kAbrmEnd + 0x10000) {
        Device scratch = openDevice(loadProfile(dir));
        EXPECT_EQ(scratch.write(reg.address, outcome.data).status, kStatusWriteProtect) << reg.name;
      }
    }
  }
}

TEST(SimDevice, AddressesOutsideTheDescriptionAreInvalid) {
  Device device = openDevice(simtest::areaProfile());
  for (uint64_t address : {0x3FFFCull, 0x40040ull, 0x40800ull, 0x30000ull, 0x0250ull, 0x1F0ull,
                           0x10008ull, 0xFFFFFFFFFFFFFFF0ull}) {
    EXPECT_EQ(device.read(address, 4).status, kStatusInvalidAddress) << std::hex << address;
    EXPECT_EQ(device.write(address, {0, 0, 0, 1}).status, kStatusInvalidAddress)
        << std::hex << address;
  }
}

TEST(SimDevice, BootstrapCarriesTheProfileIdentity) {
  Device device(simtest::areaProfile());
  EXPECT_EQ(u32At(device, abrm::kGenCPVersion), 0x00010003u);
  EXPECT_EQ(stringAt(device, abrm::kManufacturerName), "KORVA");
  EXPECT_EQ(stringAt(device, abrm::kModelName), "A2040M");
  EXPECT_EQ(stringAt(device, abrm::kFamilyName), "AreaScan");
  EXPECT_EQ(stringAt(device, abrm::kDeviceVersion), "1.4.2");
  EXPECT_EQ(stringAt(device, abrm::kSerialNumber), "KA2040M-00117");
  EXPECT_EQ(stringAt(device, abrm::kUserDefinedName), "demo camera");
  const uint64_t capabilities = readU64(device.read(abrm::kDeviceCapability, 8).data.data());
  for (uint64_t bit : {abrm::kCapSbrm, abrm::kCapFamilyName, abrm::kCapWrittenLength,
                       abrm::kCapAccessPrivilegeHeartbeat}) {
    EXPECT_TRUE(capabilities & bit) << bit;
  }
  EXPECT_EQ((capabilities >> 4) & 0xF, 0u);  // ASCII strings
  EXPECT_EQ(u32At(device, abrm::kMaxDeviceResponseTime), 300u);
  EXPECT_EQ(readU64(device.read(abrm::kSbrmAddress, 8).data.data()), kSbrmAddress);
  EXPECT_EQ(u32At(device, kSbrmAddress), 0xFFu);
  EXPECT_EQ(u32At(device, kSbrmAddress + 4), kBaud9600);
  // Read-only identity, writable user name.
  EXPECT_EQ(device.write(abrm::kModelName, {'X'}).status, kStatusWriteProtect);
  EXPECT_EQ(device.write(abrm::kUserDefinedName, {'c', 'a', 'm', 0}).status, kStatusSuccess);
  EXPECT_EQ(stringAt(device, abrm::kUserDefinedName), "cam");
}

TEST(SimDevice, ProfileChoosesVersionEncodingAndHeartbeat) {
  Profile profile = simtest::areaProfile();
  profile.gencpVersion = 0x00020001;
  profile.stringEncoding = 2;
  profile.manufacturer = "K\xC3\xB6rva";  // U+00F6 takes one UTF-16 unit
  profile.heartbeatTimeoutMs = 0;
  Device device(profile);
  EXPECT_EQ(u32At(device, abrm::kGenCPVersion), 0x00020001u);
  const uint64_t capabilities = readU64(device.read(abrm::kDeviceCapability, 8).data.data());
  EXPECT_EQ((capabilities >> 4) & 0xF, 2u);
  EXPECT_FALSE(capabilities & abrm::kCapAccessPrivilegeHeartbeat);
  const auto name = device.read(abrm::kManufacturerName, 12).data;
  EXPECT_EQ(name, (std::vector<uint8_t>{0, 'K', 0, 0xF6, 0, 'r', 0, 'v', 0, 'a', 0, 0}));
  // Without the capability there is nothing to open: writes need no privilege.
  EXPECT_EQ(device.read(abrm::kAccessPrivilege, 4).status, kStatusInvalidAddress);
  EXPECT_EQ(device.write(0x40108, {0, 0, 1, 0}).status, kStatusSuccess);
}

TEST(SimDevice, ManifestDescribesTheServedFile) {
  struct Case {
    std::string dir;
    uint32_t format;
    std::string magic;
    uint32_t fileVersion;
  };
  const Case cases[] = {
      {simtest::areaProfileDir(), manifest::kFormatZip, "PK\x03\x04", 0x01040002},
      {simtest::lineProfileDir(), manifest::kFormatUncompressed, "<?xml", 0x02000007}};
  for (const auto& c : cases) {
    Device device(loadProfile(c.dir));
    const auto table = device.read(kManifestAddress, 8 + 64).data;
    ASSERT_EQ(table.size(), 72u);
    EXPECT_EQ(readU64(table.data()), 1u);
    const uint8_t* entry = table.data() + 8;
    EXPECT_EQ(readU32(entry + manifest::kFileVersion), c.fileVersion);
    const uint32_t schema = readU32(entry + manifest::kSchemaAndFormat);
    EXPECT_EQ(manifest::fileFormat(schema), c.format);
    EXPECT_EQ(manifest::schemaMajor(schema), 1u);
    EXPECT_EQ(manifest::schemaMinor(schema), 1u);
    const uint64_t address = readU64(entry + manifest::kFileAddress);
    const uint64_t size = readU64(entry + manifest::kFileSize);
    EXPECT_EQ(size, device.descriptionFile().size());
    const auto file = device.read(address, size);
    ASSERT_EQ(file.status, kStatusSuccess);
    EXPECT_EQ(std::string(file.data.begin(), file.data.begin() + c.magic.size()), c.magic);
    const Sha1Digest digest = sha1(file.data.data(), file.data.size());
    EXPECT_TRUE(std::equal(digest.begin(), digest.end(), entry + manifest::kSha1));
    EXPECT_EQ(device.read(address + size, 1).status, kStatusInvalidAddress);
  }
  // The zipped description is much smaller than the text.
  Device area(simtest::areaProfile());
  EXPECT_LT(area.descriptionFile().size() * 3, area.profile().descriptionText.size());
}

TEST(SimDevice, InitialValuesAreApplied) {
  Device device(simtest::areaProfile());
  EXPECT_EQ(u32At(device, 0x40108), 2048u);        // Width
  EXPECT_EQ(u32At(device, 0x40118), 0x01080001u);  // PixelFormat Mono8
  const auto black = device.read(0x40308, 2).data;
  EXPECT_EQ(black, (std::vector<uint8_t>{0xFF, 0xFC}));
  Profile bad = simtest::areaProfile();
  bad.valuesText = "0x30000 u32 1\n";
  EXPECT_THROW(Device{bad}, ProfileError);
}

TEST(SimDevice, CommandsClearThemselvesAfterTheDelay) {
  Profile profile = simtest::areaProfile();
  profile.commandDelayMs = 40;
  profile.heartbeatTimeoutMs = 0;  // no timer but the command's
  Device device(profile);
  const uint64_t acquisitionStart = 0x40204;
  ASSERT_EQ(device.write(acquisitionStart, {0, 0, 0, 1}).status, kStatusSuccess);
  EXPECT_EQ(u32At(device, acquisitionStart), 1u);
  device.advanceTo(39'000);
  EXPECT_EQ(u32At(device, acquisitionStart), 1u);
  device.advanceTo(40'000);
  EXPECT_EQ(u32At(device, acquisitionStart), 0u);
  // Writing zero is not an execution and schedules nothing.
  ASSERT_EQ(device.write(acquisitionStart, {0, 0, 0, 0}).status, kStatusSuccess);
  EXPECT_EQ(device.nextTimerUs(), UINT64_MAX);
  // A delay of zero clears at once.
  device.setCommandDelayMs(0);
  device.write(acquisitionStart, {0, 0, 0, 1});
  EXPECT_EQ(u32At(device, acquisitionStart), 0u);
}

// A save stores the registers for the next power-up, but no link state: a power cycle brings
// back 9600 baud, the heartbeat and a device nobody has opened.
TEST(SimDevice, ConfigurationSaveStoresRegistersForTheNextPowerUp) {
  Device device = openDevice(simtest::areaProfile());
  const uint64_t width = 0x40108;
  const uint64_t save = 0x40510;
  const uint64_t currentBaud = kSbrmAddress + 4;
  ASSERT_EQ(device.write(abrm::kDeviceConfiguration, std::vector<uint8_t>(8, 0)).status,
            kStatusSuccess);
  device.commitBaudSwitch(device.write(currentBaud, simtest::u32Bytes(kBaud38400)).switchBaudTo);
  device.write(currentBaud, simtest::u32Bytes(kBaud38400));
  device.write(width, {0, 0, 4, 0});  // 1024
  const auto outcome = device.write(save, {0, 0, 0, 1});
  EXPECT_EQ(outcome.status, kStatusSuccess);
  EXPECT_EQ(outcome.processingMs, 800u);
  EXPECT_EQ(device.saveCount(), 1u);
  device.write(width, {0, 0, 2, 0});  // 512, not saved
  device.advanceTo(1'000'000);
  EXPECT_EQ(u32At(device, save), 0u);
  device.powerCycle();
  EXPECT_EQ(u32At(device, width), 1024u);
  EXPECT_EQ(u32At(device, save), 0u);
  EXPECT_EQ(device.baudRate(), kBaud9600);
  EXPECT_TRUE(device.heartbeatEnabled());
  EXPECT_EQ(device.accessPrivilege(), kPrivilegeAvailable);
}
