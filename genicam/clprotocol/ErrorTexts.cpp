#include "ErrorTexts.h"

namespace CLProtocol {

namespace {

struct CodeText {
  CLINT32 code;
  const char* text;
};

constexpr CodeText kTexts[] = {
    {CL_ERR_NO_ERR, "no error"},
    {CL_ERR_BUFFER_TOO_SMALL, "buffer too small"},
    {CL_ERR_MANU_DOES_NOT_EXIST, "manufacturer does not exist"},
    {CL_ERR_PORT_IN_USE, "port in use or unable to open port"},
    {CL_ERR_TIMEOUT, "time-out on serial link"},
    {CL_ERR_INVALID_INDEX, "invalid index"},
    {CL_ERR_INVALID_REFERENCE, "invalid reference"},
    {CL_ERR_ERROR_NOT_FOUND, "error not found"},
    {CL_ERR_BAUD_RATE_NOT_SUPPORTED, "baud rate not supported"},
    {CL_ERR_OUT_OF_MEMORY, "out of memory"},
    {CL_ERR_REGISTRY_KEY_NOT_FOUND, "registry key not found"},
    {CL_ERR_INVALID_PTR, "invalid pointer"},
    {CL_ERR_IN_USE, "in use"},
    {CL_ERR_UNABLE_TO_LOAD_DLL, "unable to load the driver library"},
    {CL_ERR_FUNCTION_NOT_FOUND, "function not found in the driver library"},
    {CL_ERR_PENDING_WRITE, "write still pending"},
    {CL_ERR_INVALID_DEVICEID, "invalid device ID"},
    {CL_ERR_NO_DEVICE_FOUND, "no device found"},
    {CL_ERR_NO_XMLDESCRIPTION_FOUND, "no XML description found"},
    {CL_ERR_INVALID_COOKIE, "invalid cookie"},
    {CL_ERR_GET_LAST_ERROR, "last error"},
    {CL_ERR_PARAM_NOT_SUPPORTED, "parameter not supported"},
    {CL_ERR_PARAM_READ_ONLY, "parameter is read-only"},
    {CL_ERR_PARAM_DATA_SIZE, "wrong parameter data size"},
    {CL_ERR_PARAM_DATA_VALUE, "invalid parameter value"},
};

}  // namespace

const char* StandardErrorText(CLINT32 code) {
  for (const auto& entry : kTexts) {
    if (entry.code == code) return entry.text;
  }
  return nullptr;
}

}  // namespace CLProtocol
