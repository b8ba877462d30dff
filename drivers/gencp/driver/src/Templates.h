// The short device-ID templates this driver offers, and the description files lying in its
// location (named <XML ID>.xml).
#pragma once

#include <string>
#include <vector>

#include "XmlId.h"

namespace vq::gencpdrv {

// Name of the list of supported devices, one short template per line.
constexpr const char* kDeviceListFile = "gencp-devices.txt";

// Templates from the device list and from description file names, without duplicates.
std::vector<std::string> collectTemplates(const std::string& location);

struct DescriptionFile {
  XmlId id;
  std::string path;
};

// Description files of the location, best first.
std::vector<DescriptionFile> descriptionFiles(const std::string& location);

// Parses the device list text: blank lines and lines starting with ';' are skipped, invalid
// templates dropped.
std::vector<std::string> parseDeviceList(const std::string& text);

}  // namespace vq::gencpdrv
