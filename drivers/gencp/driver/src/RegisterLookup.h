// Finds the register address behind a feature name in a GenICam description, without GenApi:
// register nodes give their address, value nodes are followed through pValue.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vq::gencpdrv {

// Address of the register that holds `name`'s value; nullopt when the text does not parse, the
// name is unknown, or the address is not a constant (or not a constant-valued pointer).
std::optional<uint64_t> findRegisterAddress(const std::string& xml, const std::string& name);

}  // namespace vq::gencpdrv
