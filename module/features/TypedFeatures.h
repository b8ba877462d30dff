// Typed accessors: one small object per GenApi value interface, made on the
// stack from a feature's node for one call. Every GenApi call they make runs
// under a GenICam exception handler: on failure the exception's description
// becomes the accessor's lastError, the out-argument is left alone and the
// result is 0; on success the result is 1.
#pragma once

#include <cstdint>
#include <string>

#include "camera/GenICamCalls.h"

namespace vq {

// Shared by every accessor: the bound interface and the last failure text.
template <typename Interface>
class TypedFeature {
 public:
  explicit TypedFeature(GenApi::INode* node) : value_(NodeAs<Interface>(node)) {}

  bool IsBound() const { return value_ != nullptr; }
  const std::string& LastError() const { return lastError_; }

 protected:
  // Runs call(value) under the GenICam exception handler.
  template <typename Call>
  std::int32_t Capture(Call&& call) {
    if (value_ == nullptr) {
      lastError_ = "Feature does not have the expected type";
      return 0;
    }
    try {
      call(*value_);
      return 1;
    } catch (const GenICam::GenericException& failure) {
      lastError_ = failure.GetDescription();
      return 0;
    }
  }

  std::string lastError_;
  Interface* value_;
};

class IntegerFeature : public TypedFeature<GenApi::IInteger> {
 public:
  using TypedFeature::TypedFeature;
  // The 64-bit value converted to the nearest double.
  std::int32_t GetValue(double& value);
};

class FloatFeature : public TypedFeature<GenApi::IFloat> {
 public:
  using TypedFeature::TypedFeature;
  std::int32_t GetValue(double& value);
};

class BooleanFeature : public TypedFeature<GenApi::IBoolean> {
 public:
  using TypedFeature::TypedFeature;
  // 1 for true, 0 for false.
  std::int32_t GetValue(std::uint32_t& value);
};

class StringFeature : public TypedFeature<GenApi::IString> {
 public:
  using TypedFeature::TypedFeature;
  std::int32_t GetValue(std::string& value);
};

class EnumerationFeature : public TypedFeature<GenApi::IEnumeration> {
 public:
  using TypedFeature::TypedFeature;
  // The low 32 bits of the current entry's integer value.
  std::int32_t GetValue(std::uint32_t& value);
};

// Commands have no readable value; execution comes with the typed write.
class CommandFeature : public TypedFeature<GenApi::ICommand> {
 public:
  using TypedFeature::TypedFeature;
};

}  // namespace vq
