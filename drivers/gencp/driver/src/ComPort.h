// vxComPort: the driver's extra entry for clients that need more than the CLProtocol functions.
// Function 1 translates a feature name into the 32-bit address of its register, using the
// description of the device named by a short device ID.
#pragma once

#include <CLProtocol/CLProtocol.h>

// Function numbers of vxComPort.
#define VX_COMPORT_TRANSLATE_PARAMETER_NAME 1

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxComPort(CLINT32 function, const CLINT8* parameterName,
                                              CLINT64 nameLength, void* result,
                                              CLINT32 resultSize, const CLINT8* shortDeviceId);
