#include "features/CameraFeature.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace vq {

namespace {

using ChangeCallback =
    GenApi::Member_NodeCallback<CameraFeature, void (CameraFeature::*)(GenApi::INode*)>;

// Depth-first walks in child order; visit returns true to stop at an entry.
template <typename Visit>
const FeatureNode* FindFeature(const FeatureNode& entry, Visit& visit) {
  if (entry.kind == FEATURE_NODE_FEATURE) return visit(entry) ? &entry : nullptr;
  for (const FeatureNode& child : entry.children) {
    if (const FeatureNode* found = FindFeature(child, visit)) return found;
  }
  return nullptr;
}

const FeatureNode* FindByIndexBelow(const FeatureNode& entry, std::uint32_t index) {
  // Only children whose index reaches the searched one are entered; a feature
  // reached that way is the match.
  if (entry.kind == FEATURE_NODE_FEATURE) return &entry;
  for (const FeatureNode& child : entry.children) {
    if (index > child.index) continue;
    if (const FeatureNode* found = FindByIndexBelow(child, index)) return found;
  }
  return nullptr;
}

}  // namespace

std::int64_t RegisterAddressOf(GenApi::INode* node) {
  if (auto* reg = NodeAs<GenApi::IRegister>(node)) return reg->GetAddress();
  GenApi::node_vector children;
  node->GetChildren(children, GenApi::ctInvalidatingChildren);
  if (children.empty()) return 0;
  if (auto* reg = NodeAs<GenApi::IRegister>(children[0])) return reg->GetAddress();
  return 0;
}

CameraFeature::CameraFeature(GenApi::CNodeMapRef& nodeMap) {
  GenApi::INode* rootNode = nodeMap._GetNode("Root");
  // The catalogue is built from the root category; without one there is
  // nothing sound to number, so the description is refused.
  if (NodeAs<GenApi::ICategory>(rootNode) == nullptr) {
    throw RUNTIME_EXCEPTION("The description has no category named 'Root'");
  }
  std::vector<GenApi::INode*> walk;
  BuildNode(rootNode, root_, walk);
}

void CameraFeature::BuildNode(GenApi::INode* node, FeatureNode& entry,
                              std::vector<GenApi::INode*>& walk) {
  if (node == nullptr) return;
  const GenICam::gcstring displayName = node->GetDisplayName();
  if (auto* category = NodeAs<GenApi::ICategory>(node)) {
    // A category that lists itself, directly or through others, would never
    // end the walk; its repeated occurrence is left out.
    if (std::find(walk.begin(), walk.end(), node) != walk.end()) return;
    entry.node = node;
    entry.kind = FEATURE_NODE_CATEGORY;
    entry.categoryPath.push_back(displayName);
    walk.push_back(node);
    BuildCategory(*category, entry, walk);
    walk.pop_back();
    return;
  }
  if (NodeAs<GenApi::IValue>(node) != nullptr && node->GetAccessMode() != GenApi::NI) {
    BuildFeature(node, entry);
  }
}

void CameraFeature::BuildCategory(GenApi::ICategory& category, FeatureNode& entry,
                                  std::vector<GenApi::INode*>& walk) {
  GenApi::value_vector features;
  category.GetFeatures(features);
  for (GenApi::IValue* listed : features) {
    if (listed == nullptr) continue;
    FeatureNode child;
    child.categoryPath = entry.categoryPath;
    BuildNode(listed->GetNode(), child, walk);
    if (child.kind != FEATURE_NODE_EMPTY) entry.children.push_back(std::move(child));
  }
  entry.index = featureCount_ - 1u;  // wraps while no feature exists yet
}

void CameraFeature::BuildFeature(GenApi::INode* node, FeatureNode& entry) {
  entry.node = node;
  entry.kind = FEATURE_NODE_FEATURE;
  entry.index = featureCount_;
  entry.address = RegisterAddressOf(node);
  RegisterChangeCallback(node);
  ++featureCount_;
}

void CameraFeature::RegisterChangeCallback(GenApi::INode* node) {
  // The node takes the callback over once registered; until then it is ours.
  std::unique_ptr<ChangeCallback> callback(
      new ChangeCallback(node, *this, &CameraFeature::OnNodeChanged, GenApi::cbPostInsideLock));
  node->RegisterCallback(callback.get());
  callback.release();
}

std::int32_t CameraFeature::GetFeatureCount(std::uint32_t& count) const {
  count = featureCount_;
  return 1;
}

const FeatureNode* CameraFeature::FindByIndex(std::uint32_t index) const {
  if (index > featureCount_) return nullptr;
  if (root_.kind != FEATURE_NODE_CATEGORY) return nullptr;
  return FindByIndexBelow(root_, index);
}

std::int32_t CameraFeature::GetFeatureByIndex(std::uint32_t index, GenericFeature& feature) const {
  const FeatureNode* entry = FindByIndex(index);
  if (entry == nullptr) return 0;
  feature.SetLastError(std::string());
  feature.SetNode(entry->node);
  return 1;
}

std::int32_t CameraFeature::GetFeatureCategory(std::uint32_t index,
                                               std::vector<GenICam::gcstring>& path) const {
  const FeatureNode* entry = FindByIndex(index);
  if (entry == nullptr) return 0;
  path = entry->categoryPath;
  return 1;
}

std::int32_t CameraFeature::GetFeatureIndex(const char* name, std::uint32_t& index) const {
  if (name == nullptr) return 0;
  auto byName = [name](const FeatureNode& entry) {
    return std::strcmp(entry.node->GetName(false).c_str(), name) == 0;
  };
  const FeatureNode* entry = FindFeature(root_, byName);
  if (entry == nullptr) return 0;
  index = entry->index;
  return 1;
}

std::int32_t CameraFeature::GetFeatureByName(const char* name, GenericFeature& feature) const {
  if (name == nullptr) return 0;
  auto byName = [name](const FeatureNode& entry) {
    return std::strcmp(entry.node->GetName(false).c_str(), name) == 0;
  };
  const FeatureNode* entry = FindFeature(root_, byName);
  if (entry == nullptr) return 0;
  feature.SetLastError(std::string());
  feature.SetNode(entry->node);
  return 1;
}

std::int32_t CameraFeature::GetFeatureByAddress(std::int64_t address,
                                                GenericFeature& feature) const {
  auto byAddress = [address](const FeatureNode& entry) { return entry.address == address; };
  const FeatureNode* entry = FindFeature(root_, byAddress);
  if (entry == nullptr) return 0;
  feature.SetLastError(std::string());
  feature.SetNode(entry->node);
  return 1;
}

std::int32_t CameraFeature::SetChangeHandler(FeatureChangeHandler handler, void* context) {
  changeHandler_ = handler;
  changeContext_ = context;
  return 1;
}

std::int32_t CameraFeature::ClearChangeHandler() {
  changeHandler_ = nullptr;
  changeContext_ = nullptr;
  return 1;
}

void CameraFeature::OnNodeChanged(GenApi::INode* node) {
  if (changeHandler_ == nullptr) return;
  auto byNode = [node](const FeatureNode& entry) { return entry.node == node; };
  const FeatureNode* entry = FindFeature(root_, byNode);
  if (entry == nullptr) return;
  GenericFeature feature(node);
  changeHandler_(entry->index, &feature, changeContext_);
}

}  // namespace vq
