// The device's manifest: which descriptions it holds, where, in which format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Channel.h"
#include "XmlId.h"

namespace vq::gencpdrv {

struct ManifestEntry {
  XmlId id;
  uint64_t address = 0;
  uint64_t size = 0;
  uint32_t format = 0;  // 0 XML text, 1 ZIP holding one XML file
  uint32_t fileType = 0;
};

// Entries the manifest holds beyond this are ignored.
constexpr uint64_t kMaxManifestEntries = 64;

// Decodes one 64-byte entry; the XML ID takes `deviceTemplate` as its template part.
ManifestEntry decodeManifestEntry(const uint8_t* entry, const std::string& deviceTemplate);

// Device-description entries (file type 0) of the manifest at `tableAddress`, best first.
std::vector<ManifestEntry> readManifest(Channel& channel, uint64_t tableAddress,
                                        const std::string& deviceTemplate, uint32_t timeoutMs);

}  // namespace vq::gencpdrv
