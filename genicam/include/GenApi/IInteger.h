// Integer features.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL IInteger : virtual public IValue {
  virtual void SetValue(int64_t Value, bool Verify = true) = 0;
  virtual int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
  virtual int64_t GetMin() = 0;
  virtual int64_t GetMax() = 0;
  virtual EIncMode GetIncMode() = 0;
  virtual int64_t GetInc() = 0;
  virtual int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
  virtual ERepresentation GetRepresentation() = 0;
  virtual GenICam::gcstring GetUnit() = 0;
  virtual void ImposeMin(int64_t Value) = 0;
  virtual void ImposeMax(int64_t Value) = 0;

  IInteger& operator=(int64_t Value) {
    SetValue(Value);
    return *this;
  }
  int64_t operator()() { return GetValue(); }
  int64_t operator*() { return GetValue(); }
  ~IInteger() override;
};

}  // namespace GenApi
