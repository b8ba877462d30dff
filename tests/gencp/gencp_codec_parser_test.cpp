// Stream parser: complete packets out of arbitrary chunking, resynchronisation after
// garbage, and refusal of corrupt or oversized packets.
#include <gtest/gtest.h>

#include <random>

#include "vq/gencp/Builders.h"
#include "vq/gencp/Checksum.h"
#include "vq/gencp/Endian.h"
#include "vq/gencp/PacketParser.h"

using namespace vq::gencp;

namespace {

std::vector<ParseResult> drain(PacketParser& parser) {
  std::vector<ParseResult> out;
  while (auto result = parser.next()) out.push_back(*result);
  return out;
}

std::vector<Packet> goodPackets(const std::vector<ParseResult>& results) {
  std::vector<Packet> out;
  for (const auto& r : results) {
    if (r.ok()) out.push_back(r.packet);
  }
  return out;
}

std::vector<Packet> samplePackets() {
  std::vector<uint8_t> big(kMaxReadData);
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<uint8_t>(i);
  // Data that itself contains preambles must not confuse the parser.
  return {makeReadMemCommand(0, 0, 4),
          makeReadMemAck(1, 0, {0x01, 0x00, 0x01, 0x00}),
          makeWriteMemCommand(2, 0x10004, {0, 0, 0, 0x10}),
          makeReadMemAck(3, 0, big),
          makeStatusAck(kReadMemCmd, 4, kStatusInvalidAddress),
          makePendingAck(5, 300)};
}

std::vector<uint8_t> concat(const std::vector<Packet>& packets) {
  std::vector<uint8_t> out;
  for (const auto& p : packets) {
    const auto bytes = encode(p);
    out.insert(out.end(), bytes.begin(), bytes.end());
  }
  return out;
}

}  // namespace

TEST(GenCPParser, WholeStreamAtOnce) {
  PacketParser parser;
  parser.feed(concat(samplePackets()));
  const auto results = drain(parser);
  EXPECT_EQ(goodPackets(results), samplePackets());
  EXPECT_EQ(results.size(), samplePackets().size());
  EXPECT_EQ(parser.bufferedBytes(), 0u);
  EXPECT_EQ(parser.discardedBytes(), 0u);
}

TEST(GenCPParser, ArbitraryChunking) {
  const auto stream = concat(samplePackets());
  for (std::size_t chunk : {1u, 2u, 3u, 7u, 16u, 17u, 1000u}) {
    PacketParser parser;
    std::vector<ParseResult> results;
    for (std::size_t i = 0; i < stream.size(); i += chunk) {
      parser.feed(stream.data() + i, std::min(chunk, stream.size() - i));
      for (auto& r : drain(parser)) results.push_back(r);
    }
    EXPECT_EQ(goodPackets(results), samplePackets()) << "chunk " << chunk;
  }
}

TEST(GenCPParser, IncompletePacketWaits) {
  const auto bytes = encode(makeReadMemCommand(1, 0x44, 64));
  PacketParser parser;
  parser.feed(bytes.data(), bytes.size() - 1);
  EXPECT_FALSE(parser.next());
  EXPECT_TRUE(parser.inPacket());
  parser.feed(&bytes.back(), 1);
  auto result = parser.next();
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->ok());
  EXPECT_FALSE(parser.inPacket());
}

TEST(GenCPParser, ResetDropsAPartialPacket) {
  const auto bytes = encode(makeReadMemCommand(1, 0x44, 64));
  PacketParser parser;
  parser.feed(bytes.data(), 10);
  parser.reset();
  EXPECT_EQ(parser.bufferedBytes(), 0u);
  parser.feed(bytes);
  auto result = parser.next();
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->ok());
}

TEST(GenCPParser, GarbageBeforeAndBetweenPacketsIsSkipped) {
  const std::vector<uint8_t> garbage{0xFF, 0x01, 0x01, 0x02, 0x00, 0x00, 0x01};
  std::vector<uint8_t> stream = garbage;
  const auto a = encode(makeReadMemCommand(1, 0, 4));
  const auto b = encode(makeReadMemCommand(2, 4, 64));
  stream.insert(stream.end(), a.begin(), a.end());
  stream.insert(stream.end(), garbage.begin(), garbage.end());
  stream.insert(stream.end(), b.begin(), b.end());
  PacketParser parser;
  parser.feed(stream);
  const auto good = goodPackets(drain(parser));
  ASSERT_EQ(good.size(), 2u);
  EXPECT_EQ(good[0].requestId, 1);
  EXPECT_EQ(good[1].requestId, 2);
  EXPECT_GE(parser.discardedBytes(), 2 * garbage.size());
}

struct CorruptionCase {
  const char* name;
  std::size_t offset;  // byte of the first packet to flip
  ParseError expected;
};

class GenCPParserCorruption : public ::testing::TestWithParam<CorruptionCase> {};

TEST_P(GenCPParserCorruption, BadPacketIsReportedAndNextOneStillArrives) {
  auto first = encode(makeWriteMemCommand(1, 0x20, {1, 2, 3, 4}));
  first[GetParam().offset] ^= 0x5A;
  const auto second = encode(makeReadMemCommand(2, 0x20, 4));
  first.insert(first.end(), second.begin(), second.end());
  PacketParser parser;
  parser.feed(first);
  const auto results = drain(parser);
  bool sawExpected = false;
  for (const auto& r : results) sawExpected |= r.error == GetParam().expected;
  EXPECT_TRUE(sawExpected) << GetParam().name;
  const auto good = goodPackets(results);
  ASSERT_EQ(good.size(), 1u) << GetParam().name;
  EXPECT_EQ(good[0].requestId, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, GenCPParserCorruption,
    ::testing::Values(CorruptionCase{"CcdChecksum", 2, ParseError::CcdChecksum},
                      CorruptionCase{"Flags", 8, ParseError::CcdChecksum},
                      CorruptionCase{"RequestId", 15, ParseError::CcdChecksum},
                      CorruptionCase{"ScdChecksum", 4, ParseError::ScdChecksum},
                      CorruptionCase{"Address", 20, ParseError::ScdChecksum},
                      CorruptionCase{"Data", 27, ParseError::ScdChecksum}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(GenCPParser, PreambleCorruptionIsSkippedSilently) {
  auto bytes = encode(makeReadMemCommand(1, 0, 4));
  bytes[1] = 0x7F;
  PacketParser parser;
  parser.feed(bytes);
  const auto results = drain(parser);
  EXPECT_TRUE(goodPackets(results).empty());
}

TEST(GenCPParser, OversizedLengthWithValidHeaderIsRefused) {
  Packet packet = makeReadMemAck(1, 0, {});
  auto bytes = encode(packet);
  // Claim 2000 SCD bytes and repair the header checksum so only the length is wrong.
  writeU16(bytes.data() + 12, 2000);
  writeU16(bytes.data() + 2, ccdChecksum(bytes.data()));
  PacketParser parser;
  parser.feed(bytes);
  auto result = parser.next();
  ASSERT_TRUE(result);
  EXPECT_EQ(result->error, ParseError::LengthTooLarge);
  EXPECT_EQ(result->packet.requestId, 1);
  EXPECT_FALSE(parser.next());
}

TEST(GenCPParser, DroppedByteLosesOnlyThatPacket) {
  auto first = encode(makeWriteMemCommand(1, 0x20, {1, 2, 3, 4, 5, 6}));
  first.erase(first.begin() + 20);
  const auto second = encode(makeReadMemCommand(2, 0x20, 4));
  first.insert(first.end(), second.begin(), second.end());
  PacketParser parser;
  parser.feed(first);
  const auto good = goodPackets(drain(parser));
  ASSERT_EQ(good.size(), 1u);
  EXPECT_EQ(good[0].requestId, 2);
}

TEST(GenCPParser, NullAndEmptyFeedsAreHarmless) {
  PacketParser parser;
  parser.feed(nullptr, 100);
  parser.feed(nullptr, 0);
  EXPECT_FALSE(parser.next());
  EXPECT_EQ(parser.bufferedBytes(), 0u);
}

TEST(GenCPParser, RandomNoiseNeverYieldsBadPacketsAndStaysBounded) {
  std::mt19937 rng(1234);
  std::uniform_int_distribution<int> byte(0, 255);
  PacketParser parser;
  const auto marker = encode(makeReadMemCommand(0x7777, 0x1234, 8));
  std::size_t markers = 0;
  for (int round = 0; round < 200; ++round) {
    std::vector<uint8_t> noise(static_cast<std::size_t>(byte(rng)) + 1);
    for (auto& b : noise) b = static_cast<uint8_t>(byte(rng) < 40 ? (byte(rng) & 1) : byte(rng));
    parser.feed(noise);
    for (auto& r : drain(parser)) {
      if (r.ok()) {
        // Anything accepted must re-encode to a valid packet of at most 1024 bytes.
        EXPECT_LE(encode(r.packet).size(), kMaxPacketSize);
        markers += r.packet == makeReadMemCommand(0x7777, 0x1234, 8);
      }
    }
    EXPECT_LE(parser.bufferedBytes(), kMaxPacketSize + 256);
    // Quiet the line and send a real packet: it must come through.
    parser.reset();
    parser.feed(marker);
    for (auto& r : drain(parser)) markers += r.ok() && r.packet.requestId == 0x7777;
  }
  EXPECT_EQ(markers, 200u);
}
