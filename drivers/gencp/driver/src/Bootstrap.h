// Reading a device's identity and bootstrap facts from its bootstrap registers.
#pragma once

#include <cstdint>

#include "Channel.h"
#include "Connection.h"
#include "Identity.h"

namespace vq::gencpdrv {

// Reads the version first (the device's liveness check), then capabilities, identity strings,
// response time, manifest and serial bootstrap addresses. Throws DriverFailure.
void readBootstrap(Channel& channel, uint32_t timeoutMs, BootstrapInfo& info,
                   DeviceIdentity& identity);

}  // namespace vq::gencpdrv
