// The largest real camera description in VQ_GENICAM_XML_DIR, for the benchmarks.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vq_bench {

// Path of the largest description, empty when the folder holds none.
inline std::string LargestDescriptionPath() {
  std::error_code error;
  std::filesystem::path best;
  std::uintmax_t bestSize = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VQ_GENICAM_XML_DIR, error)) {
    if (entry.path().extension() != ".xml") continue;
    const auto size = entry.file_size(error);
    if (!error && size > bestSize) {
      bestSize = size;
      best = entry.path();
    }
  }
  return best.string();
}

// Its text, read once.
inline const std::string& LargestDescription() {
  static const std::string text = [] {
    std::ifstream in(LargestDescriptionPath(), std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
  }();
  return text;
}

}  // namespace vq_bench
