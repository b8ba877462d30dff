// A serial device (a USB adapter, a frame grabber's tty, a pseudo-terminal): raw 8N1; the
// line speed follows the module's requests.
#pragma once

#include <string>

#include "backend/SerialBackend.h"
#include "vq/platform/serial_port.h"

namespace vq::host {

class SerialPortBackend : public SerialBackend {
 public:
  // Throws ConnectionError when the device cannot be opened.
  explicit SerialPortBackend(const std::string& devicePath);

  std::string describe() const override { return port_.DevicePath(); }
  std::int32_t read(std::uint8_t* data, std::uint32_t& count, std::uint32_t timeoutMs) override;
  std::int32_t write(const std::uint8_t* data, std::uint32_t& count,
                     std::uint32_t timeoutMs) override;
  std::uint32_t supportedBaudRates() const override;
  std::int32_t setBaudRate(std::uint32_t rateBit) override;
  std::uint32_t baudRate() const override { return BitOfBaudRate(port_.BaudRate()); }

 private:
  platform::SerialPort port_;
};

}  // namespace vq::host
