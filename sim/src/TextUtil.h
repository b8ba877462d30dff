// Small text helpers shared by the profile, values and description readers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vq::sim {

std::string trim(const std::string& text);
// Removes a '#' comment (to the end of the line).
std::string stripComment(const std::string& line);
// Decimal (optionally negative) or 0x-prefixed hexadecimal; nullopt when malformed.
std::optional<int64_t> parseInteger(const std::string& text);

}  // namespace vq::sim
