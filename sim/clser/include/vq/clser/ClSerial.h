// The Camera Link serial interface that frame-grabber libraries (clser*.so) export, as the
// Camera Link standard defines its C functions. A host loads such a library at run time and
// looks the functions up by these names.
#pragma once

#include <cstdint>

namespace vq::clser {

using CLINT8 = char;
using CLINT32 = std::int32_t;
using CLUINT32 = std::uint32_t;
using hSerRef = void*;

using ClSerialInitFn = CLINT32 (*)(CLUINT32 serialIndex, hSerRef* serialRef);
using ClSerialReadFn = CLINT32 (*)(hSerRef serialRef, CLINT8* buffer, CLUINT32* bufferSize,
                                   CLUINT32 serialTimeout);
using ClSerialWriteFn = CLINT32 (*)(hSerRef serialRef, CLINT8* buffer, CLUINT32* bufferSize,
                                    CLUINT32 serialTimeout);
using ClSerialCloseFn = void (*)(hSerRef serialRef);
using ClGetNumSerialPortsFn = CLINT32 (*)(CLUINT32* numSerialPorts);
using ClGetSupportedBaudRatesFn = CLINT32 (*)(hSerRef serialRef, CLUINT32* baudRates);
using ClSetBaudRateFn = CLINT32 (*)(hSerRef serialRef, CLUINT32 baudRate);
using ClFlushPortFn = CLINT32 (*)(hSerRef serialRef);
using ClGetErrorTextFn = CLINT32 (*)(CLINT32 errorCode, CLINT8* errorText,
                                     CLUINT32* errorTextSize);

// Status codes of the interface.
constexpr CLINT32 CL_ERR_NO_ERR = 0;
constexpr CLINT32 CL_ERR_BUFFER_TOO_SMALL = -10001;
constexpr CLINT32 CL_ERR_TIMEOUT = -10004;
constexpr CLINT32 CL_ERR_INVALID_INDEX = -10005;
constexpr CLINT32 CL_ERR_INVALID_REFERENCE = -10006;
constexpr CLINT32 CL_ERR_ERROR_NOT_FOUND = -10007;
constexpr CLINT32 CL_ERR_BAUD_RATE_NOT_SUPPORTED = -10008;
constexpr CLINT32 CL_ERR_OUT_OF_MEMORY = -10009;
constexpr CLINT32 CL_ERR_INVALID_PTR = -10011;

}  // namespace vq::clser
