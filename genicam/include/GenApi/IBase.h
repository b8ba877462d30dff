// Root of every GenApi interface: the access mode.
#pragma once

#include <GenICam.h>
#include <GenApi/Types.h>

namespace GenApi {

struct GENAPI_DECL IBase {
  virtual EAccessMode GetAccessMode() const = 0;
  virtual ~IBase();
};

}  // namespace GenApi
