#include "extension/VQCameraExtApp.h"

namespace vq {

CVQCameraExtApp::CVQCameraExtApp() : resources_(ThisModuleResources()) {
  // The loader runs this at module load; start-up cannot fail here, so the
  // load always goes on.
  InitInstance();
}

CVQCameraExtApp::~CVQCameraExtApp() { ExitInstance(); }

bool CVQCameraExtApp::InitInstance() {
  running_ = true;
  return true;
}

int CVQCameraExtApp::ExitInstance() {
  running_ = false;
  return 0;
}

CVQCameraExtApp& TheModuleApplication() {
  // Constructed on first use (at the latest when the module loads, see below)
  // and ended when the module unloads.
  static CVQCameraExtApp application;
  return application;
}

namespace {

// Creates the application object while the module is being loaded.
[[maybe_unused]] const bool applicationStarted = TheModuleApplication().IsRunning();

}  // namespace

}  // namespace vq
