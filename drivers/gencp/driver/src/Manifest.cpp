#include "Manifest.h"

#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>

#include <algorithm>

namespace vq::gencpdrv {

ManifestEntry decodeManifestEntry(const uint8_t* entry, const std::string& deviceTemplate) {
  namespace mf = vq::gencp::manifest;
  ManifestEntry result;
  const uint32_t fileVersion = vq::gencp::readU32(entry + mf::kFileVersion);
  const uint32_t schemaAndFormat = vq::gencp::readU32(entry + mf::kSchemaAndFormat);
  result.id.schemaMajor = mf::schemaMajor(schemaAndFormat);
  result.id.schemaMinor = mf::schemaMinor(schemaAndFormat);
  result.id.deviceTemplate = deviceTemplate;
  result.id.fileMajor = fileVersion >> 24;
  result.id.fileMinor = (fileVersion >> 16) & 0xFF;
  result.id.fileSubminor = fileVersion & 0xFFFF;
  result.format = mf::fileFormat(schemaAndFormat);
  result.fileType = schemaAndFormat & 0x7;
  result.address = vq::gencp::readU64(entry + mf::kFileAddress);
  result.size = vq::gencp::readU64(entry + mf::kFileSize);
  return result;
}

std::vector<ManifestEntry> readManifest(Channel& channel, uint64_t tableAddress,
                                        const std::string& deviceTemplate, uint32_t timeoutMs) {
  namespace mf = vq::gencp::manifest;
  const auto countBytes = channel.readMem(tableAddress, mf::kHeaderSize, timeoutMs);
  const uint64_t count = std::min(vq::gencp::readU64(countBytes.data()), kMaxManifestEntries);
  std::vector<ManifestEntry> entries;
  if (count == 0) return entries;
  const auto table =
      channel.readMem(tableAddress + mf::kHeaderSize, count * mf::kEntrySize, timeoutMs);
  for (uint64_t i = 0; i < count; ++i) {
    ManifestEntry entry = decodeManifestEntry(table.data() + i * mf::kEntrySize, deviceTemplate);
    if (entry.fileType == 0 && entry.size != 0) entries.push_back(entry);
  }
  std::stable_sort(entries.begin(), entries.end(), [](const ManifestEntry& a, const ManifestEntry& b) {
    return preferredOver(a.id, b.id);
  });
  return entries;
}

}  // namespace vq::gencpdrv
