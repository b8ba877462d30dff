// What the driver remembers about each serial port for the life of the process: the rate that
// last worked and the device last identified there. Only hints: a probe checks them on the line.
#pragma once

#include <CLProtocol/ISerial.h>

#include <cstdint>
#include <optional>
#include <string>

#include "Connection.h"
#include "Identity.h"

namespace vq::gencpdrv {

struct KnownDevice {
  DeviceIdentity identity;
  BootstrapInfo bootstrap;
  // The model name register's bytes before its terminating NUL (NUL unit in UTF-16): a read of
  // these bytes plus the terminator proves the device's model name equal.
  std::string modelBytes;
};

struct PortHints {
  uint32_t baudBit = 0;  // 0: nothing worked yet
  std::optional<KnownDevice> device;
};

class PortMemory {
 public:
  static PortHints recall(const ISerial* serial);
  static void rememberRate(const ISerial* serial, uint32_t baudBit);
  static void rememberDevice(const ISerial* serial, const KnownDevice& device);
  static void clear();
};

}  // namespace vq::gencpdrv
