// Identifying a device from its bootstrap registers.
#pragma once

#include <cstdint>
#include <optional>

#include "Channel.h"
#include "PortMemory.h"

namespace vq::gencpdrv {

struct Identification {
  KnownDevice device;
  bool freshlyRead = false;  // false: taken over from the device last seen on the port
};

// Identifies the device at the channel's rate. The first read (request id 0) tells whether
// anything answers: the serial number when `known` holds the device last seen on this port (a
// match reuses its identity and bootstrap facts), else the GenCP version. Then the bootstrap
// block is read in one packet (one read per register when the device refuses the block).
// Throws DriverFailure: CL_ERR_TIMEOUT when nothing answered, kUnsupportedVersion for a GenCP
// major version other than 1.
Identification identify(Channel& channel, const std::optional<KnownDevice>& known,
                        uint32_t timeoutMs);

}  // namespace vq::gencpdrv
