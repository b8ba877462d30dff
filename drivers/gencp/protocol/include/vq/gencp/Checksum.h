// GenCP checksums: the 16-bit one's complement of the one's-complement sum of big-endian
// words (an odd trailing byte is padded with a zero low byte).
#pragma once

#include <cstddef>
#include <cstdint>

namespace vq::gencp {

// Running one's-complement sum; words continue across add() calls, so an odd-sized chunk
// followed by another chunk sums exactly like the concatenation.
class ChecksumAccumulator {
 public:
  void add(const uint8_t* data, std::size_t size);
  // The checksum of everything added so far (complement of the folded sum).
  uint16_t checksum() const;

 private:
  uint32_t sum_ = 0;
  bool odd_ = false;
};

// Checksum of one byte range.
uint16_t onesComplementChecksum(const uint8_t* data, std::size_t size);

// CCD checksum of a packet: covers channel id and CCD (bytes 6..15).
// `packet` must hold at least kHeaderSize bytes.
uint16_t ccdChecksum(const uint8_t* packet);
// SCD checksum: covers channel id, CCD and `scdLength` SCD bytes (bytes 6..15+scdLength).
uint16_t scdChecksum(const uint8_t* packet, std::size_t scdLength);

}  // namespace vq::gencp
