// A CLProtocol driver that finds no device and offers malformed templates next to good ones,
// as a third-party driver might: the protocol layer must drop those and say which driver
// offered them.
#include <CLProtocol/CLProtocol.h>

#include <cstring>

namespace {
const char kTemplates[] = "ACME#Cam\t1BAD\tACME##X\tACME#Cam#M1#V1#S1\tACME#Cam#M1";
}  // namespace

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpInitLib(clp_logger_t, CLP_LOG_LEVEL_VALUE) { return 0; }
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpCloseLib(void) { return 0; }
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetShortDeviceIDTemplates(CLINT8* text, CLUINT32* size) {
  if (size == nullptr) return CL_ERR_INVALID_PTR;
  const CLUINT32 needed = sizeof kTemplates;
  const bool fits = text != nullptr && *size >= needed;
  if (fits) std::memcpy(text, kTemplates, needed);
  *size = needed;
  return fits ? CL_ERR_NO_ERR : CL_ERR_BUFFER_TOO_SMALL;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpProbeDevice(ISerial*, const CLINT8*, CLINT8*, CLUINT32*,
                                                   CLUINT32*, const CLUINT32) {
  return CL_ERR_NO_DEVICE_FOUND;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLIDs(ISerial*, const CLUINT32, CLINT8*, CLUINT32*,
                                                 const CLUINT32) {
  return CL_ERR_INVALID_COOKIE;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLDescription(ISerial*, const CLUINT32, const CLINT8*,
                                                         CLINT8*, CLUINT32*, const CLUINT32) {
  return CL_ERR_INVALID_COOKIE;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpReadRegister(ISerial*, const CLUINT32, const CLINT64,
                                                    CLINT8*, const CLINT64, const CLUINT32) {
  return CL_ERR_INVALID_COOKIE;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpWriteRegister(ISerial*, const CLUINT32, const CLINT64,
                                                     const CLINT8*, const CLINT64, const CLUINT32) {
  return CL_ERR_INVALID_COOKIE;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpContinueWriteRegister(ISerial*, const CLUINT32, const BOOL8,
                                                             const CLUINT32) {
  return CL_ERR_INVALID_COOKIE;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetErrorText(CLINT32, CLINT8*, CLUINT32*, const CLUINT32) {
  return CL_ERR_ERROR_NOT_FOUND;
}
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpDisconnect(const CLUINT32) { return CL_ERR_INVALID_COOKIE; }
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetCLProtocolVersion(CLUINT32* major, CLUINT32* minor) {
  *major = 1;
  *minor = 2;
  return 0;
}
