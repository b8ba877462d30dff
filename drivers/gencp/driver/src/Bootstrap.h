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

// Identifies the device at the channel's rate. `candidates` are devices identified before,
// newest last: the one last seen on this port, or the device records. The first read (request
// id 0) tells whether anything answers: the serial number when there are candidates, else the
// GenCP version. The newest candidate with that serial number is taken, identity and bootstrap
// facts included, once the model name register holds its model name. Otherwise the GenCP
// version and the bootstrap block are read, the block in one packet (one read per register
// when the device refuses the block). Throws DriverFailure: CL_ERR_TIMEOUT when nothing
// answered, kUnsupportedVersion for a GenCP major version other than 1.
Identification identify(Channel& channel, const std::vector<KnownDevice>& candidates,
                        uint32_t timeoutMs);

}  // namespace vq::gencpdrv
