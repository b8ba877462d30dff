#include "DriverLocation.h"

#include <vq/platform/shared_library.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace vq::gencpdrv {

namespace {
// Any function of this library: its address tells the loader which file we are.
void anchor() {}
}  // namespace

std::string driverLocation() {
  const std::string self = vq::platform::GetModulePath(reinterpret_cast<const void*>(&anchor));
  if (self.empty()) return std::string();
  const std::filesystem::path folder = std::filesystem::path(self).parent_path();
  if (folder.filename() == "Linux64_x64" || folder.filename() == "Win64_x64") {
    return folder.parent_path().string();
  }
  return folder.string();
}

bool readTextFile(const std::string& path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream content;
  content << in.rdbuf();
  if (in.bad()) return false;
  text = content.str();
  return true;
}

std::vector<std::string> listFiles(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator it(directory, error);
  if (error) return names;
  for (const auto& entry : it) {
    std::error_code entryError;
    if (entry.is_regular_file(entryError)) names.push_back(entry.path().filename().string());
  }
  return names;
}

}  // namespace vq::gencpdrv
