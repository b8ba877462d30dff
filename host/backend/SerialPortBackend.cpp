#include "backend/SerialPortBackend.h"

namespace vq::host {

SerialPortBackend::SerialPortBackend(const std::string& devicePath) {
  std::string error;
  if (!port_.Open(devicePath, &error)) {
    throw ConnectionError("cannot open serial port " + devicePath + ": " + error +
                          "; check the device path and that you may use it (group dialout)");
  }
}

std::int32_t SerialPortBackend::read(std::uint8_t* data, std::uint32_t& count,
                                     std::uint32_t timeoutMs) {
  const std::uint32_t wanted = count;
  std::string error;
  const std::int64_t got = port_.Read(data, wanted, timeoutMs, &error);
  if (got < 0) {
    count = 0;
    lastError_ = "reading " + port_.DevicePath() + " failed: " + error;
    return kClInvalidReference;
  }
  count = static_cast<std::uint32_t>(got);
  if (count == wanted) return kClOk;
  lastError_ = "the camera on " + port_.DevicePath() + " did not answer in time";
  return kClTimeout;
}

std::int32_t SerialPortBackend::write(const std::uint8_t* data, std::uint32_t& count,
                                      std::uint32_t timeoutMs) {
  std::string error;
  if (!port_.Write(data, count, timeoutMs, &error)) {
    count = 0;
    lastError_ = "writing " + port_.DevicePath() + " failed: " + error;
    return kClTimeout;
  }
  return kClOk;
}

std::uint32_t SerialPortBackend::supportedBaudRates() const {
  std::uint32_t mask = 0;
  for (std::uint32_t rate : platform::SerialPort::SupportedBaudRates()) mask |= BitOfBaudRate(rate);
  return mask;
}

std::int32_t SerialPortBackend::setBaudRate(std::uint32_t rateBit) {
  const std::uint32_t rate = BaudRateOfBit(rateBit);
  std::string error;
  if (rate == 0 || !port_.SetBaudRate(rate, &error)) {
    lastError_ = "the port refused the baud-rate bit " + std::to_string(rateBit) + ": " + error;
    return kClBaudRateNotSupported;
  }
  return kClOk;
}

}  // namespace vq::host
