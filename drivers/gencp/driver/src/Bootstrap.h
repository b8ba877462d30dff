// Identifying a device from its bootstrap registers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Channel.h"
#include "PortMemory.h"

namespace vq::gencpdrv {

struct Identification {
  KnownDevice device;
  bool freshlyRead = false;  // false: taken over from the port's memory or a device record
};

// Identifies the device at the channel's rate. The first read (request id 0) tells whether
// anything answers: the serial number when `known` holds the device last seen on this port or
// `recorded` (device records, oldest first) is not empty, else the GenCP version. A serial
// number equal to the known device's reuses its identity and bootstrap facts; one equal to a
// record's does so once the model name register holds the recorded name. Otherwise the GenCP
// version and the bootstrap block are read, the block in one packet (one read per register
// when the device refuses the block). Throws DriverFailure: CL_ERR_TIMEOUT when nothing
// answered, kUnsupportedVersion for a GenCP major version other than 1.
Identification identify(Channel& channel, const std::optional<KnownDevice>& known,
                        const std::vector<KnownDevice>& recorded, uint32_t timeoutMs);

}  // namespace vq::gencpdrv
