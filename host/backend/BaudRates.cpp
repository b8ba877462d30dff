#include "backend/SerialBackend.h"

namespace vq::host {

namespace {
constexpr std::uint32_t kRates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
}

std::uint32_t BaudRateOfBit(std::uint32_t rateBit) {
  for (std::uint32_t i = 0; i < 8; ++i) {
    if (rateBit == (1u << i)) return kRates[i];
  }
  return 0;
}

std::uint32_t BitOfBaudRate(std::uint32_t baudRate) {
  for (std::uint32_t i = 0; i < 8; ++i) {
    if (kRates[i] == baudRate) return 1u << i;
  }
  return 0;
}

}  // namespace vq::host
