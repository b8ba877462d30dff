// Terminal detection of the standard streams and terminal devices (termios).
#include "vq/platform/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <utility>

#include "fd_io.h"

namespace vq::platform {

bool IsStdinTerminal() { return isatty(STDIN_FILENO) == 1; }
bool IsStdoutTerminal() { return isatty(STDOUT_FILENO) == 1; }
bool IsStderrTerminal() { return isatty(STDERR_FILENO) == 1; }

struct TerminalDevice::SavedMode {
  termios settings;
};

TerminalDevice::TerminalDevice() noexcept = default;

TerminalDevice::TerminalDevice(TerminalDevice&& other) noexcept
    : DeviceStream(std::move(other)), savedMode_(std::move(other.savedMode_)) {}

TerminalDevice& TerminalDevice::operator=(TerminalDevice&& other) noexcept {
  if (this != &other) {
    Close();
    DeviceStream::operator=(std::move(other));
    savedMode_ = std::move(other.savedMode_);
  }
  return *this;
}

TerminalDevice::~TerminalDevice() { Close(); }

bool TerminalDevice::Open(const std::string& path, std::string* error) {
  Close();
  const std::string device = path.empty() ? std::string("/dev/tty") : path;
  const int fd = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    if (error != nullptr) *error = posix::ErrnoText("cannot open terminal '" + device + "'");
    return false;
  }
  if (isatty(fd) != 1) {
    if (error != nullptr) *error = "'" + device + "' is not a terminal";
    posix::CloseQuietly(fd);
    return false;
  }
  handle_ = fd;
  return true;
}

bool TerminalDevice::IsBackground() const {
  if (!IsOpen()) return false;
  const pid_t group = tcgetpgrp(static_cast<int>(handle_));
  return group >= 0 && group != getpgrp();
}

bool TerminalDevice::EnterRawMode(std::string* error) {
  if (!IsOpen()) {
    if (error != nullptr) *error = "terminal is not open";
    return false;
  }
  if (savedMode_ != nullptr) return true;
  auto saved = std::make_unique<SavedMode>();
  if (tcgetattr(static_cast<int>(handle_), &saved->settings) != 0) {
    if (error != nullptr) *error = posix::ErrnoText("cannot read terminal settings");
    return false;
  }
  if (!posix::MakeRaw(static_cast<int>(handle_), error)) {
    tcsetattr(static_cast<int>(handle_), TCSANOW, &saved->settings);
    return false;
  }
  savedMode_ = std::move(saved);
  return true;
}

void TerminalDevice::RestoreMode() {
  if (savedMode_ == nullptr) return;
  if (IsOpen()) tcsetattr(static_cast<int>(handle_), TCSANOW, &savedMode_->settings);
  savedMode_.reset();
}

bool TerminalDevice::GetSize(std::uint32_t* rows, std::uint32_t* columns) const {
  winsize size{};
  if (!IsOpen() || ioctl(static_cast<int>(handle_), TIOCGWINSZ, &size) != 0) return false;
  if (size.ws_row == 0 || size.ws_col == 0) return false;
  if (rows != nullptr) *rows = size.ws_row;
  if (columns != nullptr) *columns = size.ws_col;
  return true;
}

void TerminalDevice::Close() {
  RestoreMode();
  DeviceStream::Close();
}

}  // namespace vq::platform
