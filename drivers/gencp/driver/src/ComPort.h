// vxComPort: the driver's extra entry for clients that need more than the CLProtocol functions.
// Function 1 translates a feature name into the 32-bit address of its register, using the
// description of the device named by a short device ID.
#pragma once

#include <CLProtocol/CLProtocol.h>
#include <CLProtocol/ISerial.h>

// Function numbers of vxComPort.
#define VX_COMPORT_TRANSLATE_PARAMETER_NAME 1

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxComPort(CLINT32 function, const CLINT8* parameterName,
                                              CLINT64 nameLength, void* result,
                                              CLINT32 resultSize, const CLINT8* shortDeviceId);

// SHA-1 of the description file behind an XML ID, as the device's manifest gives it: 40
// hexadecimal digits (buffer-size protocol of the clp* text functions). A client caching
// descriptions keys them by this. CL_ERR_NO_XMLDESCRIPTION_FOUND when the device holds no such
// file or gives no SHA-1 for it.
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxGetXMLSha1(ISerial* pSerial, const CLUINT32 Cookie,
                                                 const CLINT8* pXMLID, CLINT8* pSha1,
                                                 CLUINT32* pBufferSize, const CLUINT32 TimeOut);

// A description the client obtained without the driver (from its own cache) for the device of
// a connection: kept so that vxComPort can translate names for that device. Size without a
// terminator.
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxSetXMLDescription(const CLUINT32 Cookie, const CLINT8* pXML,
                                                        const CLUINT32 Size);
