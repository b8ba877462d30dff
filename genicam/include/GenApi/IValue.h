// Any node that holds a value convertible to and from text.
#pragma once

#include <GenApi/INode.h>

namespace GenApi {

struct GENAPI_DECL IValue : virtual public IBase {
  virtual INode* GetNode() = 0;
  virtual GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
  virtual void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) = 0;
  virtual bool IsValueCacheValid() const = 0;
  ~IValue() override;
};

}  // namespace GenApi
