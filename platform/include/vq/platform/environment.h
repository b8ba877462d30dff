// Process environment variables.
#ifndef VQ_PLATFORM_ENVIRONMENT_H
#define VQ_PLATFORM_ENVIRONMENT_H

#include <optional>
#include <string>

namespace vq::platform {

// The value of a variable, or nothing when unset (or the name is empty or has '=').
std::optional<std::string> GetEnv(const std::string& name);

// Sets or replaces a variable; false for an empty name or one containing '='.
bool SetEnv(const std::string& name, const std::string& value);

// Removes a variable (success when it was not set); false for an invalid name.
bool UnsetEnv(const std::string& name);

// The user's cache directory: $XDG_CACHE_HOME when it is an absolute path, else $HOME/.cache;
// empty when the environment names neither. It need not exist.
std::string UserCacheDirectory();

}  // namespace vq::platform

#endif  // VQ_PLATFORM_ENVIRONMENT_H
