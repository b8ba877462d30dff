// The handle of one feature: its node in the camera's node map and the text of
// the last failure recorded on it. A plain value, copied freely; it never owns
// the node and is valid only while the node map exists.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera/GenICamCalls.h"

namespace vq {

class EnumerationFeature;
class FloatFeature;
class IntegerFeature;

class GenericFeature {
 public:
  explicit GenericFeature(GenApi::INode* node = nullptr) : node_(node) {}

  GenApi::INode* Node() const { return node_; }
  void SetNode(GenApi::INode* node) { node_ = node; }
  const std::string& LastError() const { return lastError_; }
  void SetLastError(const std::string& text) { lastError_ = text; }

  // FeatureType code. Result 1 when the node has a value interface the module
  // knows; otherwise 0 with code 0 (also for a handle without a node).
  std::int32_t GetType(std::uint32_t& code) const;
  // FeatureAccess code of the node's access mode; result 1.
  std::int32_t GetAccessMode(std::uint32_t& code) const;
  // FeatureVisibility code; result 1.
  std::int32_t GetVisibility(std::uint32_t& code) const;
  // Per-feature hooks: no decimals and a scale of 1 for every feature.
  std::int32_t GetDecimals(std::uint32_t& count) const;
  std::int32_t GetScale(float& factor) const;
  // Node name (not fully qualified) and display name, bounded-copied; result 1.
  std::int32_t GetName(char* buffer, std::uint32_t size) const;
  std::int32_t GetDisplayName(char* buffer, std::uint32_t size) const;
  // The description, or the tool tip when it is empty. When size is at least
  // the text's length the text is bounded-copied (result 1, size unchanged);
  // otherwise size becomes length + 1, the buffer is untouched and result 0.
  std::int32_t GetDescription(char* buffer, std::uint32_t& size) const;
  // Typed read of the current value into buffer (see FeatureType for the form).
  std::int32_t GetValue(void* buffer, std::uint32_t size);
  // Invalidates every register among node's invalidating children, depth first,
  // so the next read of features built on them asks the camera.
  void InvalidateRegisters(GenApi::INode* node) const;

  // Binds the accessor to this feature when it is an enumeration (result 1);
  // otherwise result 0 and the accessor is left as it was.
  std::int32_t AsEnumeration(EnumerationFeature& enumeration) const;

  // Limits as 4-byte floats. Integer and float features write 4 bytes (size
  // not consulted) and record the outcome in lastError; GetMax of a string
  // feature needs size 4 and gives its maximum length; every other feature
  // fills the whole buffer (0 bytes, or 0xFF bytes for GetMax) with result 1.
  std::int32_t GetMin(void* buffer, std::uint32_t size);
  std::int32_t GetMax(void* buffer, std::uint32_t size);
  std::int32_t GetInc(void* buffer, std::uint32_t size);

  // Typed write with verification, from the form GetValue produces (integer
  // and float: 8-byte double; boolean and enumeration: 4-byte value and size
  // 4; string: size characters, buffer holding size + 1 bytes; command: not
  // read, executed and awaited). Result 1 when accepted, else 0 with the
  // reason in lastError.
  std::int32_t SetValue(void* buffer, std::uint32_t size);

  // lastError as the host is shown it: a protocol error's text after its
  // "(Code: n)", or the whole text when it carries no code.
  std::string FormatErrorMessage() const;
  // The number after "Code:" in lastError, 0 when there is none.
  std::int32_t GetErrorCode() const;

 private:
  using IntegerLimit = std::int32_t (IntegerFeature::*)(float&);
  using FloatLimit = std::int32_t (FloatFeature::*)(double&);
  // The limit of an integer or float feature stored as a float; nothing when
  // the feature is neither (or a float and floatLimit is null).
  std::optional<std::int32_t> NumericLimit(void* buffer, IntegerLimit integerLimit,
                                           FloatLimit floatLimit);
  void InvalidateRegistersBelow(GenApi::INode* node, std::vector<GenApi::INode*>& path) const;

  std::string lastError_;
  GenApi::INode* node_;
};

}  // namespace vq
