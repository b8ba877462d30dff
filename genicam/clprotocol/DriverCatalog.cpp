#include "DriverCatalog.h"

#include <vq/platform/environment.h>
#include <vq/platform/shared_library.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>

namespace CLProtocol {

const char* const kDriverSubfolder = "Linux64_x64";

namespace {

namespace fs = std::filesystem;

struct LoadedDrivers {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<DriverLibrary>> byPath;
  std::vector<std::string> diagnostics;
};

// Never destroyed: unloading drivers while the process exits would call into libraries whose
// own statics are already gone. Terminate unloads them while everything is alive.
LoadedDrivers& loaded() {
  static LoadedDrivers* const instance = new LoadedDrivers;
  return *instance;
}

void anchor() {}

// lib/clprotocol next to this library.
std::string ownLocation() {
  const std::string self = vq::platform::GetModulePath(reinterpret_cast<const void*>(&anchor));
  if (self.empty()) return std::string();
  return vq::platform::DirectoryOf(self) + "/clprotocol";
}

std::string normalised(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(fs::path(path), error);
  std::string text = error ? path : canonical.string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

void addLocation(std::vector<std::string>& locations, const std::string& location) {
  if (location.empty()) return;
  const std::string path = normalised(location);
  if (std::find(locations.begin(), locations.end(), path) == locations.end()) {
    locations.push_back(path);
  }
}

bool isDriverFileName(const std::string& name) {
  return name.size() > 6 && name.compare(0, 3, "lib") == 0 &&
         name.compare(name.size() - 3, 3, ".so") == 0;
}

}  // namespace

std::vector<std::string> DriverLocations() {
  std::vector<std::string> locations;
  if (const auto variable = vq::platform::GetEnv("GENICAM_CLPROTOCOL")) {
    size_t start = 0;
    while (start <= variable->size()) {
      size_t end = variable->find_first_of(";:", start);
      if (end == std::string::npos) end = variable->size();
      addLocation(locations, variable->substr(start, end - start));
      start = end + 1;
    }
  }
  addLocation(locations, ownLocation());
  return locations;
}

std::vector<std::string> DriverPaths() {
  std::vector<std::string> paths;
  std::vector<std::string> files;  // canonical paths of the files listed
  for (const auto& location : DriverLocations()) {
    const fs::path folder = fs::path(location) / kDriverSubfolder;
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error) continue;
    std::vector<std::string> names;
    for (const auto& entry : it) {
      std::error_code entryError;
      const std::string name = entry.path().filename().string();
      if (entry.is_regular_file(entryError) && isDriverFileName(name)) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    for (const auto& name : names) {
      // A debug build is used only where no release build of the same driver lies.
      const std::string debugSuffix = ".debug.so";
      if (name.size() > debugSuffix.size() &&
          name.compare(name.size() - debugSuffix.size(), debugSuffix.size(), debugSuffix) == 0) {
        const std::string release = name.substr(0, name.size() - debugSuffix.size()) + ".so";
        if (std::find(names.begin(), names.end(), release) != names.end()) continue;
      }
      const std::string path = (folder / name).string();
      const std::string file = normalised(path);
      if (std::find(files.begin(), files.end(), file) != files.end()) continue;
      files.push_back(file);
      paths.push_back(path);
    }
  }
  return paths;
}

std::shared_ptr<DriverLibrary> GetDriver(const std::string& path) {
  const std::string key = normalised(path);
  LoadedDrivers& drivers = loaded();
  std::lock_guard<std::mutex> lock(drivers.mutex);
  auto it = drivers.byPath.find(key);
  if (it != drivers.byPath.end()) return it->second;
  auto driver = DriverLibrary::Load(key);
  drivers.byPath[key] = driver;
  return driver;
}

std::vector<std::shared_ptr<DriverLibrary>> LoadAllDrivers() {
  std::vector<std::shared_ptr<DriverLibrary>> drivers;
  for (const auto& path : DriverPaths()) {
    try {
      auto driver = GetDriver(path);
      if (std::find(drivers.begin(), drivers.end(), driver) == drivers.end()) {
        drivers.push_back(driver);
      }
    } catch (const GenICam::GenericException&) {
      // Not a usable driver: skipped like any other file.
    }
  }
  return drivers;
}

void Diagnose(std::vector<std::string> messages) {
  LoadedDrivers& drivers = loaded();
  std::lock_guard<std::mutex> lock(drivers.mutex);
  drivers.diagnostics = std::move(messages);
}

std::vector<std::string> Diagnostics() {
  LoadedDrivers& drivers = loaded();
  std::lock_guard<std::mutex> lock(drivers.mutex);
  return drivers.diagnostics;
}

void UnloadDrivers() {
  LoadedDrivers& drivers = loaded();
  std::lock_guard<std::mutex> lock(drivers.mutex);
  drivers.byPath.clear();
}

}  // namespace CLProtocol
