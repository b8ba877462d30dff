// Small text helpers shared by the profile, values and description readers.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vq::sim {

std::string trim(const std::string& text);
// Removes a '#' comment (to the end of the line).
std::string stripComment(const std::string& line);
// Decimal (optionally negative) or 0x-prefixed hexadecimal; nullopt when malformed.
std::optional<int64_t> parseInteger(const std::string& text);
// Calls visit(line, lineNumber) for every line of text that is not blank once trimmed and
// stripped of its comment; line numbers count from 1 over all lines.
void forEachContentLine(const std::string& text,
                        const std::function<void(const std::string&, int)>& visit);

}  // namespace vq::sim
