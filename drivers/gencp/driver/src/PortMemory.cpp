#include "PortMemory.h"

#include <map>
#include <mutex>

namespace vq::gencpdrv {

namespace {

struct Memory {
  std::mutex mutex;
  std::map<const ISerial*, PortHints> byPort;
};

Memory& memory() {
  static Memory instance;
  return instance;
}

}  // namespace

PortHints PortMemory::recall(const ISerial* serial) {
  Memory& m = memory();
  std::lock_guard<std::mutex> lock(m.mutex);
  const auto it = m.byPort.find(serial);
  return it == m.byPort.end() ? PortHints{} : it->second;
}

void PortMemory::rememberRate(const ISerial* serial, uint32_t baudBit) {
  Memory& m = memory();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.byPort[serial].baudBit = baudBit;
}

void PortMemory::rememberDevice(const ISerial* serial, const KnownDevice& device) {
  Memory& m = memory();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.byPort[serial].device = device;
}

void PortMemory::clear() {
  Memory& m = memory();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.byPort.clear();
}

}  // namespace vq::gencpdrv
