#include "vq/gencp/Constants.h"

namespace vq::gencp {

const char* statusName(uint16_t status) {
  switch (status) {
    case kStatusSuccess:
      return "GENCP_SUCCESS";
    case kStatusNotImplemented:
      return "GENCP_NOT_IMPLEMENTED";
    case kStatusInvalidParameter:
      return "GENCP_INVALID_PARAMETER";
    case kStatusInvalidAddress:
      return "GENCP_INVALID_ADDRESS";
    case kStatusWriteProtect:
      return "GENCP_WRITE_PROTECT";
    case kStatusBadAlignment:
      return "GENCP_BAD_ALIGNMENT";
    case kStatusAccessDenied:
      return "GENCP_ACCESS_DENIED";
    case kStatusBusy:
      return "GENCP_BUSY";
    case kStatusMsgTimeout:
      return "GENCP_MSG_TIMEOUT";
    case kStatusInvalidHeader:
      return "GENCP_INVALID_HEADER";
    case kStatusWrongConfig:
      return "GENCP_WRONG_CONFIG";
    case kStatusError:
      return "GENCP_ERROR";
    default:
      return nullptr;
  }
}

namespace {
constexpr uint32_t kRates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
}

uint32_t baudBitToRate(uint32_t bit) {
  for (unsigned i = 0; i < 8; ++i) {
    if (bit == (1u << i)) return kRates[i];
  }
  return 0;
}

uint32_t baudRateToBit(uint32_t bitsPerSecond) {
  for (unsigned i = 0; i < 8; ++i) {
    if (kRates[i] == bitsPerSecond) return 1u << i;
  }
  return 0;
}

}  // namespace vq::gencp
