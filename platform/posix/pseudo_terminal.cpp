// Pseudo-terminal pairs: posix_openpt for the master, a kept-open slave handle.
#include "vq/platform/pseudo_terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

#include <utility>

#include "baud_rates.h"
#include "fd_io.h"

namespace vq::platform {

namespace {
void SetError(std::string* error, const std::string& text) {
  if (error != nullptr) *error = text;
}

// Opens the master and returns its slave's path; -1 with a text on failure.
int OpenMaster(std::string* slavePath, std::string* error) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0) {
    SetError(error, posix::ErrnoText("cannot create a pseudo-terminal"));
    return -1;
  }
  char name[128];
  if (grantpt(master) != 0 || unlockpt(master) != 0 || ptsname_r(master, name, sizeof name) != 0) {
    SetError(error, posix::ErrnoText("cannot prepare the pseudo-terminal slave"));
    posix::CloseQuietly(master);
    return -1;
  }
  *slavePath = name;
  return master;
}

bool MakeNonBlocking(int fd, std::string* error) {
  const int flags = fcntl(fd, F_GETFL);
  if (flags < 0 || fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0) {
    SetError(error, posix::ErrnoText("cannot make the pseudo-terminal non-blocking"));
    return false;
  }
  return true;
}
}  // namespace

PseudoTerminal::PseudoTerminal(PseudoTerminal&& other) noexcept
    : DeviceStream(std::move(other)),
      slaveHandle_(std::exchange(other.slaveHandle_, -1)),
      slavePath_(std::move(other.slavePath_)) {}

PseudoTerminal& PseudoTerminal::operator=(PseudoTerminal&& other) noexcept {
  if (this != &other) {
    Close();
    DeviceStream::operator=(std::move(other));
    slaveHandle_ = std::exchange(other.slaveHandle_, -1);
    slavePath_ = std::move(other.slavePath_);
  }
  return *this;
}

PseudoTerminal::~PseudoTerminal() { Close(); }

bool PseudoTerminal::Open(std::string* error) {
  Close();
  std::string path;
  const int master = OpenMaster(&path, error);
  if (master < 0) return false;
  const int slave = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (slave < 0) {
    SetError(error, posix::ErrnoText("cannot open '" + path + "'"));
    posix::CloseQuietly(master);
    return false;
  }
  if (!posix::MakeRaw(slave, error) || !posix::MakeRaw(master, error) ||
      !MakeNonBlocking(master, error)) {
    posix::CloseQuietly(slave);
    posix::CloseQuietly(master);
    return false;
  }
  handle_ = master;
  slaveHandle_ = slave;
  slavePath_ = path;
  return true;
}

std::uint32_t PseudoTerminal::SlaveBaudRate() const {
  termios settings{};
  if (slaveHandle_ < 0 || tcgetattr(static_cast<int>(slaveHandle_), &settings) != 0) return 0;
  return posix::RateOfSpeedCode(cfgetospeed(&settings));
}

void PseudoTerminal::Close() {
  DeviceStream::Close();
  posix::CloseQuietly(static_cast<int>(slaveHandle_));
  slaveHandle_ = -1;
  slavePath_.clear();
}

}  // namespace vq::platform
