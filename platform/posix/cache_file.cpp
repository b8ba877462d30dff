#include "vq/platform/cache_file.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

#include "vq/platform/environment.h"

namespace vq::platform {

namespace fs = std::filesystem;

std::string CacheFilePath(const std::string& name) {
  const std::string base = UserCacheDirectory();
  return base.empty() ? std::string() : base + "/vqcam/" + name;
}

std::optional<std::string> ReadCacheFile(const std::string& path, std::uintmax_t maxBytes) {
  std::error_code error;
  if (path.empty() || fs::file_size(path, error) > maxBytes || error) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool WriteCacheFile(const std::string& path, const std::string& contents) {
  const fs::path file = path;
  if (file.empty()) return false;
  // Only the stack's own folder is made, inside a cache directory that exists.
  std::error_code error;
  if (!fs::is_directory(file.parent_path().parent_path(), error)) return false;
  fs::create_directory(file.parent_path(), error);
  if (error) return false;
  const fs::path temporary =
      file.string() + ".tmp" + std::to_string(std::random_device{}() & 0xFFFFFF);
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out << contents;
    if (!out.flush()) {
      out.close();
      fs::remove(temporary, error);
      return false;
    }
  }
  fs::rename(temporary, file, error);
  if (!error) return true;
  fs::remove(temporary, error);
  return false;
}

std::string CacheChecksum(const std::string& text) {
  uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : text) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
  return hex;
}

}  // namespace vq::platform
