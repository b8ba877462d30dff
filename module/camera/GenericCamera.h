// The camera object: the extension's one connection to one camera. It owns the
// node-map reference and the feature tree while a camera is connected, keeps
// the category table, and is the only way out of the module to the host: every
// message, change notice and serial request goes through its host callback.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "camera/GenICamCalls.h"
#include "features/CameraFeature.h"
#include "features/GenericFeature.h"
#include "vq/VQ_Ext.h"

namespace vq {

class SerialAdapter;
struct FeatureInfoRecord;

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
  CLProtocol::CCLPort* Port() const { return port_.get(); }
  SerialAdapter* Adapter() const { return serialAdapter_.get(); }

  // ---- Connection: device detection, description selection, teardown ----

  // Opens the camera on the host's serial port: 0 connected, 1 failed, 2 Load
  // without a selection and nothing loaded, 3 nothing to load. GenICam
  // exceptions outside the selector's guarded probe pass to the caller.
  std::uint32_t Open(std::uint32_t portIndex, void* parentWindow, std::uint32_t alwaysShowSelector,
                     std::uint32_t showSelectorWhenNoMatch);
  // Releases the feature tree and the node map; port and adapter stay.
  void Close();
  // Request 22 for the port index; the host's answer is not used.
  void ReportProbeFailure(std::uint32_t portIndex);

  // Takes a loaded and connected node-map reference, builds the feature tree
  // from it, installs OnFeatureChanged as its change handler and rebuilds the
  // category table from the features' top-level categories. Any previous tree
  // and node map are released first. When the build throws, the node map goes
  // too (its callbacks would point at the unfinished tree) and the exception
  // passes to the caller.
  void AttachNodeMap(std::unique_ptr<GenApi::CNodeMapRef> nodeMap);

  // Change handler installed on the feature tree, the camera being the
  // context: sends code 9 with the feature's flat index. Always 1.
  static std::int32_t OnFeatureChanged(std::uint32_t index, GenericFeature* feature, void* context);

  // ---- Feature information and value texts ----
  std::int32_t GetFeatureInfo(std::uint32_t index, FeatureInfoRecord& record,
                              std::uint32_t readValue);
  std::int32_t AppendParameterTexts(std::uint32_t index, std::vector<ParameterTextItem>& texts);

  // ---- Value write from text and buttons ----
  std::int32_t SetFeatureValueText(std::uint32_t index, const char* text);
  std::int32_t PressParameterButton(void* hostArgument, std::uint32_t index);

  // ---- Baud rate and parameter-name services ----
  std::uint32_t GetMaxCommonBaudRate();
  std::uint32_t GetCurrentBaudRate();
  std::int32_t SetBaudRate(std::uint32_t baudRateBit);
  std::int32_t RefreshCameraParameter(const char* parameterName);
  std::int32_t IsCameraParameterVisible(const char* parameterName);

  // ---- Configuration save, visibility level, model and help ----
  std::int32_t SetVisibilityLevel(const char* levelName);
  std::int32_t GetVisibilityLevelName(char* buffer, std::uint32_t size) const;
  std::int32_t HasSaveConfiguration() const;
  std::int32_t SaveConfiguration();
  std::int32_t GetDeviceModelName(char* buffer, std::uint32_t size);
  std::int32_t GetHelpFileName(char* buffer, std::uint32_t size) const;

 private:
  // Removes the change handler, then drops the feature tree, then the node
  // map, then any port kept for that node map.
  void ReleaseNodeMapAndTree();
  // Builds the feature tree from the connected node map, installs the change
  // handler and rebuilds the category table. When the build throws, the node
  // map is released before the exception passes on.
  void BuildFeatureTree();
  void RebuildCategoryTable();
  std::int32_t CallHost(std::uint32_t code, std::uint32_t detail, void* data);
  // The category a feature is filed under: the top-level category of its
  // path, or the root's own name for a feature directly under the root.
  static const char* TopLevelCategoryName(const std::vector<GenICam::gcstring>& path);
  // Formats a message with the index as a signed number and reports it at level 0.
  void ReportIndexFailure(const char* format, std::uint32_t index);
  // The baud-rate enumeration bound, with its entry count; 0 when the camera
  // has none or it has no entries.
  std::int32_t FindBaudRateFeature(GenericFeature& feature, EnumerationFeature& enumeration,
                                   std::uint32_t& count) const;
  // The feature at the register address the protocol driver gives the name.
  std::int32_t FindFeatureOfParameter(const char* parameterName,
                                      const CLProtocol::CDeviceID& deviceID,
                                      GenericFeature& feature) const;
  // Formats a message with one text value into 512 bytes and reports it.
  void ReportFormatted(std::uint32_t level, const char* format, const char* value);

  // Open's steps: a fresh port and adapter, registered as "KorvaPort".
  void ReplacePortAndAdapter();
  void ReleaseRetiredPorts();
  // The selector loop: OPEN_CONNECTED with deviceID set once a template was
  // accepted and probed, else the result Open returns.
  std::uint32_t RunSelector(void* parentWindow, std::uint32_t portIndex,
                            std::uint32_t showSelectorWhenNoMatch,
                            const GenICam::gcstring_vector& templates, const char* detectedFamily,
                            GenICam::gcstring& deviceID);
  // After a write that succeeded: the camera's warning, if it gave one, goes to
  // the host at level 3.
  void ReportWriteWarning(GenericFeature& feature);
  // The destruction's order: port, adapter, feature tree, node map.
  void Teardown();

  std::vector<CategoryEntry> categories_;
  std::unique_ptr<CLProtocol::CCLPort> port_;
  std::unique_ptr<GenApi::CNodeMapRef> nodeMap_;
  std::unique_ptr<CameraFeature> featureTree_;
  std::unique_ptr<SerialAdapter> serialAdapter_;
  std::uint32_t visibilityLevel_ = VISIBILITY_LEVEL_GURU;
  // Port and adapter of a connection whose node map outlived an open.
  std::vector<std::unique_ptr<CLProtocol::CCLPort>> retiredPorts_;
  std::vector<std::unique_ptr<SerialAdapter>> retiredAdapters_;
};

}  // namespace vq
