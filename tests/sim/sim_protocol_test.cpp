// GenCP over the in-process link: round trips through the codec, error statuses, resend
// semantics and pending acknowledges.
#include <gtest/gtest.h>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Endian.h"

using namespace vq::gencp;
using simtest::Host;

TEST(SimProtocol, FirstReadWithRequestIdZero) {
  Host host;
  auto ack = host.transact(makeReadMemCommand(0, abrm::kGenCPVersion, 4));
  ASSERT_TRUE(ack);
  EXPECT_EQ(ack->commandId, kReadMemAck);
  EXPECT_EQ(ack->requestId, 0);
  EXPECT_EQ(ack->status(), kStatusSuccess);
  EXPECT_EQ(ack->scd, simtest::u32Bytes(0x00010003));
}

TEST(SimProtocol, WriteThenReadBack) {
  Host host;
  const uint64_t width = 0x40108;
  auto ack = host.transact(makeWriteMemCommand(host.newId(), width, simtest::u32Bytes(640)));
  ASSERT_TRUE(ack);
  EXPECT_EQ(ack->commandId, kWriteMemAck);
  EXPECT_EQ(decodeWriteMemAck(*ack).value_or(0), 4);
  EXPECT_EQ(host.readU32(width), 640u);
  EXPECT_EQ(host.readString(abrm::kModelName), "A2040M");
}

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

TEST(SimProtocol, FastCommandCompletesAfterItsDelay) {
  Host host;
  host.sim.device().setCommandDelayMs(200);  // longer than a write and a read take at 9600 baud
  const uint64_t acquisitionStart = 0x40204;
  ASSERT_EQ(host.writeU32(acquisitionStart, 1), kStatusSuccess);
  EXPECT_EQ(host.readU32(acquisitionStart), 1u);
  host.sim.advance(250'000);
  EXPECT_EQ(host.readU32(acquisitionStart), 0u);
}
