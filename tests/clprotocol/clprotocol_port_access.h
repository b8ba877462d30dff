// Big-endian 32-bit register access and error capture through a CCLPort, shared by the
// end-to-end port tests.
#pragma once

#include <CLProtocol/CLPort.h>
#include <GenICam.h>

#include <cstdint>
#include <string>

namespace clprotocol_test {

inline uint32_t ReadU32(CLProtocol::CCLPort& port, int64_t address) {
  uint8_t bytes[4] = {};
  port.Read(bytes, address, 4);
  return static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

inline void WriteU32(CLProtocol::CCLPort& port, int64_t address, uint32_t value) {
  const uint8_t bytes[4] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                            static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  port.Write(bytes, address, 4);
}

// The description of the GenICam exception the call throws, or "no exception".
inline std::string ErrorOf(CLProtocol::CCLPort& port, void (*call)(CLProtocol::CCLPort&)) {
  try {
    call(port);
  } catch (const GenICam::GenericException& e) {
    return e.GetDescription();
  }
  return "no exception";
}

}  // namespace clprotocol_test
