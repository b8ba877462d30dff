// Helpers on file descriptors shared by the serial port and the pseudo-terminal
// (private to the POSIX implementation).
#ifndef VQ_PLATFORM_POSIX_FD_IO_H
#define VQ_PLATFORM_POSIX_FD_IO_H

#include <string>

namespace vq::platform::posix {

// "<what>: <strerror(errno)>" for the current errno.
std::string ErrnoText(const std::string& what);

// Puts a terminal descriptor in raw 8N1 mode without flow control, reads
// returning at once (the caller polls). False with a text on failure.
bool MakeRaw(int fd, std::string* error);

void CloseQuietly(int fd);

}  // namespace vq::platform::posix

#endif  // VQ_PLATFORM_POSIX_FD_IO_H
