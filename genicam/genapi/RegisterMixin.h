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

// A node of family Base whose value lives in a register: its access mode, caching mode and value
// cache all come from the register core.
template <class Base>
class RegisterBacked : public Base, public RegisterMixin {
 public:
  using Base::Base;

  EAccessMode NaturalAccessMode() const override { return core_.Mode(); }
  bool ParseRegister(const XmlElem& e) {
    return core_.Parse(e, this, this->Map()->Names(), this->Map()->Memory());
  }
  ECachingMode OwnCachingMode() const override { return core_.cachable; }
  void ClearValueCache() override { core_.Clear(); }
  bool IsValueCacheValid() const override {
    AutoLock guard(this->Map()->GetLock());
    return const_cast<RegisterCore&>(core_).CacheValid(this);
  }

 protected:
  NodeImpl& Self() override { return *this; }
};

}  // namespace impl
}  // namespace GenApi
