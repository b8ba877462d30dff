// Serial ports through termios: raw 8N1, no flow control, non-blocking I/O.
#include "vq/platform/serial_port.h"

#include <fcntl.h>
#include <termios.h>

#include <utility>

#include "baud_rates.h"
#include "fd_io.h"

namespace vq::platform {

namespace {
void SetError(std::string* error, const std::string& text) {
  if (error != nullptr) *error = text;
}
}  // namespace

SerialPort::SerialPort(SerialPort&& other) noexcept
    : DeviceStream(std::move(other)),
      baudRate_(std::exchange(other.baudRate_, 0)),
      devicePath_(std::move(other.devicePath_)) {}

SerialPort& SerialPort::operator=(SerialPort&& other) noexcept {
  DeviceStream::operator=(std::move(other));
  baudRate_ = std::exchange(other.baudRate_, 0);
  devicePath_ = std::move(other.devicePath_);
  return *this;
}

SerialPort::~SerialPort() = default;

bool SerialPort::Open(const std::string& devicePath, std::string* error) {
  Close();
  baudRate_ = 0;
  devicePath_.clear();
  if (devicePath.empty() || devicePath.find('\0') != std::string::npos) {
    SetError(error, "invalid device path '" + devicePath + "'");
    return false;
  }
  const int fd = open(devicePath.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    SetError(error, posix::ErrnoText("cannot open '" + devicePath + "'"));
    return false;
  }
  if (!posix::MakeRaw(fd, error)) {
    posix::CloseQuietly(fd);
    return false;
  }
  handle_ = fd;
  devicePath_ = devicePath;
  if (!SetBaudRate(kDefaultBaudRate, error)) {
    Close();
    devicePath_.clear();
    return false;
  }
  tcflush(fd, TCIOFLUSH);
  return true;
}

bool SerialPort::SetBaudRate(std::uint32_t baudRate, std::string* error) {
  if (!IsOpen()) {
    SetError(error, "serial port is not open");
    return false;
  }
  const std::optional<speed_t> code = posix::SpeedCode(baudRate);
  if (!code) {
    SetError(error, "unsupported baud rate " + std::to_string(baudRate));
    return false;
  }
  const int fd = static_cast<int>(handle_);
  termios settings{};
  if (tcgetattr(fd, &settings) != 0 || cfsetispeed(&settings, *code) != 0 ||
      cfsetospeed(&settings, *code) != 0 || tcsetattr(fd, TCSANOW, &settings) != 0) {
    SetError(error, posix::ErrnoText("cannot set baud rate " + std::to_string(baudRate)));
    return false;
  }
  baudRate_ = baudRate;
  return true;
}

bool SerialPort::IsSupportedBaudRate(std::uint32_t baudRate) {
  return posix::SpeedCode(baudRate).has_value();
}

std::vector<std::uint32_t> SerialPort::SupportedBaudRates() { return posix::KnownBaudRates(); }

}  // namespace vq::platform
