#include "Manifest.h"

#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>

#include <algorithm>

namespace vq::gencpdrv {

namespace {
namespace mf = vq::gencp::manifest;
// Bytes of an entry that carry information (its last 20 are reserved).
constexpr uint32_t kEntryUsed = mf::kSha1 + 20;
}  // namespace

ManifestEntry decodeManifestEntry(const uint8_t* entry, const std::string& deviceTemplate) {
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
  std::copy_n(entry + mf::kSha1, result.sha1.size(), result.sha1.begin());
  return result;
}

std::vector<ManifestEntry> readManifest(Channel& channel, uint64_t tableAddress,
                                        const std::string& deviceTemplate, uint32_t timeoutMs) {
  std::vector<uint8_t> table = channel.readMem(tableAddress, mf::kHeaderSize + kEntryUsed, timeoutMs);
  const uint64_t count = std::min(vq::gencp::readU64(table.data()), kMaxManifestEntries);
  if (count > 1) {
    const uint64_t used = mf::kHeaderSize + (count - 1) * mf::kEntrySize + kEntryUsed;
    const auto rest = channel.readMem(tableAddress + table.size(), used - table.size(), timeoutMs);
    table.insert(table.end(), rest.begin(), rest.end());
  }
  std::vector<ManifestEntry> entries;
  for (uint64_t i = 0; i < count; ++i) {
    ManifestEntry entry =
        decodeManifestEntry(table.data() + mf::kHeaderSize + i * mf::kEntrySize, deviceTemplate);
    if (entry.fileType == 0 && entry.size != 0) entries.push_back(entry);
  }
  std::stable_sort(entries.begin(), entries.end(), [](const ManifestEntry& a, const ManifestEntry& b) {
    return preferredOver(a.id, b.id);
  });
  return entries;
}

}  // namespace vq::gencpdrv
