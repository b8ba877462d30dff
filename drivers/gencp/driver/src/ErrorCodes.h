// The driver's own status codes (the -30xxx block) and the texts clpGetErrorText gives for them.
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <cstdint>
#include <string>

namespace vq::gencpdrv {

// A device that answers with an error status s gives kDeviceStatusBase - (s & 0x0FFF).
constexpr CLINT32 kDeviceStatusBase = -30000;
// The device executed a write but answered with a warning status.
constexpr CLINT32 kWriteWarning = -30100;

// Code for a GenCP acknowledge status with the error bit set.
CLINT32 codeForDeviceStatus(uint16_t status);

// Text of a code this driver defines or uses; empty when it has none.
std::string errorText(CLINT32 code);

}  // namespace vq::gencpdrv
