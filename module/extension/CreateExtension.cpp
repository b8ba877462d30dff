// The module's one exported entry.
#include <new>

#include "extension/ModuleState.h"
#include "extension/VQ_CameraExt.h"

extern "C" VQ_EXT_EXPORT VQ_Ext* CreateExtension() {
  vq::ModuleStateGuard moduleState;
  return new (std::nothrow) vq::VQ_CameraExt();
}
