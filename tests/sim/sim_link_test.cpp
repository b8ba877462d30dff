// GenCP over the in-process link: answers and error statuses, resend and pending semantics,
// every injected fault, the baud-rate change with confirmation and fallback, line-time
// accounting, access privilege and the heartbeat.
#include <gtest/gtest.h>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Endian.h"
#include "vq/sim/Device.h"

using namespace vq::gencp;
using simtest::Host;

namespace {
constexpr uint64_t kCurrentBaud = vq::sim::kSbrmAddress + 4;
constexpr uint64_t kWidth = 0x40108;
}  // namespace

TEST(SimProtocol, ErrorStatusTable) {
  Host host;
  struct Case {
    const char* name;
    Packet command;
    uint16_t status;
    uint16_t ackId;
  };
  Packet unknown;
  unknown.commandId = 0x0842;
  unknown.flagsOrStatus = kFlagRequestAck;
  unknown.requestId = 50;
  Packet shortRead = makeReadMemCommand(51, 0, 4);
  shortRead.scd.resize(10);
  const Case cases[] = {
      {"InvalidAddress", makeReadMemCommand(40, 0x30000, 4), kStatusInvalidAddress, kReadMemAck},
      {"WriteProtect", makeWriteMemCommand(41, abrm::kSerialNumber, {'x'}), kStatusWriteProtect,
       kWriteMemAck},
      {"WriteWithIdZero", makeWriteMemCommand(0, 0x40108, simtest::u32Bytes(1)),
       kStatusInvalidParameter, kWriteMemAck},
      {"ReadTooLong", makeReadMemCommand(42, 0x100000, 1009), kStatusInvalidParameter, kReadMemAck},
      {"UnknownCommand", unknown, kStatusNotImplemented, 0x0843},
      {"MalformedReadScd", shortRead, kStatusInvalidParameter, kReadMemAck},
      {"BadBaudValue", makeWriteMemCommand(43, 0x10004, simtest::u32Bytes(3)),
       kStatusInvalidParameter, kWriteMemAck},
  };
  for (const auto& c : cases) {
    auto ack = host.transact(c.command);
    ASSERT_TRUE(ack) << c.name;
    EXPECT_EQ(ack->status(), c.status) << c.name;
    EXPECT_EQ(ack->commandId, c.ackId) << c.name;
    EXPECT_EQ(ack->requestId, c.command.requestId) << c.name;
    EXPECT_TRUE(ack->scd.empty()) << c.name;
  }
}

TEST(SimProtocol, WithoutRequestAckTheCommandRunsSilently) {
  Host host;
  host.send(makeWriteMemCommand(7, 0x40108, simtest::u32Bytes(320), 0));
  EXPECT_FALSE(host.receive(200));
  EXPECT_EQ(host.readU32(0x40108), 320u);
}

TEST(SimProtocol, ResendRepeatsTheAnswerWithoutExecutingAgain) {
  Host host;
  const uint64_t width = 0x40108;
  auto first = host.transact(makeWriteMemCommand(90, width, simtest::u32Bytes(800)));
  ASSERT_TRUE(first);
  EXPECT_EQ(decodeWriteMemAck(*first).value_or(0), 4);  // the written length
  // The camera changes the register on its own; a resend must not write 800 again.
  host.sim.device().registers().poke(width, simtest::u32Bytes(1200));
  auto again = host.transact(
      makeWriteMemCommand(90, width, simtest::u32Bytes(800), kFlagRequestAck | kFlagCommandResend));
  ASSERT_TRUE(again);
  EXPECT_EQ(*again, *first);
  EXPECT_EQ(host.sim.stats().repeatedAnswers, 1u);
  // A resent read returns the first answer, even though the register changed since.
  auto read = host.transact(makeReadMemCommand(91, width, 4));
  host.sim.device().registers().poke(width, simtest::u32Bytes(16));
  auto reread =
      host.transact(makeReadMemCommand(91, width, 4, kFlagRequestAck | kFlagCommandResend));
  ASSERT_TRUE(read && reread);
  EXPECT_EQ(reread->scd, simtest::u32Bytes(1200));
  // Reads with request id 0 are always executed.
  auto zero = host.transact(makeReadMemCommand(0, width, 4));
  host.sim.device().registers().poke(width, simtest::u32Bytes(32));
  auto zeroAgain = host.transact(makeReadMemCommand(0, width, 4));
  ASSERT_TRUE(zero && zeroAgain);
  EXPECT_EQ(zero->scd, simtest::u32Bytes(16));
  EXPECT_EQ(zeroAgain->scd, simtest::u32Bytes(32));
}

TEST(SimProtocol, SlowSaveAnswersPendingFirst) {
  Host host;
  const uint64_t save = 0x40510;
  auto pending = host.transact(makeWriteMemCommand(200, save, simtest::u32Bytes(1)));
  ASSERT_TRUE(pending);
  ASSERT_EQ(pending->commandId, kPendingAck);
  EXPECT_GE(decodePendingAck(*pending).value_or(0), 800);
  // A resend while the save runs gets another pending acknowledge; a new request is busy.
  auto again = host.transact(
      makeWriteMemCommand(200, save, simtest::u32Bytes(1), kFlagRequestAck | kFlagCommandResend));
  ASSERT_TRUE(again);
  EXPECT_EQ(again->commandId, kPendingAck);
  auto busy = host.transact(makeReadMemCommand(201, 0x40108, 4));
  ASSERT_TRUE(busy);
  EXPECT_EQ(busy->status(), kStatusBusy);
  auto done = host.receive(2000);
  ASSERT_TRUE(done);
  EXPECT_EQ(done->commandId, kWriteMemAck);
  EXPECT_EQ(done->requestId, 200);
  EXPECT_EQ(done->status(), kStatusSuccess);
  EXPECT_EQ(host.sim.device().saveCount(), 1u);
  EXPECT_EQ(host.readU32(save), 0u);  // the command has completed
}

// Every injected fault on a read of Width (or a write of 96 to it): what arrives within 500 ms,
// what arrives later, what the host's parser saw, and Width once the faults are cleared.
TEST(SimFaults, EachFaultShowsAndTheCameraRecovers) {
  using Plan = vq::sim::FaultPlan;
  const struct {
    const char* name;
    void (*inject)(Plan&);
    bool write;
    uint16_t answer;   // command id of the answer within 500 ms, 0 for none
    uint16_t status;   // of that answer
    uint32_t laterMs;  // the read's final answer follows within this much, 0 for none
    ParseError error;
    uint32_t widthAfter;
  } cases[] = {
      {"DroppedAnswerButExecuted", [](Plan& f) { f.dropAnswers = 1; }, true, 0, 0, 0,
       ParseError::None, 96},
      {"CorruptAnswer", [](Plan& f) { f.corruptAnswers = 1; }, false, 0, 0, 0,
       ParseError::ScdChecksum, 2048},
      {"DelayedAnswer", [](Plan& f) { f.answerDelayMs = 700; }, false, 0, 0, 500,
       ParseError::None, 2048},
      {"SilentNothingExecuted", [](Plan& f) { f.silent = true; }, true, 0, 0, 0,
       ParseError::None, 2048},
      {"LostRequestBytes", [](Plan& f) { f.dropIncomingBytes = 3; }, false, 0, 0, 0,
       ParseError::None, 2048},
      {"LongProcessingPending", [](Plan& f) { f.processingDelayMs = 1000; }, false, kPendingAck,
       kStatusSuccess, 1500, ParseError::None, 2048},
      {"ShortProcessingNoPending", [](Plan& f) { f.processingDelayMs = 100; }, false, kReadMemAck,
       kStatusSuccess, 0, ParseError::None, 2048},
      {"StatusBusy", [](Plan& f) { f.forcedStatus = kStatusBusy; f.forcedStatusCount = 1; },
       true, kWriteMemAck, kStatusBusy, 0, ParseError::None, 2048},
      {"StatusAccessDenied",
       [](Plan& f) { f.forcedStatus = kStatusAccessDenied; f.forcedStatusCount = 1; }, true,
       kWriteMemAck, kStatusAccessDenied, 0, ParseError::None, 2048},
      {"StatusError", [](Plan& f) { f.forcedStatus = kStatusError; f.forcedStatusCount = 1; },
       true, kWriteMemAck, kStatusError, 0, ParseError::None, 2048},
      {"StatusWarning", [](Plan& f) { f.forcedStatus = 0x0001; f.forcedStatusCount = 1; }, true,
       kWriteMemAck, 0x0001, 0, ParseError::None, 2048},
      {"StatusMsgTimeout",
       [](Plan& f) { f.forcedStatus = kStatusMsgTimeout; f.forcedStatusCount = 1; }, true,
       kWriteMemAck, kStatusMsgTimeout, 0, ParseError::None, 2048},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Host host;
    c.inject(host.sim.faults());
    const uint16_t id = host.newId();
    const auto answer = host.transact(c.write ? makeWriteMemCommand(id, kWidth, simtest::u32Bytes(96))
                                              : makeReadMemCommand(id, kWidth, 4),
                                      500);
    EXPECT_EQ(answer ? answer->commandId : 0, c.answer);
    if (answer) {
      EXPECT_EQ(answer->status(), c.status);
      EXPECT_EQ(answer->requestId, id);
      if (answer->commandId == kPendingAck) {
        EXPECT_GE(decodePendingAck(*answer).value_or(0), 1000);
      }
    }
    if (c.laterMs != 0) {
      const auto final = host.receive(c.laterMs);
      ASSERT_TRUE(final);
      EXPECT_EQ(final->commandId, kReadMemAck);
      EXPECT_EQ(final->requestId, id);
      EXPECT_EQ(final->scd, simtest::u32Bytes(2048));
    }
    EXPECT_EQ(host.lastError, c.error);
    host.sim.faults() = vq::sim::FaultPlan{};
    host.sim.advance(2'000'000);  // a torn request is abandoned once the line stays quiet
    host.parser.reset();
    EXPECT_EQ(host.readU32(kWidth), c.widthAfter);
  }
}

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
