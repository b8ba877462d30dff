// The serial link's state: the baud-rate change with confirmation and fallback, rate
// mismatches, line-time accounting, access privilege and the heartbeat.
#include <gtest/gtest.h>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/sim/Device.h"

using namespace vq::gencp;
using simtest::Host;

namespace {
constexpr uint64_t kCurrentBaud = vq::sim::kSbrmAddress + 4;
constexpr uint64_t kWidth = 0x40108;
}  // namespace

TEST(SimBaud, ConfirmedChangeSticksAndUnconfirmedFallsBackAfter250ms) {
  Host host;
  host.switchRate(kBaud115200);
  EXPECT_FALSE(host.sim.device().awaitingBaudConfirmation());
  host.sim.advance(1'000'000);
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud115200);

  Host lost;
  ASSERT_EQ(lost.writeU32(kCurrentBaud, kBaud57600), kStatusSuccess);  // acked at 9600
  const uint64_t switched = lost.sim.nowUs();
  lost.sim.advanceTo(switched + 200'000);
  EXPECT_EQ(lost.sim.device().baudRate(), kBaud57600);
  lost.sim.advanceTo(switched + 260'000);
  EXPECT_EQ(lost.sim.device().baudRate(), kBaud9600);
  EXPECT_EQ(lost.sim.device().baudFallbacks(), 1u);
  EXPECT_EQ(lost.readU32(kCurrentBaud), kBaud9600);  // the host never left 9600
}

TEST(SimBaud, BytesAtTheWrongRateAreGarbage) {
  Host host;
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud230400), kStatusSuccess);
  uint16_t status = 0;
  host.read(kCurrentBaud, 4, &status);  // the confirmation never comes: still at 9600
  EXPECT_EQ(status, 0xFFFF);
  EXPECT_GT(host.sim.stats().garbledBytes, 0u);
  host.sim.advance(300'000);
  host.parser.reset();
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud9600);
  // A host following the camera (as a link without a visible rate) is never garbled.
  Host follower;
  follower.sim.setHostFollowsDevice(true);
  ASSERT_EQ(follower.writeU32(kCurrentBaud, kBaud460800), kStatusSuccess);
  ASSERT_EQ(follower.writeU32(kCurrentBaud, kBaud460800), kStatusSuccess);
  EXPECT_EQ(follower.sim.device().baudRate(), kBaud460800);
  EXPECT_EQ(follower.sim.stats().garbledBytes, 0u);
}

TEST(SimBaud, UnsupportedRatesAreRefused) {
  Host host(simtest::lineProfile());  // supports 0x1B: 9600 19200 57600 115200
  EXPECT_EQ(host.readU32(vq::sim::kSbrmAddress), 0x1Bu);
  for (uint32_t bad : {kBaud38400, kBaud921600, 0u, kBaud9600 | kBaud19200, 0x100u}) {
    EXPECT_EQ(host.writeU32(kCurrentBaud, bad), kStatusInvalidParameter) << bad;
  }
  EXPECT_EQ(host.sim.device().baudRate(), kBaud9600);
  EXPECT_EQ(host.writeU32(vq::sim::kSbrmAddress, 0xFF), kStatusWriteProtect);
}

TEST(SimBaud, LineTimeFollowsTheRate) {
  Host host;
  host.read(0x100000, 1000);
  EXPECT_NEAR(host.sim.stats().linkSeconds, (28 + 16 + 1000) * 10.0 / 9600, 1e-9);
  host.switchRate(kBaud921600);
  host.sim.resetStats();
  host.read(0x100000, 1000);
  EXPECT_NEAR(host.sim.stats().linkSeconds, (28 + 16 + 1000) * 10.0 / 921600, 1e-9);
}

TEST(SimBaud, SlowSwitchAnswersPendingThenChangesRate) {
  vq::sim::Profile profile = simtest::areaProfile();
  profile.baudSwitchMs = 800;
  Host host(profile);
  host.send(makeWriteMemCommand(host.newId(), kCurrentBaud, simtest::u32Bytes(kBaud115200)));
  const auto pending = host.receive();
  ASSERT_TRUE(pending);
  EXPECT_EQ(pending->commandId, kPendingAck);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud9600);
  const auto done = host.receive(1500);
  ASSERT_TRUE(done);
  EXPECT_EQ(done->commandId, kWriteMemAck);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud115200);
}

// Access privilege: the device takes writes outside its bootstrap block only once opened.
TEST(SimLink, WritesNeedTheAccessPrivilege) {
  Host host(simtest::areaProfile(), false);
  EXPECT_EQ(host.sim.device().accessPrivilege(), vq::sim::kPrivilegeAvailable);
  EXPECT_EQ(host.readU32(kWidth), 2048u);  // reads are free
  struct Case {
    uint64_t address;
    uint32_t value;
    uint16_t status;
  };
  const Case cases[] = {
      {kWidth, 64, kStatusAccessDenied},
      {kCurrentBaud, kBaud115200, kStatusAccessDenied},
      {abrm::kAccessPrivilege, 2, kStatusInvalidParameter},
      {abrm::kHeartbeatTimeout, 0, kStatusInvalidParameter},
      {abrm::kAccessPrivilege, vq::sim::kPrivilegeOpen, kStatusSuccess},
      {kWidth, 64, kStatusSuccess},
      {abrm::kAccessPrivilege, vq::sim::kPrivilegeAvailable, kStatusSuccess},
      {kWidth, 96, kStatusAccessDenied},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(host.writeU32(c.address, c.value), c.status) << std::hex << c.address << " " << c.value;
  }
  EXPECT_EQ(host.readU32(kWidth), 64u);
}

// Heartbeat: a device that hears nothing within the time-out drops the privilege and falls
// back to 9600 baud; commands keep it alive; a slow command suspends it; a host may switch it off.
TEST(SimLink, HeartbeatExpiryFallsBackTo9600) {
  struct Case {
    const char* name;
    bool disable;
    uint32_t keepAliveEveryMs;  // 0: silent host
    unsigned expiries;
  };
  const Case cases[] = {
      {"SilentHostIsDropped", false, 0, 1},
      {"BusyHostKeepsIt", false, 1000, 0},
      {"DisabledHeartbeatNeverExpires", true, 0, 0},
  };
  for (const auto& c : cases) {
    Host host;
    EXPECT_TRUE(host.sim.device().heartbeatEnabled());
    EXPECT_EQ(host.readU32(abrm::kHeartbeatTimeout), 3000u) << c.name;
    if (c.disable) host.write(abrm::kDeviceConfiguration, std::vector<uint8_t>(8, 0));
    host.switchRate(kBaud115200);
    for (int elapsedMs = 0; elapsedMs < 8000; elapsedMs += 1000) {
      host.sim.advance(1'000'000);
      if (c.keepAliveEveryMs != 0) {
        EXPECT_EQ(host.readU32(kWidth), 2048u) << c.name;
      }
    }
    const bool expired = c.expiries != 0;
    EXPECT_EQ(host.sim.device().heartbeatExpiries(), c.expiries) << c.name;
    EXPECT_EQ(host.sim.device().baudRate(), expired ? kBaud9600 : kBaud115200) << c.name;
    EXPECT_EQ(host.sim.device().accessPrivilege(),
              expired ? vq::sim::kPrivilegeAvailable : vq::sim::kPrivilegeOpen)
        << c.name;
  }
  // A command running past the time-out does not let it expire.
  vq::sim::Profile slowSave = simtest::areaProfile();
  slowSave.saveTimeMs = 5000;
  Host host(slowSave);
  ASSERT_TRUE(host.transact(makeWriteMemCommand(host.newId(), 0x40510, simtest::u32Bytes(1))));
  ASSERT_TRUE(host.receive(6000));
  EXPECT_EQ(host.sim.device().heartbeatExpiries(), 0u);
}

TEST(SimLink, PowerCycleRestoresTheLinkDefaults) {
  vq::sim::Device device(simtest::areaProfile());
  ASSERT_EQ(device.write(abrm::kAccessPrivilege, simtest::u32Bytes(1)).status, kStatusSuccess);
  ASSERT_EQ(device.write(abrm::kDeviceConfiguration, std::vector<uint8_t>(8, 0)).status,
            kStatusSuccess);
  device.commitBaudSwitch(device.write(kCurrentBaud, simtest::u32Bytes(kBaud38400)).switchBaudTo);
  device.write(kCurrentBaud, simtest::u32Bytes(kBaud38400));
  device.write(0x40510, simtest::u32Bytes(1));  // a configuration save keeps no link state
  device.powerCycle();
  EXPECT_EQ(device.baudRate(), kBaud9600);
  EXPECT_TRUE(device.heartbeatEnabled());
  EXPECT_EQ(device.accessPrivilege(), vq::sim::kPrivilegeAvailable);
}
