// File-descriptor helpers: error texts, raw terminal mode, closing.
#include "fd_io.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vq::platform::posix {

std::string ErrnoText(const std::string& what) { return what + ": " + std::strerror(errno); }

bool MakeRaw(int fd, std::string* error) {
  termios settings{};
  if (tcgetattr(fd, &settings) != 0) {
    if (error != nullptr) *error = ErrnoText("cannot read terminal settings");
    return false;
  }
  cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB | CRTSCTS);
  settings.c_cflag |= CS8 | CLOCAL | CREAD;
  settings.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
  settings.c_cc[VMIN] = 0;
  settings.c_cc[VTIME] = 0;
  if (tcsetattr(fd, TCSANOW, &settings) != 0) {
    if (error != nullptr) *error = ErrnoText("cannot set raw mode");
    return false;
  }
  return true;
}

void CloseQuietly(int fd) {
  if (fd >= 0) close(fd);
}

}  // namespace vq::platform::posix
