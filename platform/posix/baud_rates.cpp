// Table of the line speeds a serial port accepts.
#include "baud_rates.h"

#include <iterator>

namespace vq::platform::posix {

namespace {
struct BaudRateCode {
  std::uint32_t rate;
  speed_t code;
};

constexpr BaudRateCode kBaudRates[] = {
    {1200, B1200},     {2400, B2400},     {4800, B4800},     {9600, B9600},
    {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},
    {230400, B230400}, {460800, B460800}, {921600, B921600},
};
}  // namespace

std::optional<speed_t> SpeedCode(std::uint32_t baudRate) {
  for (const BaudRateCode& entry : kBaudRates) {
    if (entry.rate == baudRate) return entry.code;
  }
  return std::nullopt;
}

std::uint32_t RateOfSpeedCode(speed_t code) {
  for (const BaudRateCode& entry : kBaudRates) {
    if (entry.code == code) return entry.rate;
  }
  return 0;
}

std::vector<std::uint32_t> KnownBaudRates() {
  std::vector<std::uint32_t> rates;
  rates.reserve(std::size(kBaudRates));
  for (const BaudRateCode& entry : kBaudRates) rates.push_back(entry.rate);
  return rates;
}

}  // namespace vq::platform::posix
