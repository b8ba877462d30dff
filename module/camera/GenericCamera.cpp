#include "camera/GenericCamera.h"

#include <cstring>

#include "camera/GenICamRuntime.h"
#include "camera/SerialAdapter.h"
#include "features/BoundedText.h"

namespace vq {

GenericCamera::GenericCamera(ParameterRecordList records) {
  // The host's records are not used by the camera; the list goes with this call.
  records.clear();
}

GenericCamera::~GenericCamera() {
  Teardown();
  categories_.clear();
}

std::int32_t GenericCamera::CallHost(std::uint32_t code, std::uint32_t detail, void* data) {
  if (hostCallback == nullptr) return 0;
  return hostCallback(code, detail, data, hostContext);
}

std::int32_t GenericCamera::ReportMessage(std::uint32_t level, const char* text) {
  return CallHost(HOST_MESSAGE, level, const_cast<char*>(text == nullptr ? "" : text));
}

std::int32_t GenericCamera::FindOrAddCategory(const char* name) {
  if (name == nullptr) name = "";
  for (const CategoryEntry& entry : categories_) {
    if (std::strcmp(entry.name, name) == 0) return static_cast<std::int32_t>(entry.index);
  }
  CategoryEntry entry{};
  entry.index = static_cast<std::uint32_t>(categories_.size());
  CopyText(entry.name, kMaxCategoryNameLength + 1, name);
  categories_.push_back(entry);
  return static_cast<std::int32_t>(entry.index);
}

const char* GenericCamera::GetCategoryName(std::uint32_t index) const {
  for (const CategoryEntry& entry : categories_) {
    if (entry.index == index) return entry.name;
  }
  return nullptr;
}

std::uint32_t GenericCamera::GetCategoryCount() const {
  return static_cast<std::uint32_t>(categories_.size());
}

void GenericCamera::ReleaseNodeMapAndTree() {
  if (featureTree_) {
    featureTree_->ClearChangeHandler();
    featureTree_.reset();
  }
  DeleteNodeMapReference(nodeMap_);
  ReleaseRetiredPorts();
}

void GenericCamera::AttachNodeMap(std::unique_ptr<GenApi::CNodeMapRef> nodeMap) {
  ReleaseNodeMapAndTree();
  nodeMap_ = std::move(nodeMap);
  if (nodeMap_) BuildFeatureTree();
}

void GenericCamera::BuildFeatureTree() {
  try {
    featureTree_ = std::make_unique<CameraFeature>(*nodeMap_);
  } catch (...) {
    // The callbacks registered before the failure point at the unfinished
    // tree: the node map that holds them goes at once.
    ReleaseNodeMapAndTree();
    throw;
  }
  std::uint32_t count = 0;
  featureTree_->GetFeatureCount(count);
  featureTree_->SetChangeHandler(&GenericCamera::OnFeatureChanged, this);
  RebuildCategoryTable();
}

void GenericCamera::RebuildCategoryTable() {
  categories_.clear();
  std::uint32_t count = 0;
  featureTree_->GetFeatureCount(count);
  std::vector<GenICam::gcstring> path;
  for (std::uint32_t index = 0; index < count; ++index) {
    path.clear();
    if (!featureTree_->GetFeatureCategory(index, path)) continue;
    // A feature listed directly under the root has no top-level category and
    // registers none here; its record files it under the root's display name
    // when the host asks for it.
    if (path.size() < 2) continue;
    FindOrAddCategory(path[1].c_str());
  }
}

std::int32_t GenericCamera::OnFeatureChanged(std::uint32_t index, GenericFeature* feature,
                                             void* context) {
  auto* camera = static_cast<GenericCamera*>(context);
  if (camera != nullptr && feature != nullptr && camera->hostCallback != nullptr) {
    camera->CallHost(HOST_FEATURE_CHANGED, index, nullptr);
  }
  return 1;
}

}  // namespace vq
