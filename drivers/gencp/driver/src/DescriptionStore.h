// Descriptions this process has obtained, by short device ID, so that vxComPort can answer
// without a serial link; falls back to description files in the driver's location.
#pragma once

#include <string>

namespace vq::gencpdrv {

void rememberDescription(const std::string& shortDeviceId, const std::string& xml);

// The description for a device: a remembered one, else the best file of `location` whose
// template is a token-wise prefix of the ID. False when there is none.
bool findDescription(const std::string& shortDeviceId, const std::string& location,
                     std::string& xml);

}  // namespace vq::gencpdrv
