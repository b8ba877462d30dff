// The transport a node map reads and writes device registers through.
#pragma once

#include <GenApi/IBase.h>

namespace GenApi {

struct GENAPI_DECL IPort : virtual public IBase {
  virtual void Read(void* pBuffer, int64_t Address, int64_t Length) = 0;
  virtual void Write(const void* pBuffer, int64_t Address, int64_t Length) = 0;
  ~IPort() override;
};

}  // namespace GenApi
