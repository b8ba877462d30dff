// The Camera Link serial interface that frame-grabber libraries (clser*.so) export, as the
// Camera Link standard defines its C functions. A host loads such a library at run time and
// looks the functions up by these names. Types and status codes are the standard's, shared
// with the protocol driver interface.
#pragma once

#include <CLProtocol/CLProtocol.h>

namespace vq::clser {

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
using ClGetErrorTextFn = CLINT32 (*)(CLINT32 errorCode, CLINT8* errorText, CLUINT32* errorTextSize);

}  // namespace vq::clser
