#include "ErrorCodes.h"

#include <vq/gencp/Constants.h>

namespace vq::gencpdrv {

namespace {

struct StatusText {
  uint16_t code;  // the low 12 bits of a GenCP status
  const char* text;
};

constexpr StatusText kStatusTexts[] = {
    {0x001, "device error: command not implemented"},
    {0x002, "device error: invalid parameter"},
    {0x003, "device error: invalid address"},
    {0x004, "device error: register is write protected"},
    {0x005, "device error: bad alignment"},
    {0x006, "device error: access denied"},
    {0x007, "device error: device busy"},
    {0x00B, "device error: message time-out"},
    {0x00E, "device error: invalid header"},
    {0x00F, "device error: wrong configuration"},
    {0xFFF, "device error: generic error"},
};

}  // namespace

CLINT32 codeForDeviceStatus(uint16_t status) {
  return kDeviceStatusBase - static_cast<CLINT32>(status & 0x0FFF);
}

std::string errorText(CLINT32 code) {
  if (code == kWriteWarning) return "write done, the device answered with a warning status";
  if (code <= kDeviceStatusBase && code > kDeviceStatusBase - 0x1000) {
    const auto status = static_cast<uint16_t>(kDeviceStatusBase - code);
    for (const auto& entry : kStatusTexts) {
      if (entry.code == status) return entry.text;
    }
    return "device error: status code " + std::to_string(status);
  }
  switch (code) {
    case CL_ERR_TIMEOUT: return "time-out on serial link";
    case CL_ERR_NO_DEVICE_FOUND: return "no matching GenCP device found";
    case CL_ERR_INVALID_DEVICEID: return "invalid device ID or template";
    case CL_ERR_NO_XMLDESCRIPTION_FOUND: return "no XML description found";
    case CL_ERR_INVALID_COOKIE: return "invalid connection cookie";
    case CL_ERR_PARAM_NOT_SUPPORTED: return "parameter not supported";
    case CL_ERR_PARAM_READ_ONLY: return "parameter is read-only";
    case CL_ERR_PARAM_DATA_SIZE: return "wrong parameter data size";
    case CL_ERR_PARAM_DATA_VALUE: return "invalid parameter value";
    case CL_ERR_BAUD_RATE_NOT_SUPPORTED: return "baud rate not supported";
    case CL_ERR_BUFFER_TOO_SMALL: return "buffer too small";
    case CL_ERR_INVALID_PTR: return "invalid pointer";
    default: return std::string();
  }
}

}  // namespace vq::gencpdrv
