// String features.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL IString : virtual public IValue {
  virtual void SetValue(const GenICam::gcstring& Value, bool Verify = true) = 0;
  virtual GenICam::gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
  virtual int64_t GetMaxLength() = 0;

  IString& operator=(const GenICam::gcstring& Value) {
    SetValue(Value);
    return *this;
  }
  GenICam::gcstring operator()() { return GetValue(); }
  GenICam::gcstring operator*() { return GetValue(); }
  ~IString() override;
};

}  // namespace GenApi
