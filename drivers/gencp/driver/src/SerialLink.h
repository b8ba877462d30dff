// Byte transfers over the ISerial a client hands to the driver, tolerant of ports that deliver
// fewer bytes than asked for.
#pragma once

#include <CLProtocol/ISerial.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Deadline.h"

namespace vq::gencpdrv {

class SerialLink {
 public:
  explicit SerialLink(ISerial* serial) : serial_(serial) {}

  // Sends every byte; returns the port's status (CL_ERR_TIMEOUT when it sent fewer).
  CLINT32 writeAll(const std::vector<uint8_t>& bytes, uint32_t timeoutMs);
  // Reads exactly `size` bytes before the deadline; returns the port's status.
  CLINT32 readExact(uint8_t* buffer, std::size_t size, const Deadline& deadline);
  // Discards input until the line has been quiet for `quietMs` (bounded amount).
  void drain(uint32_t quietMs);

 private:
  ISerial* serial_;
};

}  // namespace vq::gencpdrv
