// XML IDs: SchemaVersion.<major>.<minor>@<template>@XMLVersion.<major>.<minor>.<subminor>.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vq::gencpdrv {

struct XmlId {
  uint32_t schemaMajor = 0;
  uint32_t schemaMinor = 0;
  std::string deviceTemplate;
  uint32_t fileMajor = 0;
  uint32_t fileMinor = 0;
  uint32_t fileSubminor = 0;

  std::string toString() const;
  static std::optional<XmlId> parse(const std::string& text);
};

// True for the description schemas a GenApi of this project reads: 1.0 and 1.1.
bool isSupportedSchema(const XmlId& id);

// True when `a` is preferred to `b`: higher schema, then longer template, then higher version.
bool preferredOver(const XmlId& a, const XmlId& b);

}  // namespace vq::gencpdrv
