// Releasing a node map.
#pragma once

#include <GenApi/GenApiDll.h>

namespace GenApi {

struct GENAPI_DECL IDestroy {
  virtual void Destroy() = 0;
  virtual ~IDestroy();
};

}  // namespace GenApi
