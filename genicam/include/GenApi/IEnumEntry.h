// One entry of an enumeration.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL IEnumEntry : virtual public IValue {
  virtual int64_t GetValue() = 0;
  virtual GenICam::gcstring GetSymbolic() const = 0;
  virtual double GetNumericValue() = 0;
  virtual bool IsSelfClearing() = 0;
  ~IEnumEntry() override;
};

}  // namespace GenApi
