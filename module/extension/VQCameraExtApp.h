// The module's application object: one per loaded module, created when the
// module is loaded and ended when it is unloaded. It holds the module's state
// (its resources); nothing else happens at load or unload.
#pragma once

#include "extension/ModuleResources.h"

namespace vq {

class CVQCameraExtApp {
 public:
  CVQCameraExtApp();
  ~CVQCameraExtApp();
  CVQCameraExtApp(const CVQCameraExtApp&) = delete;
  CVQCameraExtApp& operator=(const CVQCameraExtApp&) = delete;

  // Start-up of the module; always succeeds.
  bool InitInstance();
  // End of the module.
  int ExitInstance();

  bool IsRunning() const { return running_; }
  const ModuleResources& Resources() const { return resources_; }

 private:
  const ModuleResources& resources_;
  bool running_ = false;
};

// The module's one application object.
CVQCameraExtApp& TheModuleApplication();

}  // namespace vq
