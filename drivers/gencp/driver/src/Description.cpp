// Descriptions: the device's manifest entries, their download and inflation, and files lying
// in the driver's location.
#include <vq/gencp/Bootstrap.h>

#include <algorithm>

#include "DescriptionStore.h"
#include "DriverFailure.h"
#include "DriverLocation.h"
#include "Manifest.h"
#include "Operations.h"
#include "Templates.h"
#include "Zip.h"

namespace vq::gencpdrv {

namespace {

// Descriptions announced larger than this are not downloaded.
constexpr uint64_t kMaxDescriptionSize = 64ull * 1024 * 1024;

std::string download(Channel& channel, const ManifestEntry& entry, uint32_t timeoutMs) {
  if (entry.size > kMaxDescriptionSize) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "description too large");
  }
  const auto bytes = channel.readMem(entry.address, static_cast<std::size_t>(entry.size), timeoutMs);
  if (entry.format == vq::gencp::manifest::kFormatZip) return inflateSingleXml(bytes);
  if (entry.format != vq::gencp::manifest::kFormatUncompressed) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "unknown description file format");
  }
  std::string text(bytes.begin(), bytes.end());
  while (!text.empty() && text.back() == '\0') text.pop_back();
  return text;
}

}  // namespace

std::vector<std::string> listXmlIds(ISerial* serial, Connection& connection, uint32_t timeoutMs) {
  Channel channel = connection.channel(serial);
  std::vector<std::string> ids;
  for (const auto& entry : readManifest(channel, connection.bootstrap.manifestAddress,
                                        connection.identity.modelTemplate(), timeoutMs)) {
    const std::string id = entry.id.toString();
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
  return ids;
}

std::string fetchDescription(ISerial* serial, Connection& connection, const std::string& xmlId,
                             uint32_t timeoutMs) {
  const auto cached = connection.descriptions.find(xmlId);
  if (cached != connection.descriptions.end()) return cached->second;
  Channel channel = connection.channel(serial);
  const auto entries = readManifest(channel, connection.bootstrap.manifestAddress,
                                    connection.identity.modelTemplate(), timeoutMs);
  std::string text;
  bool found = false;
  for (const auto& entry : entries) {
    if (xmlId.empty() || entry.id.toString() == xmlId) {
      text = download(channel, entry, timeoutMs);
      found = true;
      break;
    }
  }
  if (!found && !xmlId.empty()) {
    for (const auto& file : descriptionFiles(driverLocation())) {
      if (file.id.toString() == xmlId && readTextFile(file.path, text)) {
        found = true;
        break;
      }
    }
  }
  if (!found) {
    throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND,
                        "no description " + (xmlId.empty() ? std::string("on the device") : xmlId));
  }
  connection.descriptions[xmlId] = text;
  rememberDescription(connection.shortDeviceId, text);
  return text;
}

}  // namespace vq::gencpdrv
