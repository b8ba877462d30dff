// Checksums and wire encodings against published and independently computed vectors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vq/gencp/Builders.h"
#include "vq/gencp/Checksum.h"
#include "vq/gencp/Endian.h"
#include "vq/gencp/Sha1.h"

using namespace vq::gencp;

namespace {

std::vector<uint8_t> hex(const std::string& text) {
  std::vector<uint8_t> out;
  std::string digits;
  for (char c : text) {
    if (c != ' ') digits += c;
  }
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    out.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return out;
}

struct WireVector {
  const char* name;
  Packet packet;
  const char* bytes;
};

std::vector<WireVector> wireVectors() {
  return {
      {"WriteMemWorkedExample",
       makeWriteMemCommand(0x89AB, 0x0020405C, std::vector<uint8_t>{0, 0, 0, 0xFF}),
       "01 00 2E 46 EC CA 00 00 40 00 08 02 00 0C 89 AB 00 00 00 00 00 20 40 5C 00 00 00 FF"},
      {"ReadMemCommand", makeReadMemCommand(1, 0, 4),
       "01 00 B7 F2 B7 EE 00 00 40 00 08 00 00 0C 00 01 00 00 00 00 00 00 00 00 00 00 00 04"},
      {"ReadMemAck", makeReadMemAck(1, kStatusSuccess, {0, 1, 0, 1}),
       "01 00 F7 F9 F7 F7 00 00 00 00 08 01 00 04 00 01 00 01 00 01"},
      {"WriteMemAck", makeWriteMemAck(0x89AB, kStatusSuccess, 4),
       "01 00 6E 4D 6E 49 00 00 00 00 08 03 00 04 89 AB 00 00 00 04"},
      {"PendingAck", makePendingAck(1, 2000),
       "01 00 F7 F5 F0 25 00 00 00 00 08 05 00 04 00 01 00 00 07 D0"},
      {"ErrorAckEmptyScd", makeStatusAck(kReadMemCmd, 1, kStatusInvalidAddress),
       "01 00 77 FA 77 FA 00 00 80 03 08 01 00 00 00 01"},
      {"OddScd", makeReadMemAck(2, kStatusSuccess, {0xAB}),
       "01 00 F7 FB 4C FB 00 00 00 00 08 01 00 01 00 02 AB"},
  };
}

}  // namespace

TEST(GenCPChecksum, WorkedExampleSums) {
  // channel + CCD of the published WriteMem example.
  const auto ccd = hex("00 00 40 00 08 02 00 0C 89 AB");
  EXPECT_EQ(onesComplementChecksum(ccd.data(), ccd.size()), 0x2E46);
  const auto all = hex("00 00 40 00 08 02 00 0C 89 AB 00 00 00 00 00 20 40 5C 00 00 00 FF");
  EXPECT_EQ(onesComplementChecksum(all.data(), all.size()), 0xECCA);
}

TEST(GenCPChecksum, EmptyAndNullRangesGiveAllOnes) {
  EXPECT_EQ(onesComplementChecksum(nullptr, 0), 0xFFFF);
  EXPECT_EQ(onesComplementChecksum(nullptr, 12), 0xFFFF);
}

TEST(GenCPChecksum, CarriesFoldBackIn) {
  // 0xFFFF + 0x0001 = 0x10000 -> folds to 0x0001 -> complement 0xFFFE.
  const auto words = hex("FF FF 00 01");
  EXPECT_EQ(onesComplementChecksum(words.data(), words.size()), 0xFFFE);
  // A long run of 0xFF bytes keeps folding to 0xFFFF, whose complement is 0.
  std::vector<uint8_t> ones(5000, 0xFF);
  EXPECT_EQ(onesComplementChecksum(ones.data(), ones.size()), 0x0000);
}

TEST(GenCPChecksum, AccumulatorChunksMatchWholeRangeAtOddSplits) {
  std::vector<uint8_t> data(301);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 37 + 11);
  const uint16_t whole = onesComplementChecksum(data.data(), data.size());
  for (std::size_t split : {0u, 1u, 2u, 3u, 150u, 151u, 300u, 301u}) {
    ChecksumAccumulator acc;
    acc.add(data.data(), split);
    acc.add(data.data() + split, data.size() - split);
    EXPECT_EQ(acc.checksum(), whole) << "split at " << split;
  }
}

TEST(GenCPEncode, MatchesReferenceVectors) {
  for (const auto& v : wireVectors()) {
    EXPECT_EQ(encode(v.packet), hex(v.bytes)) << v.name;
  }
}

TEST(GenCPEncode, ChecksumOfReceivedPacketVerifies) {
  for (const auto& v : wireVectors()) {
    const auto bytes = hex(v.bytes);
    EXPECT_EQ(ccdChecksum(bytes.data()), readU16(bytes.data() + 2)) << v.name;
    EXPECT_EQ(scdChecksum(bytes.data(), bytes.size() - kHeaderSize), readU16(bytes.data() + 4))
        << v.name;
  }
}

TEST(GenCPEncode, RefusesOversizedScd) {
  Packet packet;
  packet.commandId = kReadMemAck;
  packet.scd.assign(kMaxScdSize, 0x55);
  EXPECT_EQ(encode(packet).size(), kMaxPacketSize);
  packet.scd.push_back(0);
  EXPECT_TRUE(encode(packet).empty());
}

TEST(GenCPSha1, MatchesPublishedVectorsAtEverySplit) {
  struct Vector {
    std::string text;
    const char* digest;
  };
  const Vector vectors[] = {
      {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
      {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
      {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
  };
  for (const auto& v : vectors) {
    const auto* data = reinterpret_cast<const uint8_t*>(v.text.data());
    EXPECT_EQ(toHex(sha1(data, v.text.size())), v.digest) << v.text.size();
    // Chunks that straddle the 64-byte blocks and the length field hash the same.
    Sha1 chunked;
    for (std::size_t at = 0; at < v.text.size(); at += 55) {
      chunked.add(data + at, std::min<std::size_t>(55, v.text.size() - at));
    }
    EXPECT_EQ(toHex(chunked.finish()), v.digest) << v.text.size();
  }
  EXPECT_TRUE(isZero(Sha1Digest{}));
  EXPECT_FALSE(isZero(sha1(nullptr, 0)));
}
