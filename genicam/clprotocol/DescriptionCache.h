// Descriptions already downloaded, kept so that reopening a camera costs no download: in memory
// per port, and on disk under the user's cache directory ($XDG_CACHE_HOME/vqcam, else
// ~/.cache/vqcam), one file per camera model. An entry is keyed and verified by the XML ID (which
// carries the file version) and the SHA-1 the camera's manifest gives for the file; its text
// carries a checksum. A corrupt or mismatching entry is ignored and replaced by the next
// download. Besides the GenCP driver's device records (devices.rec, same folder), the cache files
// are the only files the stack writes; their vqcam folder is only made in a cache directory
// that exists.
#pragma once

#include <optional>
#include <string>

namespace CLProtocol {

struct DescriptionKey {
  std::string xmlId;
  std::string sha1;           // hexadecimal, as the driver reports it
  std::string modelTemplate;  // Manufacturer#Family#Model: names the file on disk
};

class DescriptionCache {
 public:
  // The cached text for the key, from the port's memory or the disk.
  static std::optional<std::string> Find(const std::string& portID, const DescriptionKey& key);
  // True when something is cached for this model, so a reopen will likely find it.
  static bool HasCandidate(const std::string& portID, const std::string& modelTemplate);
  // Keeps the text in the port's memory and writes it to disk (best effort).
  static void Store(const std::string& portID, const DescriptionKey& key, const std::string& text);
  // Forgets the port's memory (for instance when the port is unregistered).
  static void ForgetPort(const std::string& portID);
};

}  // namespace CLProtocol
