#include "ErrorCodes.h"

#include <vq/gencp/Constants.h>

namespace vq::gencpdrv {

namespace {

struct CodeText {
  CLINT32 code;
  const char* text;
};

constexpr CodeText kTexts[] = {
    {-30001, "device error: command not implemented"},
    {-30002, "device error: invalid parameter"},
    {-30003, "device error: invalid address"},
    {-30004, "device error: register is write protected"},
    {-30005, "device error: bad alignment"},
    {-30006, "device error: access denied"},
    {-30007, "device error: device busy"},
    {-30008, "device error: status 0x8008"},
    {-30009, "device error: status 0x8009"},
    {-30010, "device error: status 0x800A"},
    {-30011, "device error: message time-out"},
    {-30012, "device error: status 0x800C"},
    {-30013, "device error: status 0x800D"},
    {-30014, "device error: invalid header"},
    {-30015, "device error: wrong configuration"},
    {kGenericDeviceError, "device error: generic error"},
    {kUnknownGenCPError, "device error: a GenCP status this driver does not know"},
    {kTechnologyError, "device error: a technology-specific status"},
    {kDeviceSpecificError, "device error: a device-specific status"},
    {kWriteWarning, "write done, the device answered with a warning status"},
    {kBadAnswer, "the device's answer does not fit the command"},
    {kUnsupportedVersion, "the device speaks a GenCP version this driver does not support"},
    {kDescriptionDigestMismatch, "the downloaded description does not match its SHA-1"},
    {CL_ERR_TIMEOUT, "time-out on serial link"},
    {CL_ERR_NO_DEVICE_FOUND, "no matching GenCP device found"},
    {CL_ERR_INVALID_DEVICEID, "invalid device ID or template"},
    {CL_ERR_NO_XMLDESCRIPTION_FOUND, "no XML description found"},
    {CL_ERR_INVALID_COOKIE, "invalid connection cookie"},
    {CL_ERR_PARAM_NOT_SUPPORTED, "parameter not supported"},
    {CL_ERR_PARAM_READ_ONLY, "parameter is read-only"},
    {CL_ERR_PARAM_DATA_SIZE, "wrong parameter data size"},
    {CL_ERR_PARAM_DATA_VALUE, "invalid parameter value"},
    {CL_ERR_BAUD_RATE_NOT_SUPPORTED, "baud rate not supported"},
    {CL_ERR_BUFFER_TOO_SMALL, "buffer too small"},
    {CL_ERR_INVALID_PTR, "invalid pointer"},
};

// Status namespaces (bits 13-14).
constexpr uint16_t kNamespaceMask = 0x6000;
constexpr uint16_t kTechnologyNamespace = 0x2000;

}  // namespace

CLINT32 codeForDeviceStatus(uint16_t status) {
  const uint16_t space = status & kNamespaceMask;
  if (space == kTechnologyNamespace) return kTechnologyError;
  if (space != 0) return kDeviceSpecificError;
  const uint16_t code = status & 0x0FFF;
  if (code >= 0x001 && code <= 0x00F) return kDeviceStatusBase - code;
  return code == 0xFFF ? kGenericDeviceError : kUnknownGenCPError;
}

std::string errorText(CLINT32 code) {
  for (const auto& entry : kTexts) {
    if (entry.code == code) return entry.text;
  }
  return std::string();
}

}  // namespace vq::gencpdrv
