#include "vq/sim/InProcessPort.h"

#include <algorithm>

#include "vq/gencp/Constants.h"

namespace vq::sim {

bool InProcessPort::write(const uint8_t* data, std::size_t size) {
  if (data == nullptr && size != 0) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  sim_.receive(data, size);
  return true;
}

std::size_t InProcessPort::read(uint8_t* data, std::size_t size, uint32_t timeoutMs) {
  if (data == nullptr || size == 0) return 0;
  std::lock_guard<std::mutex> lock(mutex_);
  const uint64_t deadline = sim_.nowUs() + uint64_t{timeoutMs} * 1000;
  std::size_t got = 0;
  while (got < size) {
    got += sim_.transmit(data + got, size - got);
    if (got == size || sim_.nowUs() >= deadline) break;
    // Nothing due yet: jump to the next event, but never past the caller's deadline.
    const uint64_t next = sim_.nextEventUs();
    sim_.advanceTo(std::min(deadline, std::max(next, sim_.nowUs() + 1)));
  }
  return got;
}

bool InProcessPort::setBaudRate(uint32_t rateBit) {
  if (gencp::baudBitToRate(rateBit) == 0) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  sim_.setHostBaudRate(rateBit);
  return true;
}

uint32_t InProcessPort::baudRate() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return sim_.hostBaudRate();
}

}  // namespace vq::sim
