// The driver's own status codes (the -30xxx block) and the texts clpGetErrorText gives for them.
//
//   GenCP status                         code     text
//   0x8001 .. 0x800F (GenCP, numbered)   -30001 .. -30015, one per status
//   0x8FFF GENCP_ERROR                   -30099
//   other GenCP-namespace error          -30098
//   technology-specific error (0xA...)   -30097
//   device-specific error (0xC...)       -30096
//   any status without the error bit    -30100 on a write: executed, with a warning
//   malformed answer                     -30200
//   unsupported GenCP major version      -30201
//   downloaded description fails SHA-1   -30202
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <cstdint>
#include <string>

namespace vq::gencpdrv {

constexpr CLINT32 kDeviceStatusBase = -30000;
constexpr CLINT32 kGenericDeviceError = -30099;
constexpr CLINT32 kUnknownGenCPError = -30098;
constexpr CLINT32 kTechnologyError = -30097;
constexpr CLINT32 kDeviceSpecificError = -30096;
// The device executed a write but answered with a warning status.
constexpr CLINT32 kWriteWarning = -30100;
constexpr CLINT32 kBadAnswer = -30200;
constexpr CLINT32 kUnsupportedVersion = -30201;
constexpr CLINT32 kDescriptionDigestMismatch = -30202;

// Code for a GenCP acknowledge status with the error bit set.
CLINT32 codeForDeviceStatus(uint16_t status);

// Text of a code this driver defines or uses; empty when it has none.
std::string errorText(CLINT32 code);

}  // namespace vq::gencpdrv
