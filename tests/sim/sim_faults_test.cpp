// Every injected fault: what the host sees, and that the camera recovers afterwards.
#include <gtest/gtest.h>

#include <random>

#include "sim_test_support.h"

using namespace vq::gencp;
using simtest::Host;

namespace {
constexpr uint64_t kWidth = 0x40108;
}

TEST(SimFaults, DroppedAnswerIsRecoveredByResend) {
  Host host;
  host.sim.faults().dropAnswers = 1;
  const auto command = makeWriteMemCommand(10, kWidth, simtest::u32Bytes(96));
  EXPECT_FALSE(host.transact(command, 500));
  EXPECT_EQ(host.readU32(kWidth), 96u) << "the command was executed";
  // The read above used a new id; go back and resend the lost write: stored answer only
  // exists for the latest request, so resend right after the loss instead.
  host.sim.faults().dropAnswers = 1;
  const auto second = makeWriteMemCommand(11, kWidth, simtest::u32Bytes(112));
  EXPECT_FALSE(host.transact(second, 500));
  auto resent = host.transact(makeWriteMemCommand(11, kWidth, simtest::u32Bytes(112),
                                                  kFlagRequestAck | kFlagCommandResend));
  ASSERT_TRUE(resent);
  EXPECT_EQ(resent->status(), kStatusSuccess);
  EXPECT_EQ(host.sim.stats().repeatedAnswers, 1u);
}

TEST(SimFaults, CorruptAnswerFailsItsChecksum) {
  Host host;
  host.sim.faults().corruptAnswers = 1;
  EXPECT_FALSE(host.transact(makeReadMemCommand(20, kWidth, 4), 500));
  EXPECT_EQ(host.lastError, ParseError::ScdChecksum);
  EXPECT_EQ(host.readU32(kWidth), 2048u);
}

TEST(SimFaults, DelayedAnswerArrivesLate) {
  Host host;
  host.sim.faults().answerDelayMs = 700;
  host.send(makeReadMemCommand(30, kWidth, 4));
  EXPECT_FALSE(host.receive(600));
  auto ack = host.receive(300);
  ASSERT_TRUE(ack);
  EXPECT_EQ(ack->requestId, 30);
}

TEST(SimFaults, SilentCameraNeverAnswersUntilRevived) {
  Host host;
  host.sim.faults().silent = true;
  EXPECT_FALSE(host.transact(makeWriteMemCommand(40, kWidth, simtest::u32Bytes(64)), 500));
  EXPECT_EQ(host.sim.stats().commands, 0u);
  host.sim.faults().silent = false;
  EXPECT_EQ(host.readU32(kWidth), 2048u) << "nothing was executed while silent";
}

TEST(SimFaults, ChosenStatusIsAnsweredWithoutExecuting) {
  const uint16_t statuses[] = {kStatusBusy, kStatusAccessDenied, kStatusError, 0x0001,
                               kStatusMsgTimeout};
  for (uint16_t status : statuses) {
    Host host;
    host.sim.faults().forcedStatus = status;
    host.sim.faults().forcedStatusCount = 1;
    auto ack = host.transact(makeWriteMemCommand(50, kWidth, simtest::u32Bytes(64)));
    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->status(), status);
    EXPECT_EQ(ack->commandId, kWriteMemAck);
    EXPECT_EQ(host.readU32(kWidth), 2048u);
  }
}

TEST(SimFaults, LostRequestBytesLoseThePacketOnly) {
  Host host;
  host.sim.faults().dropIncomingBytes = 3;
  EXPECT_FALSE(host.transact(makeReadMemCommand(60, kWidth, 4), 300));
  // The truncated packet is abandoned after the line stays quiet; the next one works.
  host.sim.advance(2'000'000);
  EXPECT_EQ(host.readU32(kWidth), 2048u);
}

TEST(SimFaults, LongProcessingSendsPendingAcknowledge) {
  Host host;
  host.sim.faults().processingDelayMs = 1000;
  auto first = host.transact(makeReadMemCommand(70, kWidth, 4));
  ASSERT_TRUE(first);
  EXPECT_EQ(first->commandId, kPendingAck);
  EXPECT_GE(decodePendingAck(*first).value_or(0), 1000);
  auto final = host.receive(1500);
  ASSERT_TRUE(final);
  EXPECT_EQ(final->commandId, kReadMemAck);
  EXPECT_EQ(final->scd, simtest::u32Bytes(2048));
  // Shorter than the maximum response time: just a later answer, no pending.
  host.sim.faults().processingDelayMs = 100;
  auto direct = host.transact(makeReadMemCommand(71, kWidth, 4));
  ASSERT_TRUE(direct);
  EXPECT_EQ(direct->commandId, kReadMemAck);
}

TEST(SimFaults, NoisyLineStillLetsRetriesThrough) {
  Host host;
  host.sim.faults().byteDropRate = 0.002;
  host.sim.faults().byteCorruptRate = 0.002;
  host.sim.faults().seed = 7;
  int delivered = 0;
  for (uint16_t id = 100; id < 160; ++id) {
    auto command = makeReadMemCommand(id, 0x100000, 64);
    auto ack = host.transact(command, 1000);
    for (int retry = 0; retry < 6 && !ack; ++retry) {
      host.parser.reset();
      command.flagsOrStatus |= kFlagCommandResend;
      ack = host.transact(command, 1000);
    }
    if (ack && ack->requestId == id) ++delivered;
  }
  EXPECT_EQ(delivered, 60);
  EXPECT_GT(host.sim.stats().lostBytes, 0u);
}

TEST(SimFaults, GarbageOnTheLineIsIgnored) {
  Host host;
  std::mt19937 rng(99);
  std::vector<uint8_t> noise(5000);
  for (auto& b : noise) b = static_cast<uint8_t>(rng());
  host.port.write(noise.data(), noise.size());
  host.sim.advance(2'000'000);
  host.parser.reset();
  std::vector<uint8_t> drain(4096);
  host.port.read(drain.data(), drain.size(), 10);
  host.parser.reset();
  EXPECT_EQ(host.readU32(kWidth), 2048u);
}
