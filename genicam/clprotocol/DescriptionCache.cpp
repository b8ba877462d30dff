#include "DescriptionCache.h"

#include <vq/platform/cache_file.h>

#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>

namespace CLProtocol {

namespace {

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

std::string header(const DescriptionKey& key, const std::string& text) {
  return std::string(kMagic) + "\nxml-id: " + key.xmlId + "\nsha1: " + key.sha1 +
         "\nlength: " + std::to_string(text.size()) +
         "\ncheck: " + vq::platform::CacheChecksum(text) + "\n\n";
}

std::string EntryPath(const std::string& modelTemplate) {
  if (modelTemplate.empty()) return std::string();
  std::string name;
  for (char c : modelTemplate) name.push_back(c == '/' || c == '\\' ? '_' : c);
  return vq::platform::CacheFilePath(name + ".xmlcache");
}

std::optional<std::string> ReadEntry(const DescriptionKey& key) {
  const auto read = vq::platform::ReadCacheFile(EntryPath(key.modelTemplate), kMaxEntryBytes);
  if (!read) return std::nullopt;
  const std::string& bytes = *read;
  const std::size_t end = bytes.find("\n\n");
  if (end == std::string::npos) return std::nullopt;
  std::string text = bytes.substr(end + 2);
  if (bytes.substr(0, end + 2) != header(key, text)) return std::nullopt;  // other key, damage
  return text;
}

void WriteEntry(const DescriptionKey& key, const std::string& text) {
  vq::platform::WriteCacheFile(EntryPath(key.modelTemplate), header(key, text) + text);
}

bool SameKey(const DescriptionKey& a, const DescriptionKey& b) {
  return a.xmlId == b.xmlId && a.sha1 == b.sha1 && a.modelTemplate == b.modelTemplate;
}

}  // namespace

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
  const std::string path = EntryPath(modelTemplate);
  std::error_code error;
  return !path.empty() && std::filesystem::is_regular_file(path, error);
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
