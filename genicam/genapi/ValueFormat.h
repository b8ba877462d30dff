// Text forms of integer and float values, by representation and notation.
#pragma once

#include <cstdint>
#include <string>

#include <GenApi/Types.h>

namespace GenApi {
namespace impl {

std::string FormatInteger(int64_t value, ERepresentation representation);
// Parses decimal, 0x-hex, and the IPV4/MAC/boolean forms; false on bad text.
bool ParseIntegerText(const std::string& text, int64_t& value);
std::string FormatFloat(double value, EDisplayNotation notation, int64_t precision);

}  // namespace impl
}  // namespace GenApi
