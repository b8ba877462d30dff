// Test double for the formula engine: every variable reads as zero.
#pragma once

#include <cstdint>

#include "../../../genicam/genapi/formula/Formula.h"

namespace genapi_test {

class ZeroVariables : public GenApi::formula::IVariableSource {
 public:
  int64_t GetInteger(const GenApi::formula::VariableRef&) override { return 0; }
  double GetFloat(const GenApi::formula::VariableRef&) override { return 0.0; }
};

}  // namespace genapi_test
