// Test double for the formula engine: variables answer from a table and every
// request is counted. Unknown variables throw, or read as zero when asked to.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>

#include "../../../genicam/genapi/formula/Formula.h"

namespace genapi_test {

class FakeVariables : public GenApi::formula::IVariableSource {
 public:
  explicit FakeVariables(bool unknownIsZero = false) : unknownIsZero_(unknownIsZero) {}
  void Set(std::size_t index, double value,
           GenApi::formula::VariableProperty property = GenApi::formula::VariableProperty::Value,
           const std::string& entry = "") {
    values_[Key{index, property, entry}] = value;
  }
  int64_t GetInteger(const GenApi::formula::VariableRef& ref) override {
    ++integerReads;
    return static_cast<int64_t>(Lookup(ref));
  }
  double GetFloat(const GenApi::formula::VariableRef& ref) override {
    ++floatReads;
    return Lookup(ref);
  }
  int integerReads = 0;
  int floatReads = 0;

 private:
  using Key = std::tuple<std::size_t, GenApi::formula::VariableProperty, std::string>;
  double Lookup(const GenApi::formula::VariableRef& ref) {
    auto found = values_.find(Key{ref.index, ref.property, ref.entryName});
    if (found != values_.end()) return found->second;
    if (unknownIsZero_) return 0.0;
    throw std::out_of_range("no value for variable");
  }
  bool unknownIsZero_;
  std::map<Key, double> values_;
};

}  // namespace genapi_test
