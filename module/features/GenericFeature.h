// The handle of one feature: its node in the camera's node map and the text of
// the last failure recorded on it. A plain value, copied freely; it never owns
// the node and is valid only while the node map exists.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera/GenICamCalls.h"

namespace vq {

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

 private:
  void InvalidateRegistersBelow(GenApi::INode* node, std::vector<GenApi::INode*>& path) const;

  std::string lastError_;
  GenApi::INode* node_;
};

}  // namespace vq
