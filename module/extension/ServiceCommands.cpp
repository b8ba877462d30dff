#include "extension/ServiceCommands.h"

#include "camera/GenericCamera.h"

namespace vq {

// The service rows arrive with the camera services; until then the identifiers
// are recognised and answered with 0.

bool IsQueryServiceCommand(std::uint32_t id) {
  switch (id) {
    case 31: case 32: case 48: case 49: case 50: case 51: case 53: case 54:
      return true;
    default:
      return false;
  }
}

bool IsExecuteServiceCommand(std::uint32_t id) {
  return id == 26 || id == 33 || id == 48 || id == 52;
}

std::int32_t QueryServiceCommand(GenericCamera*, std::uint32_t, void*, std::uint32_t) { return 0; }

std::int32_t ExecuteServiceCommand(GenericCamera*, std::uint32_t, void*, std::uint32_t) {
  return 0;
}

}  // namespace vq
