#include "DescriptionStore.h"

#include <map>
#include <mutex>

#include "DriverLocation.h"
#include "Identity.h"
#include "Templates.h"

namespace vq::gencpdrv {

namespace {

struct Store {
  std::mutex mutex;
  std::map<std::string, std::string> byDevice;
};

Store& store() {
  static Store instance;
  return instance;
}

}  // namespace

void rememberDescription(const std::string& shortDeviceId, const std::string& xml) {
  Store& s = store();
  std::lock_guard<std::mutex> lock(s.mutex);
  s.byDevice[shortDeviceId] = xml;
}

bool findDescription(const std::string& shortDeviceId, const std::string& location,
                     std::string& xml) {
  {
    Store& s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    // Exact device first, then any remembered device the given ID is a template of.
    auto it = s.byDevice.find(shortDeviceId);
    if (it == s.byDevice.end()) {
      for (it = s.byDevice.begin(); it != s.byDevice.end(); ++it) {
        if (templateMatches(shortDeviceId, it->first)) break;
      }
    }
    if (it != s.byDevice.end()) {
      xml = it->second;
      return true;
    }
  }
  for (const auto& file : descriptionFiles(location)) {
    if (templateMatches(file.id.deviceTemplate, shortDeviceId) && readTextFile(file.path, xml)) {
      return true;
    }
  }
  return false;
}

}  // namespace vq::gencpdrv
