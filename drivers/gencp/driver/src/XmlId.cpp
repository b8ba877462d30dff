#include "XmlId.h"

#include <cstdio>
#include <tuple>

#include "Identity.h"

namespace vq::gencpdrv {

namespace {

// Parses "<prefix><n>.<n>[.<n>]" with exactly `count` numbers.
bool parseVersion(const std::string& text, const std::string& prefix, int count, uint32_t* out) {
  if (text.compare(0, prefix.size(), prefix) != 0) return false;
  std::size_t pos = prefix.size();
  for (int i = 0; i < count; ++i) {
    if (pos >= text.size() || text[pos] < '0' || text[pos] > '9') return false;
    uint64_t value = 0;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
      value = value * 10 + static_cast<uint64_t>(text[pos] - '0');
      if (value > 0xFFFFFFFFu) return false;
      ++pos;
    }
    out[i] = static_cast<uint32_t>(value);
    if (i + 1 < count) {
      if (pos >= text.size() || text[pos] != '.') return false;
      ++pos;
    }
  }
  return pos == text.size();
}

}  // namespace

std::string XmlId::toString() const {
  char schema[48];
  char file[64];
  std::snprintf(schema, sizeof schema, "SchemaVersion.%u.%u", schemaMajor, schemaMinor);
  std::snprintf(file, sizeof file, "XMLVersion.%u.%u.%u", fileMajor, fileMinor, fileSubminor);
  return std::string(schema) + "@" + deviceTemplate + "@" + file;
}

std::optional<XmlId> XmlId::parse(const std::string& text) {
  const std::size_t first = text.find('@');
  if (first == std::string::npos) return std::nullopt;
  const std::size_t second = text.find('@', first + 1);
  if (second == std::string::npos || text.find('@', second + 1) != std::string::npos) {
    return std::nullopt;
  }
  XmlId id;
  uint32_t schema[2] = {};
  uint32_t file[3] = {};
  if (!parseVersion(text.substr(0, first), "SchemaVersion.", 2, schema)) return std::nullopt;
  if (!parseVersion(text.substr(second + 1), "XMLVersion.", 3, file)) return std::nullopt;
  id.deviceTemplate = text.substr(first + 1, second - first - 1);
  if (!isValidShortTemplate(id.deviceTemplate)) return std::nullopt;
  id.schemaMajor = schema[0];
  id.schemaMinor = schema[1];
  id.fileMajor = file[0];
  id.fileMinor = file[1];
  id.fileSubminor = file[2];
  return id;
}

bool isSupportedSchema(const XmlId& id) { return id.schemaMajor == 1 && id.schemaMinor <= 1; }

bool preferredOver(const XmlId& a, const XmlId& b) {
  const auto key = [](const XmlId& id) {
    return std::make_tuple(id.schemaMajor, id.schemaMinor, splitTokens(id.deviceTemplate).size(),
                           id.fileMajor, id.fileMinor, id.fileSubminor);
  };
  return key(a) > key(b);
}

}  // namespace vq::gencpdrv
