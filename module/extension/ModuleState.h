// Per-thread module state: which module's resources are current on a thread.
// Entry points of this module make its resources current for their duration
// with a ModuleStateGuard, and the caller's state comes back on every exit,
// exceptions included.
#pragma once

#include <string>

#include "extension/ModuleResources.h"

namespace vq {

// The resources current on the calling thread; null while no module has made
// its own current.
const ModuleResources* CurrentModuleResources();

class ModuleStateGuard {
 public:
  ModuleStateGuard();
  ~ModuleStateGuard();
  ModuleStateGuard(const ModuleStateGuard&) = delete;
  ModuleStateGuard& operator=(const ModuleStateGuard&) = delete;

 private:
  const ModuleResources* previous_;
};

// The text of string resource id in the current module, empty when there is
// no current module or it has no such string.
std::string LoadModuleString(std::uint32_t id);

}  // namespace vq
