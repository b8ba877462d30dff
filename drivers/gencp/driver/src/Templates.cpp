#include "Templates.h"

#include <algorithm>

#include "DriverLocation.h"
#include "Identity.h"

namespace vq::gencpdrv {

namespace {

std::string trim(const std::string& text) {
  const char* blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void addUnique(std::vector<std::string>& list, const std::string& item) {
  if (std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
}

}  // namespace

std::vector<std::string> parseDeviceList(const std::string& text) {
  std::vector<std::string> templates;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string line = trim(text.substr(start, end - start));
    if (!line.empty() && line[0] != ';' && isValidShortTemplate(line)) addUnique(templates, line);
    start = end + 1;
  }
  return templates;
}

std::vector<DescriptionFile> descriptionFiles(const std::string& location) {
  std::vector<DescriptionFile> files;
  if (location.empty()) return files;
  const std::string suffix = ".xml";
  for (const auto& name : listFiles(location)) {
    if (name.size() <= suffix.size() ||
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0) {
      continue;
    }
    const auto id = XmlId::parse(name.substr(0, name.size() - suffix.size()));
    if (id && isSupportedSchema(*id)) {
      files.push_back({*id, location + "/" + name});
    }
  }
  std::stable_sort(files.begin(), files.end(), [](const DescriptionFile& a, const DescriptionFile& b) {
    return preferredOver(a.id, b.id);
  });
  return files;
}

std::vector<std::string> collectTemplates(const std::string& location) {
  std::vector<std::string> templates;
  if (location.empty()) return templates;
  std::string list;
  if (readTextFile(location + "/" + kDeviceListFile, list)) templates = parseDeviceList(list);
  for (const auto& file : descriptionFiles(location)) addUnique(templates, file.id.deviceTemplate);
  return templates;
}

}  // namespace vq::gencpdrv
