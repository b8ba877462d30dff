#include "vq/gencp/Checksum.h"

#include "vq/gencp/Constants.h"

namespace vq::gencp {

namespace {
// Fold carries back into the low 16 bits; keeps the running sum small.
uint32_t fold(uint32_t s) {
  while (s > 0xFFFF) s = (s & 0xFFFF) + (s >> 16);
  return s;
}
}  // namespace

void ChecksumAccumulator::add(const uint8_t* data, std::size_t size) {
  if (data == nullptr) return;
  for (std::size_t i = 0; i < size; ++i) {
    sum_ += odd_ ? data[i] : static_cast<uint32_t>(data[i]) << 8;
    odd_ = !odd_;
    if ((i & 0xFFF) == 0xFFF) sum_ = fold(sum_);
  }
  sum_ = fold(sum_);
}

uint16_t ChecksumAccumulator::checksum() const {
  return static_cast<uint16_t>(~fold(sum_) & 0xFFFF);
}

uint16_t onesComplementChecksum(const uint8_t* data, std::size_t size) {
  ChecksumAccumulator acc;
  acc.add(data, size);
  return acc.checksum();
}

uint16_t ccdChecksum(const uint8_t* packet) {
  return onesComplementChecksum(packet + 6, kHeaderSize - 6);
}

uint16_t scdChecksum(const uint8_t* packet, std::size_t scdLength) {
  return onesComplementChecksum(packet + 6, kHeaderSize - 6 + scdLength);
}

}  // namespace vq::gencp
