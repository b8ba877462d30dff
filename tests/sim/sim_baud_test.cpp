// Baud-rate change with confirmation and fallback, rate mismatches, and line-time
// accounting.
#include <gtest/gtest.h>

#include "sim_test_support.h"
#include "vq/sim/Device.h"

using namespace vq::gencp;
using simtest::Host;

namespace {
constexpr uint64_t kCurrentBaud = vq::sim::kSbrmAddress + 4;
}

TEST(SimBaud, ConfirmedChangeSticks) {
  Host host;
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud115200), kStatusSuccess);  // acked at 9600
  EXPECT_EQ(host.sim.device().baudRate(), kBaud115200);
  EXPECT_TRUE(host.sim.device().awaitingBaudConfirmation());
  host.port.setBaudRate(kBaud115200);
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud115200), kStatusSuccess);  // confirmation
  EXPECT_FALSE(host.sim.device().awaitingBaudConfirmation());
  host.sim.advance(1'000'000);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud115200);
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud115200);
  EXPECT_EQ(host.sim.device().baudFallbacks(), 0u);
}

TEST(SimBaud, MissingConfirmationFallsBackAfter250ms) {
  Host host;
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud57600), kStatusSuccess);
  const uint64_t switched = host.sim.nowUs();
  host.sim.advanceTo(switched + 200'000);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud57600);
  host.sim.advanceTo(switched + 260'000);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud9600);
  EXPECT_EQ(host.sim.device().baudFallbacks(), 1u);
  // The host never left 9600, so the line works again.
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud9600);
}

TEST(SimBaud, ConfirmationAtTheWrongRateIsGarbledAndFallsBack) {
  Host host;
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud230400), kStatusSuccess);
  // The host stays at 9600: its confirmation arrives as garbage, nothing answers.
  uint16_t status = 0;
  host.read(kCurrentBaud, 4, &status);
  EXPECT_EQ(status, 0xFFFF);
  EXPECT_GT(host.sim.stats().garbledBytes, 0u);
  host.sim.advance(300'000);
  host.parser.reset();
  EXPECT_EQ(host.sim.device().baudRate(), kBaud9600);
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud9600);
}

TEST(SimBaud, HostAtAnotherRateSeesGarbage) {
  Host host;
  host.port.setBaudRate(kBaud19200);
  uint16_t status = 0;
  host.read(0, 4, &status);
  EXPECT_EQ(status, 0xFFFF);
  host.port.setBaudRate(kBaud9600);
  host.sim.advance(2'000'000);
  host.parser.reset();
  EXPECT_EQ(host.readU32(0), 0x00010003u);
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
  const double slow = host.sim.stats().linkSeconds;
  EXPECT_NEAR(slow, (28 + 16 + 1000) * 10.0 / 9600, 1e-9);
  host.writeU32(kCurrentBaud, kBaud921600);
  host.port.setBaudRate(kBaud921600);
  host.writeU32(kCurrentBaud, kBaud921600);
  host.sim.resetStats();
  host.read(0x100000, 1000);
  EXPECT_NEAR(host.sim.stats().linkSeconds, (28 + 16 + 1000) * 10.0 / 921600, 1e-9);
}

TEST(SimBaud, PowerCycleReturnsTo9600) {
  Host host;
  host.writeU32(kCurrentBaud, kBaud38400);
  host.port.setBaudRate(kBaud38400);
  host.writeU32(kCurrentBaud, kBaud38400);
  host.sim.device().powerCycle();
  host.port.setBaudRate(kBaud9600);
  EXPECT_EQ(host.readU32(kCurrentBaud), kBaud9600);
}

TEST(SimBaud, HostFollowingTheCameraGetsTheSwitchAckIntact) {
  Host host;
  host.sim.setHostFollowsDevice(true);  // as on a pseudo-terminal
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud460800), kStatusSuccess);
  ASSERT_EQ(host.writeU32(kCurrentBaud, kBaud460800), kStatusSuccess);
  host.sim.advance(1'000'000);
  EXPECT_EQ(host.sim.device().baudRate(), kBaud460800);
  EXPECT_EQ(host.sim.stats().garbledBytes, 0u);
}
