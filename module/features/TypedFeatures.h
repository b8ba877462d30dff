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
    return CaptureResult([&](Interface& value) {
      call(value);
      return std::int32_t{1};
    });
  }
  // The same for calls that decide their own result (1 or 0) when nothing throws.
  template <typename Call>
  std::int32_t CaptureResult(Call&& call) {
    if (value_ == nullptr) {
      lastError_ = "Feature does not have the expected type";
      return 0;
    }
    try {
      return call(*value_);
    } catch (const GenICam::GenericException& failure) {
      lastError_ = failure.GetDescription();
      return 0;
    }
  }

  std::string lastError_;
  Interface* value_;
};

// Writes pass their verify flag to GenApi, which then refuses values outside
// the feature's range or access by throwing.

class IntegerFeature : public TypedFeature<GenApi::IInteger> {
 public:
  using TypedFeature::TypedFeature;
  // The 64-bit value converted to the nearest double.
  std::int32_t GetValue(double& value);
  // The double truncated toward zero (TruncateToInt64).
  std::int32_t SetValue(double value, bool verify);
  // Limits converted to the nearest float.
  std::int32_t GetMin(float& value);
  std::int32_t GetMax(float& value);
  std::int32_t GetInc(float& value);
};

class FloatFeature : public TypedFeature<GenApi::IFloat> {
 public:
  using TypedFeature::TypedFeature;
  std::int32_t GetValue(double& value);
  std::int32_t SetValue(double value, bool verify);
  std::int32_t GetMin(double& value);
  std::int32_t GetMax(double& value);
};

class BooleanFeature : public TypedFeature<GenApi::IBoolean> {
 public:
  using TypedFeature::TypedFeature;
  // 1 for true, 0 for false.
  std::int32_t GetValue(std::uint32_t& value);
  // Any nonzero value sets true.
  std::int32_t SetValue(std::uint32_t value, bool verify);
};

class StringFeature : public TypedFeature<GenApi::IString> {
 public:
  using TypedFeature::TypedFeature;
  std::int32_t GetValue(std::string& value);
  // Stores a NUL at text[size] (text must hold size + 1 bytes); the text up
  // to its first NUL becomes the value.
  std::int32_t SetValue(char* text, std::uint32_t size, bool verify);
  // The number in the node's "Length" property (hexadecimal after "0x").
  // Result 1, or 0 on a GenICam exception; length is left alone when the
  // property holds no number.
  std::int32_t GetMaxLength(std::uint32_t& length);
};

class EnumerationFeature : public TypedFeature<GenApi::IEnumeration> {
 public:
  explicit EnumerationFeature(GenApi::INode* node = nullptr) : TypedFeature(node) {}
  // Binds the accessor to an enumeration and empties its lastError.
  void Bind(GenApi::IEnumeration* enumeration);

  // The low 32 bits of the current entry's integer value.
  std::int32_t GetValue(std::uint32_t& value);
  // Selects the entry whose value is `value` taken as unsigned.
  std::int32_t SetIntValue(std::uint32_t value, bool verify);

  // Entries by list position: the list is fetched anew by every query and
  // holds available and unavailable entries alike. A position past the list,
  // or one that holds no enumeration entry, gives 0 with nothing written and
  // lastError unchanged.
  std::int32_t GetEntryCount(std::uint32_t& count);
  std::int32_t GetEntrySymbolic(std::uint32_t index, char* buffer, std::uint32_t size);
  // The low 32 bits of the entry's value.
  std::int32_t GetEntryValue(std::uint32_t index, std::uint32_t& value);
  // 1 when the entry is neither NA nor NI.
  std::int32_t IsEntryAvailable(std::uint32_t index, std::uint32_t& available);
  // Entries by value: the first entry whose value equals `value` widened as
  // unsigned (so entries with negative values are never found); 0 when none.
  std::int32_t GetSymbolicOfValue(std::uint32_t value, char* buffer, std::uint32_t size);
  std::int32_t GetDisplayNameOfValue(std::uint32_t value, char* buffer, std::uint32_t size);

 private:
  template <typename Use>
  std::int32_t WithEntryAt(std::uint32_t index, Use&& use);
  template <typename Use>
  std::int32_t WithEntryOfValue(std::uint32_t value, Use&& use);
};

// Commands have no readable value.
class CommandFeature : public TypedFeature<GenApi::ICommand> {
 public:
  using TypedFeature::TypedFeature;
  // Executes with verification.
  std::int32_t Execute();
  // Completion without verification, stored as 1 or 0.
  std::int32_t IsDone(std::uint8_t& done);
};

}  // namespace vq
