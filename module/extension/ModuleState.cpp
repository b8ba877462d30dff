#include "extension/ModuleState.h"

#include "extension/VQCameraExtApp.h"

namespace vq {

namespace {

thread_local const ModuleResources* currentResources = nullptr;

}  // namespace

const ModuleResources* CurrentModuleResources() { return currentResources; }

ModuleStateGuard::ModuleStateGuard() : previous_(currentResources) {
  currentResources = &TheModuleApplication().Resources();
}

ModuleStateGuard::~ModuleStateGuard() { currentResources = previous_; }

std::string LoadModuleString(std::uint32_t id) {
  const ModuleResources* resources = currentResources;
  if (resources == nullptr) return std::string();
  const char* text = resources->FindString(id);
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace vq
