#include "ComPort.h"

#include <cstring>
#include <new>

#include "DescriptionStore.h"
#include "DriverLocation.h"
#include "RegisterLookup.h"

namespace {
// Names longer than this are refused.
constexpr CLINT64 kMaxNameLength = 4096;
}  // namespace

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxComPort(CLINT32 function, const CLINT8* parameterName,
                                              CLINT64 nameLength, void* result,
                                              CLINT32 resultSize, const CLINT8* shortDeviceId) {
  using namespace vq::gencpdrv;
  if (function != VX_COMPORT_TRANSLATE_PARAMETER_NAME) return CL_ERR_PARAM_NOT_SUPPORTED;
  if (parameterName == nullptr || result == nullptr || shortDeviceId == nullptr) {
    return CL_ERR_INVALID_PTR;
  }
  if (resultSize < 4) return CL_ERR_BUFFER_TOO_SMALL;
  if (nameLength <= 0 || nameLength > kMaxNameLength) return CL_ERR_PARAM_DATA_SIZE;
  try {
    const std::string name(parameterName, strnlen(parameterName, static_cast<std::size_t>(nameLength)));
    std::string xml;
    if (!findDescription(shortDeviceId, driverLocation(), xml)) return CL_ERR_NO_XMLDESCRIPTION_FOUND;
    const auto address = findRegisterAddress(xml, name);
    if (!address || *address > 0xFFFFFFFFull) return CL_ERR_PARAM_DATA_VALUE;
    const auto value = static_cast<uint32_t>(*address);
    std::memcpy(result, &value, 4);
    return CL_ERR_NO_ERR;
  } catch (const std::bad_alloc&) {
    return CL_ERR_OUT_OF_MEMORY;
  } catch (...) {
    return CL_ERR_INVALID_REFERENCE;
  }
}
