// Serial ports: raw 8 data bits, no parity, 1 stop bit, no flow control.
#ifndef VQ_PLATFORM_SERIAL_PORT_H
#define VQ_PLATFORM_SERIAL_PORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "vq/platform/device_stream.h"

namespace vq::platform {

class SerialPort : public DeviceStream {
 public:
  static constexpr std::uint32_t kDefaultBaudRate = 9600;

  SerialPort() noexcept = default;
  SerialPort(SerialPort&& other) noexcept;
  SerialPort& operator=(SerialPort&& other) noexcept;
  ~SerialPort();

  // Opens a device path (e.g. /dev/ttyS0 or a pseudo-terminal's slave) in raw
  // 8N1 at kDefaultBaudRate, discarding anything pending. Closes a port already
  // open in this object first.
  bool Open(const std::string& devicePath, std::string* error = nullptr);

  // Sets the line speed; an unsupported value is refused with a text.
  bool SetBaudRate(std::uint32_t baudRate, std::string* error = nullptr);
  std::uint32_t BaudRate() const { return baudRate_; }
  const std::string& DevicePath() const { return devicePath_; }

  static bool IsSupportedBaudRate(std::uint32_t baudRate);
  // Ascending.
  static std::vector<std::uint32_t> SupportedBaudRates();

 private:
  std::uint32_t baudRate_ = 0;
  std::string devicePath_;
};

}  // namespace vq::platform

#endif  // VQ_PLATFORM_SERIAL_PORT_H
