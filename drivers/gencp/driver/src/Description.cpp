// Descriptions: the device's manifest (read once per connection), the download and inflation of
// a file verified by its SHA-1, and files lying in the driver's location.
#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Sha1.h>

#include <algorithm>

#include "DescriptionStore.h"
#include "DriverFailure.h"
#include "DriverLocation.h"
#include "ErrorCodes.h"
#include "Operations.h"
#include "Templates.h"
#include "Zip.h"

namespace vq::gencpdrv {

namespace {

// Descriptions announced larger than this are not downloaded.
constexpr uint64_t kMaxDescriptionSize = 64ull * 1024 * 1024;
// Downloads of a file whose bytes do not match the manifest's SHA-1.
constexpr int kDownloadTries = 2;

const std::vector<ManifestEntry>& manifestOf(ISerial* serial, Connection& connection,
                                             uint32_t timeoutMs) {
  if (!connection.manifest) {
    Channel channel = connection.channel(serial);
    connection.manifest = readManifest(channel, connection.bootstrap.manifestAddress,
                                       connection.identity.modelTemplate(), timeoutMs);
  }
  return *connection.manifest;
}

std::vector<uint8_t> downloadVerified(Channel& channel, const ManifestEntry& entry,
                                      uint32_t timeoutMs) {
  for (int attempt = 1;; ++attempt) {
    auto bytes = channel.readMem(entry.address, static_cast<std::size_t>(entry.size), timeoutMs);
    if (vq::gencp::isZero(entry.sha1) || vq::gencp::sha1(bytes.data(), bytes.size()) == entry.sha1) {
      return bytes;
    }
    if (attempt == kDownloadTries) {
      throw DriverFailure(kDescriptionDigestMismatch,
                          "the description read from the device does not match its SHA-1");
    }
  }
}

std::string download(Channel& channel, const ManifestEntry& entry, uint32_t timeoutMs) {
  if (entry.size > kMaxDescriptionSize) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "description too large");
  }
  if (entry.format != vq::gencp::manifest::kFormatZip &&
      entry.format != vq::gencp::manifest::kFormatUncompressed) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "unknown description file format");
  }
  const auto bytes = downloadVerified(channel, entry, timeoutMs);
  if (entry.format == vq::gencp::manifest::kFormatZip) return inflateSingleXml(bytes);
  std::string text(bytes.begin(), bytes.end());
  while (!text.empty() && text.back() == '\0') text.pop_back();
  return text;
}

const ManifestEntry* findEntry(const std::vector<ManifestEntry>& entries, const std::string& xmlId) {
  for (const auto& entry : entries) {
    if (xmlId.empty() ? isSupportedSchema(entry.id) : entry.id.toString() == xmlId) return &entry;
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> listXmlIds(ISerial* serial, Connection& connection, uint32_t timeoutMs) {
  std::vector<std::string> ids;
  for (const auto& entry : manifestOf(serial, connection, timeoutMs)) {
    const std::string id = entry.id.toString();
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
  return ids;
}

std::string descriptionSha1(ISerial* serial, Connection& connection, const std::string& xmlId,
                            uint32_t timeoutMs) {
  const ManifestEntry* entry = findEntry(manifestOf(serial, connection, timeoutMs), xmlId);
  if (entry == nullptr) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "the device holds no description " + xmlId);
  }
  return vq::gencp::isZero(entry->sha1) ? std::string() : vq::gencp::toHex(entry->sha1);
}

std::string fetchDescription(ISerial* serial, Connection& connection, const std::string& xmlId,
                             uint32_t timeoutMs) {
  const auto cached = connection.descriptions.find(xmlId);
  if (cached != connection.descriptions.end()) return cached->second;
  std::string text;
  if (const ManifestEntry* entry = findEntry(manifestOf(serial, connection, timeoutMs), xmlId)) {
    Channel channel = connection.channel(serial);
    text = download(channel, *entry, timeoutMs);
  } else {
    bool found = false;
    for (const auto& file : descriptionFiles(driverLocation())) {
      if (!xmlId.empty() && file.id.toString() == xmlId && readTextFile(file.path, text)) {
        found = true;
        break;
      }
    }
    if (!found) {
      throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND,
                          "no description " + (xmlId.empty() ? std::string("on the device") : xmlId));
    }
  }
  connection.descriptions[xmlId] = text;
  rememberDescription(connection.shortDeviceId, text);
  return text;
}

}  // namespace vq::gencpdrv
