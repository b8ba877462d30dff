// Selector relations between features.
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

struct GENAPI_DECL ISelector : virtual public IBase {
  virtual bool IsSelector() const = 0;
  virtual void GetSelectedFeatures(FeatureList_t& Features) const = 0;
  virtual void GetSelectingFeatures(FeatureList_t& Features) const = 0;
  ~ISelector() override;
};

}  // namespace GenApi
