// The device's manifest: which descriptions it holds, where, in which format, with which SHA-1.
#pragma once

#include <vq/gencp/Sha1.h>

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
  vq::gencp::Sha1Digest sha1{};  // all zero when the device gives none
};

// Entries the manifest holds beyond this are ignored.
constexpr uint64_t kMaxManifestEntries = 64;

// Decodes one entry (at least its first 44 bytes); the XML ID takes `deviceTemplate` as its
// template part.
ManifestEntry decodeManifestEntry(const uint8_t* entry, const std::string& deviceTemplate);

// Device-description entries (file type 0) of the manifest at `tableAddress`, best first. Only
// the meaningful bytes are read: the count and the first entry in one packet, the rest of the
// table only when there are more entries.
std::vector<ManifestEntry> readManifest(Channel& channel, uint64_t tableAddress,
                                        const std::string& deviceTemplate, uint32_t timeoutMs);

}  // namespace vq::gencpdrv
