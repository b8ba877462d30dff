// Extracts the description from a zipped description held in memory.
#pragma once

#include <cstddef>
#include <string>

namespace GenApi {
namespace impl {

// Returns the content of the archive's XML file (the first file when none
// ends in ".xml"); throws a GenICam exception for a damaged or empty archive.
std::string ExtractDescription(const void* data, size_t size);

}  // namespace impl
}  // namespace GenApi
