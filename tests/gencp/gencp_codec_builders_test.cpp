// Builders and SCD decoders: fields land where the wire layout puts them, and malformed
// SCDs are refused rather than misread.
#include <gtest/gtest.h>

#include "vq/gencp/Builders.h"

using namespace vq::gencp;

TEST(GenCPBuilders, ReadMemRoundTrip) {
  const Packet command = makeReadMemCommand(7, 0x0000000100000044ull, 64);
  EXPECT_EQ(command.commandId, kReadMemCmd);
  EXPECT_TRUE(command.requestsAck());
  EXPECT_FALSE(command.isResend());
  const auto request = decodeReadMem(command);
  ASSERT_TRUE(request);
  EXPECT_EQ(request->address, 0x0000000100000044ull);
  EXPECT_EQ(request->length, 64);
}

TEST(GenCPBuilders, ResendFlagIsKeptBesideRequestAck) {
  const Packet command = makeReadMemCommand(3, 0, 4, kFlagRequestAck | kFlagCommandResend);
  EXPECT_TRUE(command.isResend());
  EXPECT_TRUE(command.requestsAck());
}

TEST(GenCPBuilders, WriteMemRoundTrip) {
  const std::vector<uint8_t> data{1, 2, 3, 4, 5};
  const auto request = decodeWriteMem(makeWriteMemCommand(9, 0x10004, data));
  ASSERT_TRUE(request);
  EXPECT_EQ(request->address, 0x10004u);
  EXPECT_EQ(request->data, data);
  // Null data with a size writes only the address.
  const auto empty = decodeWriteMem(makeWriteMemCommand(9, 0x20, nullptr, 5));
  ASSERT_TRUE(empty);
  EXPECT_TRUE(empty->data.empty());
}

TEST(GenCPBuilders, AcknowledgesCarryStatusAndAckBit) {
  const Packet ack = makeStatusAck(kWriteMemCmd, 0x1234, kStatusWriteProtect);
  EXPECT_EQ(ack.commandId, kWriteMemAck);
  EXPECT_TRUE(ack.isAck());
  EXPECT_EQ(ack.status(), kStatusWriteProtect);
  EXPECT_TRUE(isErrorStatus(ack.status()));
  EXPECT_TRUE(ack.scd.empty());
  EXPECT_EQ(decodeWriteMemAck(makeWriteMemAck(1, 0, 12)).value_or(0), 12);
  EXPECT_FALSE(decodeWriteMemAck(makeWriteMemAck(1, 0, 12, false)));
  EXPECT_EQ(decodePendingAck(makePendingAck(1, 750)).value_or(0), 750);
}

TEST(GenCPBuilders, DecodersRefuseWrongCommandOrSize) {
  Packet bad = makeReadMemCommand(1, 0, 4);
  bad.scd.pop_back();
  EXPECT_FALSE(decodeReadMem(bad));
  Packet reserved = makeReadMemCommand(1, 0, 4);
  reserved.scd[8] = 1;  // reserved field must be zero
  EXPECT_FALSE(decodeReadMem(reserved));
  EXPECT_FALSE(decodeReadMem(makeWriteMemCommand(1, 0, {1})));
  Packet shortWrite;
  shortWrite.commandId = kWriteMemCmd;
  shortWrite.scd = {0, 0, 0};
  EXPECT_FALSE(decodeWriteMem(shortWrite));
  EXPECT_FALSE(decodePendingAck(makeWriteMemAck(1, 0, 4)));
}

TEST(GenCPConstants, StatusNamesAndBaudBits) {
  EXPECT_STREQ(statusName(kStatusInvalidAddress), "GENCP_INVALID_ADDRESS");
  EXPECT_EQ(statusName(0x8123), nullptr);
  EXPECT_EQ(baudBitToRate(kBaud9600), 9600u);
  EXPECT_EQ(baudBitToRate(kBaud921600), 921600u);
  EXPECT_EQ(baudBitToRate(kBaud9600 | kBaud19200), 0u);
  EXPECT_EQ(baudBitToRate(0), 0u);
  EXPECT_EQ(baudRateToBit(115200), kBaud115200);
  EXPECT_EQ(baudRateToBit(12345), 0u);
}
