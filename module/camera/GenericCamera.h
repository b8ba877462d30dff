// The camera object: the extension's one connection to one camera. It owns the
// node-map reference and the feature tree while a camera is connected, keeps
// the category table, and is the only way out of the module to the host: every
// message, change notice and serial request goes through its host callback.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "camera/GenICamCalls.h"
#include "features/CameraFeature.h"
#include "features/GenericFeature.h"
#include "vq/VQ_Ext.h"

namespace CLProtocol {
class CCLPort;
}

namespace vq {

class SerialAdapter;

// Visibility levels of the camera object.
enum VisibilityLevel : std::uint32_t {
  VISIBILITY_LEVEL_BEGINNER = 1,
  VISIBILITY_LEVEL_EXPERT = 2,
  VISIBILITY_LEVEL_GURU = 3,
  VISIBILITY_LEVEL_INVISIBLE = 4,
};

// Size of the texts the module formats for the host.
constexpr std::size_t kMessageBufferSize = 512;
// Longest category name kept in the category table.
constexpr std::size_t kMaxCategoryNameLength = 511;

struct CategoryEntry {
  std::uint32_t index;  // equals the entry's position in the table
  char name[1544];      // NUL-terminated, at most kMaxCategoryNameLength characters
};

class GenericCamera {
 public:
  // The records are handed over by the creator; the camera does not keep them.
  explicit GenericCamera(ParameterRecordList records);
  ~GenericCamera();
  GenericCamera(const GenericCamera&) = delete;
  GenericCamera& operator=(const GenericCamera&) = delete;

  // Set by the creator right after construction.
  HostCallback hostCallback = nullptr;
  HostContext hostContext = 0;

  // Sends a code-7 message; the host's result, or 0 without a callback.
  std::int32_t ReportMessage(std::uint32_t level, const char* text);

  // Index of the category with exactly this name, appending it (cut to 511
  // characters) when it is not listed yet.
  std::int32_t FindOrAddCategory(const char* name);
  // Name of the first entry with this index, or null when none has it.
  const char* GetCategoryName(std::uint32_t index) const;
  std::uint32_t GetCategoryCount() const;

  std::uint32_t GetVisibilityLevel() const { return visibilityLevel_; }
  bool HasFeatureTree() const { return featureTree_ != nullptr; }
  CameraFeature* FeatureTree() const { return featureTree_.get(); }
  GenApi::CNodeMapRef* NodeMap() const { return nodeMap_.get(); }

  // Takes a loaded and connected node-map reference, builds the feature tree
  // from it, installs OnFeatureChanged as its change handler and rebuilds the
  // category table from the features' top-level categories. Any previous tree
  // and node map are released first. GenICam exceptions from the build pass to
  // the caller; the node map is kept then, without a tree.
  void AttachNodeMap(std::unique_ptr<GenApi::CNodeMapRef> nodeMap);

  // Change handler installed on the feature tree, the camera being the
  // context: sends code 9 with the feature's flat index. Always 1.
  static std::int32_t OnFeatureChanged(std::uint32_t index, GenericFeature* feature, void* context);

 private:
  // Removes the change handler, then drops the feature tree, then the node map.
  void ReleaseNodeMapAndTree();
  void RebuildCategoryTable();
  std::int32_t CallHost(std::uint32_t code, std::uint32_t detail, void* data);

  std::vector<CategoryEntry> categories_;
  // Protocol port and serial adapter: created by the connect operation, which
  // comes with the device-detection work; nothing creates them yet.
  [[maybe_unused]] CLProtocol::CCLPort* port_ = nullptr;
  std::unique_ptr<GenApi::CNodeMapRef> nodeMap_;
  std::unique_ptr<CameraFeature> featureTree_;
  [[maybe_unused]] SerialAdapter* serialAdapter_ = nullptr;
  std::uint32_t visibilityLevel_ = VISIBILITY_LEVEL_GURU;
};

}  // namespace vq
