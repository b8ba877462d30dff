// The catalogue of one camera's features, built once from the node map's "Root"
// category. Every feature (never a category) gets a flat index, depth first in
// the categories' list order; that index is the host's parameter index. The
// tree also registers a change callback on every feature node and forwards
// node changes, as flat indices, to the installed change handler.
#pragma once

#include <cstdint>
#include <vector>

#include "camera/GenICamCalls.h"
#include "features/GenericFeature.h"

namespace vq {

// Told about a changed feature: its flat index, a handle naming it (valid for
// the call only) and the context given with the handler. The result is unused.
using FeatureChangeHandler = std::int32_t (*)(std::uint32_t index, GenericFeature* feature,
                                              void* context);

enum FeatureNodeKind : std::uint32_t {
  FEATURE_NODE_EMPTY = 0,
  FEATURE_NODE_CATEGORY = 1,
  FEATURE_NODE_FEATURE = 2,
};

// One entry of the tree; children are held by value.
struct FeatureNode {
  GenApi::INode* node = nullptr;  // owned by the node map
  std::uint32_t kind = FEATURE_NODE_EMPTY;
  // Feature: its flat index. Category: the last flat index given out when its
  // subtree was complete (wraps to 0xFFFFFFFF before the first feature).
  std::uint32_t index = 0;
  std::int64_t address = 0;  // feature: register address, 0 when none
  // Display names of the categories from the root down; a category's path
  // ends with its own name, a feature's is its category's path.
  std::vector<GenICam::gcstring> categoryPath;
  std::vector<FeatureNode> children;
};

class CameraFeature {
 public:
  // Builds the whole tree from the connected node map. GenICam exceptions
  // raised on the way leave the constructor; a description without a "Root"
  // category is refused with a GenICam::RuntimeException.
  explicit CameraFeature(GenApi::CNodeMapRef& nodeMap);
  ~CameraFeature() = default;
  CameraFeature(const CameraFeature&) = delete;
  CameraFeature& operator=(const CameraFeature&) = delete;

  // Look-ups: 1 when found, 0 otherwise (the output is then left as it was).
  std::int32_t GetFeatureCount(std::uint32_t& count) const;
  std::int32_t GetFeatureByIndex(std::uint32_t index, GenericFeature& feature) const;
  std::int32_t GetFeatureCategory(std::uint32_t index, std::vector<GenICam::gcstring>& path) const;
  std::int32_t GetFeatureIndex(const char* name, std::uint32_t& index) const;
  std::int32_t GetFeatureByName(const char* name, GenericFeature& feature) const;
  std::int32_t GetFeatureByAddress(std::int64_t address, GenericFeature& feature) const;

  // Change notification: one handler at a time.
  std::int32_t SetChangeHandler(FeatureChangeHandler handler, void* context);
  std::int32_t ClearChangeHandler();
  // Called by the node callbacks registered during the build.
  void OnNodeChanged(GenApi::INode* node);

  const FeatureNode& Root() const { return root_; }

 private:
  void BuildNode(GenApi::INode* node, FeatureNode& entry, std::vector<GenApi::INode*>& walk);
  void BuildCategory(GenApi::ICategory& category, FeatureNode& entry,
                     std::vector<GenApi::INode*>& walk);
  void BuildFeature(GenApi::INode* node, FeatureNode& entry);
  void RegisterChangeCallback(GenApi::INode* node);

  const FeatureNode* FindByIndex(std::uint32_t index) const;

  std::uint32_t featureCount_ = 0;
  FeatureNode root_;
  FeatureChangeHandler changeHandler_ = nullptr;
  void* changeContext_ = nullptr;
};

// Register address of a feature node: its own when it is a register, else that
// of its first invalidating child when that child is a register, else 0.
std::int64_t RegisterAddressOf(GenApi::INode* node);

}  // namespace vq
