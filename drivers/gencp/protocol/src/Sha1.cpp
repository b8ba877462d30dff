#include "vq/gencp/Sha1.h"

#include <algorithm>

#include "vq/gencp/Endian.h"

namespace vq::gencp {

namespace {
uint32_t rotateLeft(uint32_t value, unsigned bits) { return value << bits | value >> (32 - bits); }
}  // namespace

Sha1::Sha1() : state_{0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u} {}

void Sha1::compress(const uint8_t* block) {
  uint32_t w[80];
  for (int i = 0; i < 16; ++i) w[i] = readU32(block + 4 * i);
  for (int i = 16; i < 80; ++i) w[i] = rotateLeft(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
  uint32_t a = state_[0], b = state_[1], c = state_[2], d = state_[3], e = state_[4];
  for (int i = 0; i < 80; ++i) {
    uint32_t f = 0;
    uint32_t k = 0;
    if (i < 20) {
      f = (b & c) | (~b & d);
      k = 0x5A827999u;
    } else if (i < 40) {
      f = b ^ c ^ d;
      k = 0x6ED9EBA1u;
    } else if (i < 60) {
      f = (b & c) | (b & d) | (c & d);
      k = 0x8F1BBCDCu;
    } else {
      f = b ^ c ^ d;
      k = 0xCA62C1D6u;
    }
    const uint32_t next = rotateLeft(a, 5) + f + e + k + w[i];
    e = d;
    d = c;
    c = rotateLeft(b, 30);
    b = a;
    a = next;
  }
  state_[0] += a;
  state_[1] += b;
  state_[2] += c;
  state_[3] += d;
  state_[4] += e;
}

void Sha1::add(const uint8_t* data, std::size_t size) {
  if (data == nullptr) return;
  totalBytes_ += size;
  while (size > 0) {
    const std::size_t take = std::min(size, sizeof block_ - blockUsed_);
    std::copy_n(data, take, block_ + blockUsed_);
    blockUsed_ += take;
    data += take;
    size -= take;
    if (blockUsed_ == sizeof block_) {
      compress(block_);
      blockUsed_ = 0;
    }
  }
}

Sha1Digest Sha1::finish() {
  const uint64_t bits = totalBytes_ * 8;
  const uint8_t marker = 0x80;
  add(&marker, 1);
  const uint8_t zero = 0;
  while (blockUsed_ != 56) add(&zero, 1);
  uint8_t length[8];
  writeU64(length, bits);
  add(length, sizeof length);
  Sha1Digest digest;
  for (int i = 0; i < 5; ++i) writeU32(digest.data() + 4 * i, state_[i]);
  return digest;
}

Sha1Digest sha1(const uint8_t* data, std::size_t size) {
  Sha1 hash;
  hash.add(data, size);
  return hash.finish();
}

std::string toHex(const Sha1Digest& digest) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (uint8_t byte : digest) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0F]);
  }
  return text;
}

bool isZero(const Sha1Digest& digest) {
  return std::all_of(digest.begin(), digest.end(), [](uint8_t b) { return b == 0; });
}

}  // namespace vq::gencp
