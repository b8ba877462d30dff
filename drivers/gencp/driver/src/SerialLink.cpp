#include "SerialLink.h"

namespace vq::gencpdrv {

namespace {
// A port that keeps streaming garbage must not hold the driver forever.
constexpr std::size_t kMaxDrainBytes = 4096;
}  // namespace

CLINT32 SerialLink::writeAll(const std::vector<uint8_t>& bytes, uint32_t timeoutMs) {
  std::size_t sent = 0;
  const Deadline deadline(timeoutMs);
  while (sent < bytes.size()) {
    auto count = static_cast<CLUINT32>(bytes.size() - sent);
    // ISerial takes a non-const buffer; it does not write into it.
    auto* data = reinterpret_cast<CLINT8*>(const_cast<uint8_t*>(bytes.data() + sent));
    const CLINT32 status = serial_->clSerialWrite(data, &count, deadline.remainingMs());
    if (status != CL_ERR_NO_ERR) return status;
    if (count == 0 && deadline.expired()) return CL_ERR_TIMEOUT;
    sent += count;
  }
  return CL_ERR_NO_ERR;
}

CLINT32 SerialLink::readExact(uint8_t* buffer, std::size_t size, const Deadline& deadline) {
  std::size_t received = 0;
  while (received < size) {
    if (deadline.expired()) return CL_ERR_TIMEOUT;
    auto count = static_cast<CLUINT32>(size - received);
    const CLINT32 status = serial_->clSerialRead(reinterpret_cast<CLINT8*>(buffer + received),
                                                 &count, deadline.remainingMs());
    if (status != CL_ERR_NO_ERR) return status;
    if (count > size - received) return CL_ERR_INVALID_REFERENCE;  // a port lying about sizes
    received += count;
  }
  return CL_ERR_NO_ERR;
}

void SerialLink::drain(uint32_t quietMs) {
  uint8_t byte = 0;
  for (std::size_t i = 0; i < kMaxDrainBytes; ++i) {
    CLUINT32 count = 1;
    const CLINT32 status = serial_->clSerialRead(reinterpret_cast<CLINT8*>(&byte), &count, quietMs);
    if (status != CL_ERR_NO_ERR || count == 0) return;
  }
}

}  // namespace vq::gencpdrv
