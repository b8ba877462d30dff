// The largest real camera descriptions in VQ_GENICAM_XML_DIR, for the benchmarks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vq_bench {

// Paths of the count largest descriptions, largest first.
inline std::vector<std::string> LargestDescriptionPaths(std::size_t count) {
  std::vector<std::pair<std::uintmax_t, std::string>> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(VQ_GENICAM_XML_DIR, error)) {
    if (entry.path().extension() != ".xml") continue;
    const auto size = entry.file_size(error);
    if (!error) files.emplace_back(size, entry.path().string());
  }
  std::sort(files.rbegin(), files.rend());
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < files.size() && i < count; ++i) paths.push_back(files[i].second);
  return paths;
}

// Path of the largest description, empty when the folder holds none.
inline std::string LargestDescriptionPath() {
  const std::vector<std::string> paths = LargestDescriptionPaths(1);
  return paths.empty() ? std::string() : paths.front();
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
