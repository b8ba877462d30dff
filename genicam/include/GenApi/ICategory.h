// Categories group features.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL ICategory : virtual public IValue {
  virtual void GetFeatures(FeatureList_t& Features) const = 0;
  ~ICategory() override;
};

}  // namespace GenApi
