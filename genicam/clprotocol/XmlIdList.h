// XML IDs (SchemaVersion.<a>.<b>@<template>@XMLVersion.<a>.<b>.<c>): parsing, matching a
// device, and ordering best first.
#pragma once

#include <string>
#include <vector>

namespace CLProtocol {

struct XmlIdEntry {
  std::string id;
  std::string shortTemplate;
  unsigned schema[2] = {0, 0};
  unsigned version[3] = {0, 0, 0};
  std::string filePath;  // set for descriptions lying in a driver location
};

// Parses an XML ID; false when malformed.
bool ParseXmlId(const std::string& text, XmlIdEntry& entry);

// True when every token of the template equals the short device ID's token at its place.
bool TemplateMatches(const std::string& shortTemplate, const std::string& shortDeviceID);

// Higher schema first, then longer template, then higher version.
void SortBestFirst(std::vector<XmlIdEntry>& entries);

// "<XML ID>.xml" files of a location that fit the device.
std::vector<XmlIdEntry> DescriptionFilesFor(const std::string& location,
                                            const std::string& shortDeviceID);

}  // namespace CLProtocol
