// Line speeds known to termios (private to the POSIX implementation).
#ifndef VQ_PLATFORM_POSIX_BAUD_RATES_H
#define VQ_PLATFORM_POSIX_BAUD_RATES_H

#include <termios.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace vq::platform::posix {

// The termios code of a baud rate, or nothing when the rate is not supported.
std::optional<speed_t> SpeedCode(std::uint32_t baudRate);
std::vector<std::uint32_t> KnownBaudRates();
// The baud rate of a termios code, 0 for a code not in the table.
std::uint32_t RateOfSpeedCode(speed_t code);

}  // namespace vq::platform::posix

#endif  // VQ_PLATFORM_POSIX_BAUD_RATES_H
