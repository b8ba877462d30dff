// Sleeping in milliseconds.
#include "vq/platform/sleep.h"

#include <cerrno>
#include <ctime>

namespace vq::platform {

void SleepMilliseconds(std::uint32_t milliseconds) {
  timespec remaining{static_cast<time_t>(milliseconds / 1000),
                     static_cast<long>(milliseconds % 1000) * 1000000L};
  while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
  }
}

}  // namespace vq::platform
