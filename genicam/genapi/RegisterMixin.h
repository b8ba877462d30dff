// RegisterMixin: IRegister (raw bytes, length, address) for every node that
// owns a RegisterCore.
#pragma once

#include "NodeMap.h"
#include "RegisterCore.h"

namespace GenApi {
namespace impl {

class RegisterMixin : public virtual IRegister {
 public:
  void Set(const uint8_t* pBuffer, int64_t Length, bool Verify = true) override;
  void Get(uint8_t* pBuffer, int64_t Length, bool Verify = false,
           bool IgnoreCache = false) override;
  int64_t GetLength(bool Verify = false) override;
  int64_t GetAddress(bool Verify = false) override;

 protected:
  virtual NodeImpl& Self() = 0;
  RegisterCore core_;
};

}  // namespace impl
}  // namespace GenApi
