// Inflating a ZIP archive that holds one XML description.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vq::gencpdrv {

// Content of the archive's first .xml entry (or its only entry). Throws DriverFailure with
// CL_ERR_NO_XMLDESCRIPTION_FOUND when the archive is damaged or empty.
std::string inflateSingleXml(const std::vector<uint8_t>& archive);

}  // namespace vq::gencpdrv
