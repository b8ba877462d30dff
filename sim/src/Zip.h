// Packs one file into an in-memory ZIP archive (DEFLATE), as a manifest serves it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vq::sim {

// Throws ProfileError when the archive cannot be built.
std::vector<uint8_t> zipSingleFile(const std::string& fileName, const std::string& content);

}  // namespace vq::sim
