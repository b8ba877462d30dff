// Files of the stack's cache folder (vqcam under the user's cache directory): read within a
// size bound, written whole or not at all, and checked by a checksum. The folder is only made
// inside a cache directory that exists; without one nothing is written.
#ifndef VQ_PLATFORM_CACHE_FILE_H
#define VQ_PLATFORM_CACHE_FILE_H

#include <cstdint>
#include <optional>
#include <string>

namespace vq::platform {

// The path of `name` in the stack's cache folder; empty when the environment names no cache
// directory.
std::string CacheFilePath(const std::string& name);

// The whole file, or nothing when it is missing, unreadable or larger than maxBytes.
std::optional<std::string> ReadCacheFile(const std::string& path, std::uintmax_t maxBytes);

// Writes the file through a temporary file renamed into place, so that readers never see half
// of it. False when nothing was written.
bool WriteCacheFile(const std::string& path, const std::string& contents);

// 64-bit FNV-1a of the text as 16 hexadecimal digits: catches a damaged or cut file.
std::string CacheChecksum(const std::string& text);

}  // namespace vq::platform

#endif  // VQ_PLATFORM_CACHE_FILE_H
