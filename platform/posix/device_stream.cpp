// Byte I/O with time-outs on a non-blocking descriptor, waiting with poll().
#include "vq/platform/device_stream.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <utility>

#include "fd_io.h"

namespace vq::platform {

namespace {

using Clock = std::chrono::steady_clock;

void SetError(std::string* error, const std::string& text) {
  if (error != nullptr) *error = text;
}

int MillisecondsLeft(Clock::time_point deadline) {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

// 1 when `events` are ready, 0 on time-out, -1 on an error. A hang-up counts as
// ready so that the following read or write reports it.
int WaitFor(int fd, short events, Clock::time_point deadline, std::string* error) {
  for (;;) {
    pollfd entry{fd, events, 0};
    const int result = poll(&entry, 1, MillisecondsLeft(deadline));
    if (result > 0) {
      if ((entry.revents & POLLNVAL) != 0) {
        SetError(error, "device handle is not valid");
        return -1;
      }
      return 1;
    }
    if (result == 0) return 0;
    if (errno != EINTR) {
      SetError(error, posix::ErrnoText("poll failed"));
      return -1;
    }
  }
}

Clock::time_point DeadlineAfter(std::uint32_t timeoutMs) {
  return Clock::now() + std::chrono::milliseconds(timeoutMs);
}

bool CheckArguments(std::intptr_t handle, const void* buffer, std::size_t size,
                    std::string* error) {
  if (handle < 0) {
    SetError(error, "device is not open");
    return false;
  }
  if (buffer == nullptr && size != 0) {
    SetError(error, "null buffer");
    return false;
  }
  return true;
}

// Reads what is available now: bytes read, 0 when nothing, -1 on an error.
std::int64_t ReadAvailable(int fd, void* buffer, std::size_t size, std::string* error) {
  for (;;) {
    const ssize_t count = read(fd, buffer, size);
    if (count > 0) return count;
    if (count == 0) {
      SetError(error, "device closed by the other side");
      return -1;
    }
    if (errno == EINTR) continue;
    if (errno == EAGAIN || errno == EWOULDBLOCK) return 0;
    SetError(error, posix::ErrnoText("read failed"));
    return -1;
  }
}

}  // namespace

DeviceStream::DeviceStream(DeviceStream&& other) noexcept
    : handle_(std::exchange(other.handle_, -1)) {}

DeviceStream& DeviceStream::operator=(DeviceStream&& other) noexcept {
  if (this != &other) {
    Close();
    handle_ = std::exchange(other.handle_, -1);
  }
  return *this;
}

DeviceStream::~DeviceStream() { Close(); }

std::int64_t DeviceStream::ReadSome(void* buffer, std::size_t size, std::uint32_t timeoutMs,
                                    std::string* error) {
  if (!CheckArguments(handle_, buffer, size, error)) return -1;
  if (size == 0) return 0;
  const int fd = static_cast<int>(handle_);
  const Clock::time_point deadline = DeadlineAfter(timeoutMs);
  for (;;) {
    const int ready = WaitFor(fd, POLLIN, deadline, error);
    if (ready <= 0) return ready;
    const std::int64_t count = ReadAvailable(fd, buffer, size, error);
    if (count != 0) return count;
    if (MillisecondsLeft(deadline) == 0) return 0;
  }
}

std::int64_t DeviceStream::Read(void* buffer, std::size_t size, std::uint32_t timeoutMs,
                                std::string* error) {
  if (!CheckArguments(handle_, buffer, size, error)) return -1;
  const Clock::time_point deadline = DeadlineAfter(timeoutMs);
  auto* bytes = static_cast<unsigned char*>(buffer);
  std::size_t total = 0;
  while (total < size) {
    const auto left = static_cast<std::uint32_t>(MillisecondsLeft(deadline));
    const std::int64_t count = ReadSome(bytes + total, size - total, left, error);
    if (count < 0) return -1;
    if (count == 0) break;
    total += static_cast<std::size_t>(count);
  }
  return static_cast<std::int64_t>(total);
}

bool DeviceStream::Write(const void* data, std::size_t size, std::uint32_t timeoutMs,
                         std::string* error) {
  if (!CheckArguments(handle_, data, size, error)) return false;
  const int fd = static_cast<int>(handle_);
  const Clock::time_point deadline = DeadlineAfter(timeoutMs);
  const auto* bytes = static_cast<const unsigned char*>(data);
  std::size_t written = 0;
  while (written < size) {
    const ssize_t count = write(fd, bytes + written, size - written);
    if (count > 0) {
      written += static_cast<std::size_t>(count);
      continue;
    }
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
      SetError(error, posix::ErrnoText("write failed"));
      return false;
    }
    const int ready = WaitFor(fd, POLLOUT, deadline, error);
    if (ready < 0) return false;
    if (ready == 0) {
      SetError(error, "write timed out after " + std::to_string(written) + " of " +
                          std::to_string(size) + " bytes");
      return false;
    }
  }
  return true;
}

bool DeviceStream::Flush(std::string* error) {
  if (handle_ < 0) {
    SetError(error, "device is not open");
    return false;
  }
  if (tcflush(static_cast<int>(handle_), TCIOFLUSH) != 0) {
    SetError(error, posix::ErrnoText("flush failed"));
    return false;
  }
  return true;
}

void DeviceStream::Close() {
  posix::CloseQuietly(static_cast<int>(handle_));
  handle_ = -1;
}

}  // namespace vq::platform
