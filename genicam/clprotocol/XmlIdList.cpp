#include "XmlIdList.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <tuple>

namespace CLProtocol {

namespace {

std::vector<std::string> splitOn(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (true) {
    const size_t at = text.find(separator, start);
    parts.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
    if (at == std::string::npos) return parts;
    start = at + 1;
  }
}

bool parseNumbers(const std::string& text, const std::string& prefix, unsigned* out, size_t count) {
  if (text.compare(0, prefix.size(), prefix) != 0) return false;
  const auto numbers = splitOn(text.substr(prefix.size()), '.');
  if (numbers.size() != count) return false;
  for (size_t i = 0; i < count; ++i) {
    if (numbers[i].empty() || numbers[i].size() > 9 ||
        numbers[i].find_first_not_of("0123456789") != std::string::npos) {
      return false;
    }
    out[i] = static_cast<unsigned>(std::stoul(numbers[i]));
  }
  return true;
}

}  // namespace

bool ParseXmlId(const std::string& text, XmlIdEntry& entry) {
  const auto parts = splitOn(text, '@');
  if (parts.size() != 3 || parts[1].empty()) return false;
  if (!parseNumbers(parts[0], "SchemaVersion.", entry.schema, 2)) return false;
  if (!parseNumbers(parts[2], "XMLVersion.", entry.version, 3)) return false;
  entry.id = text;
  entry.shortTemplate = parts[1];
  return true;
}

bool TemplateMatches(const std::string& shortTemplate, const std::string& shortDeviceID) {
  const auto wanted = splitOn(shortTemplate, '#');
  const auto actual = splitOn(shortDeviceID, '#');
  if (shortTemplate.empty() || wanted.size() > actual.size()) return false;
  return std::equal(wanted.begin(), wanted.end(), actual.begin());
}

void SortBestFirst(std::vector<XmlIdEntry>& entries) {
  const auto key = [](const XmlIdEntry& e) {
    return std::make_tuple(e.schema[0], e.schema[1], splitOn(e.shortTemplate, '#').size(),
                           e.version[0], e.version[1], e.version[2]);
  };
  std::stable_sort(entries.begin(), entries.end(),
                   [&](const XmlIdEntry& a, const XmlIdEntry& b) { return key(a) > key(b); });
}

std::vector<XmlIdEntry> DescriptionFilesFor(const std::string& location,
                                            const std::string& shortDeviceID) {
  namespace fs = std::filesystem;
  std::vector<XmlIdEntry> entries;
  std::error_code error;
  fs::directory_iterator it(location, error);
  if (error) return entries;
  for (const auto& file : it) {
    const std::string name = file.path().filename().string();
    if (name.size() <= 4 || name.compare(name.size() - 4, 4, ".xml") != 0) continue;
    XmlIdEntry entry;
    if (ParseXmlId(name.substr(0, name.size() - 4), entry) &&
        TemplateMatches(entry.shortTemplate, shortDeviceID)) {
      entry.filePath = file.path().string();
      entries.push_back(entry);
    }
  }
  return entries;
}

}  // namespace CLProtocol
