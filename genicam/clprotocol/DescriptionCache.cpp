#include "DescriptionCache.h"

#include <vq/platform/environment.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <sstream>
#include <system_error>

namespace CLProtocol {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMagic = "vqcam description cache 1";
// Entries larger than this are not read back (a damaged length would ask for anything).
constexpr std::uintmax_t kMaxEntryBytes = 256ull * 1024 * 1024;

struct MemoryEntry {
  DescriptionKey key;
  std::string text;
};

struct Memory {
  std::mutex mutex;
  std::map<std::string, MemoryEntry> byPort;
};

Memory& memory() {
  static Memory instance;
  return instance;
}

// 64-bit FNV-1a: catches a damaged or cut entry.
std::string checksum(const std::string& text) {
  uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : text) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  char hex[17];
  std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
  return hex;
}

std::string header(const DescriptionKey& key, const std::string& text) {
  return std::string(kMagic) + "\nxml-id: " + key.xmlId + "\nsha1: " + key.sha1 +
         "\nlength: " + std::to_string(text.size()) + "\ncheck: " + checksum(text) + "\n\n";
}

fs::path EntryPath(const std::string& modelTemplate) {
  const std::string directory = DescriptionCache::Directory();
  if (directory.empty() || modelTemplate.empty()) return fs::path();
  std::string name;
  for (char c : modelTemplate) name.push_back(c == '/' || c == '\\' ? '_' : c);
  return fs::path(directory) / (name + ".xmlcache");
}

std::optional<std::string> ReadEntry(const DescriptionKey& key) {
  const fs::path path = EntryPath(key.modelTemplate);
  std::error_code error;
  if (path.empty() || fs::file_size(path, error) > kMaxEntryBytes || error) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  const std::string bytes = content.str();
  const std::size_t end = bytes.find("\n\n");
  if (end == std::string::npos) return std::nullopt;
  std::string text = bytes.substr(end + 2);
  if (bytes.substr(0, end + 2) != header(key, text)) return std::nullopt;  // other key, damage
  return text;
}

void WriteEntry(const DescriptionKey& key, const std::string& text) {
  const fs::path path = EntryPath(key.modelTemplate);
  if (path.empty()) return;
  // Only the stack's own folder is made, inside a cache directory that exists.
  std::error_code error;
  if (!fs::is_directory(path.parent_path().parent_path(), error)) return;
  fs::create_directory(path.parent_path(), error);
  if (error) return;
  // A unique temporary file renamed into place: readers never see half an entry.
  const fs::path temporary =
      path.string() + ".tmp" + std::to_string(std::random_device{}() & 0xFFFFFF);
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out << header(key, text) << text;
    if (!out.flush()) {
      fs::remove(temporary, error);
      return;
    }
  }
  fs::rename(temporary, path, error);
  if (error) fs::remove(temporary, error);
}

bool SameKey(const DescriptionKey& a, const DescriptionKey& b) {
  return a.xmlId == b.xmlId && a.sha1 == b.sha1 && a.modelTemplate == b.modelTemplate;
}

}  // namespace

std::string DescriptionCache::Directory() {
  const std::string base = vq::platform::UserCacheDirectory();
  return base.empty() ? std::string() : base + "/vqcam";
}

std::optional<std::string> DescriptionCache::Find(const std::string& portID,
                                                  const DescriptionKey& key) {
  if (key.sha1.empty()) return std::nullopt;
  {
    Memory& m = memory();
    std::lock_guard<std::mutex> lock(m.mutex);
    const auto it = m.byPort.find(portID);
    if (it != m.byPort.end() && SameKey(it->second.key, key)) return it->second.text;
  }
  auto text = ReadEntry(key);
  if (text) {
    Memory& m = memory();
    std::lock_guard<std::mutex> lock(m.mutex);
    m.byPort[portID] = MemoryEntry{key, *text};
  }
  return text;
}

bool DescriptionCache::HasCandidate(const std::string& portID, const std::string& modelTemplate) {
  {
    Memory& m = memory();
    std::lock_guard<std::mutex> lock(m.mutex);
    const auto it = m.byPort.find(portID);
    if (it != m.byPort.end() && it->second.key.modelTemplate == modelTemplate) return true;
  }
  const fs::path path = EntryPath(modelTemplate);
  std::error_code error;
  return !path.empty() && fs::is_regular_file(path, error);
}

void DescriptionCache::Store(const std::string& portID, const DescriptionKey& key,
                             const std::string& text) {
  if (key.sha1.empty()) return;
  {
    Memory& m = memory();
    std::lock_guard<std::mutex> lock(m.mutex);
    m.byPort[portID] = MemoryEntry{key, text};
  }
  WriteEntry(key, text);
}

void DescriptionCache::ForgetPort(const std::string& portID) {
  Memory& m = memory();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.byPort.erase(portID);
}

}  // namespace CLProtocol
