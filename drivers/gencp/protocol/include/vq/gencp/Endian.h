// Big-endian field access: every GenCP field and bootstrap register on a serial link is
// big-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vq::gencp {

inline uint16_t readU16(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }

inline uint32_t readU32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
         static_cast<uint32_t>(p[2]) << 8 | p[3];
}

inline uint64_t readU64(const uint8_t* p) {
  return static_cast<uint64_t>(readU32(p)) << 32 | readU32(p + 4);
}

inline void writeU16(uint8_t* p, uint16_t v) {
  p[0] = static_cast<uint8_t>(v >> 8);
  p[1] = static_cast<uint8_t>(v);
}

inline void writeU32(uint8_t* p, uint32_t v) {
  writeU16(p, static_cast<uint16_t>(v >> 16));
  writeU16(p + 2, static_cast<uint16_t>(v));
}

inline void writeU64(uint8_t* p, uint64_t v) {
  writeU32(p, static_cast<uint32_t>(v >> 32));
  writeU32(p + 4, static_cast<uint32_t>(v));
}

inline void appendU16(std::vector<uint8_t>& out, uint16_t v) {
  out.push_back(static_cast<uint8_t>(v >> 8));
  out.push_back(static_cast<uint8_t>(v));
}

inline void appendU32(std::vector<uint8_t>& out, uint32_t v) {
  appendU16(out, static_cast<uint16_t>(v >> 16));
  appendU16(out, static_cast<uint16_t>(v));
}

inline void appendU64(std::vector<uint8_t>& out, uint64_t v) {
  appendU32(out, static_cast<uint32_t>(v >> 32));
  appendU32(out, static_cast<uint32_t>(v));
}

// Reads an unsigned big-endian value of 1..8 bytes.
inline uint64_t readUnsigned(const uint8_t* p, std::size_t size) {
  uint64_t v = 0;
  for (std::size_t i = 0; i < size && i < 8; ++i) v = v << 8 | p[i];
  return v;
}

}  // namespace vq::gencp
