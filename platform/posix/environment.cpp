// Environment variables through getenv/setenv/unsetenv.
#include "vq/platform/environment.h"

#include <cstdlib>
#include <mutex>

namespace vq::platform {

namespace {
bool IsValidName(const std::string& name) {
  return !name.empty() && name.find('=') == std::string::npos &&
         name.find('\0') == std::string::npos;
}

// getenv and setenv are not safe against each other; our own calls at least
// do not race.
std::mutex& EnvironmentMutex() {
  static std::mutex mutex;
  return mutex;
}
}  // namespace

std::optional<std::string> GetEnv(const std::string& name) {
  if (!IsValidName(name)) return std::nullopt;
  std::lock_guard<std::mutex> lock(EnvironmentMutex());
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) return std::nullopt;
  return std::string(value);
}

bool SetEnv(const std::string& name, const std::string& value) {
  if (!IsValidName(name) || value.find('\0') != std::string::npos) return false;
  std::lock_guard<std::mutex> lock(EnvironmentMutex());
  return setenv(name.c_str(), value.c_str(), 1) == 0;
}

bool UnsetEnv(const std::string& name) {
  if (!IsValidName(name)) return false;
  std::lock_guard<std::mutex> lock(EnvironmentMutex());
  return unsetenv(name.c_str()) == 0;
}

std::string UserCacheDirectory() {
  const auto xdg = GetEnv("XDG_CACHE_HOME");
  if (xdg && !xdg->empty() && (*xdg)[0] == '/') return *xdg;
  const auto home = GetEnv("HOME");
  if (home && !home->empty()) return *home + "/.cache";
  return std::string();
}

}  // namespace vq::platform
