// Pausing the calling thread.
#ifndef VQ_PLATFORM_SLEEP_H
#define VQ_PLATFORM_SLEEP_H

#include <cstdint>

namespace vq::platform {

void SleepMilliseconds(std::uint32_t milliseconds);

}  // namespace vq::platform

#endif  // VQ_PLATFORM_SLEEP_H
