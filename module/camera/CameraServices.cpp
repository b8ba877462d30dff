// Small services of the camera object: the visibility level and its name, the
// configuration save, the model name and the help file's name.
#include <strings.h>

#include "camera/CameraMessages.h"
#include "camera/GenericCamera.h"
#include "features/BoundedText.h"
#include "features/FeatureCodes.h"

namespace vq {

namespace {

constexpr const char* kSaveConfigurationFeature = "KORVASaveCameraConfiguration";
constexpr const char* kModelNameFeature = "DeviceModelName";

struct VisibilityLevelName {
  std::uint32_t level;
  const char* name;
};

// In the order names are matched.
constexpr VisibilityLevelName kVisibilityLevelNames[] = {
    {VISIBILITY_LEVEL_GURU, "Guru"},
    {VISIBILITY_LEVEL_EXPERT, "Expert"},
    {VISIBILITY_LEVEL_BEGINNER, "Beginner"},
    {VISIBILITY_LEVEL_INVISIBLE, "Invisible"},
};

}  // namespace

std::int32_t GenericCamera::SetVisibilityLevel(const char* levelName) {
  for (const VisibilityLevelName& row : kVisibilityLevelNames) {
    if (levelName != nullptr && strcasecmp(levelName, row.name) == 0) {
      visibilityLevel_ = row.level;
      return 1;
    }
  }
  // An unknown name does not keep the previous level.
  visibilityLevel_ = VISIBILITY_LEVEL_BEGINNER;
  return 0;
}

std::int32_t GenericCamera::GetVisibilityLevelName(char* buffer, std::uint32_t size) const {
  for (const VisibilityLevelName& row : kVisibilityLevelNames) {
    if (row.level == visibilityLevel_) {
      CopyText(buffer, size, row.name);
      return 1;
    }
  }
  return 0;
}

std::int32_t GenericCamera::HasSaveConfiguration() const {
  std::uint32_t index = 0;
  if (!featureTree_) return 0;
  return featureTree_->GetFeatureIndex(kSaveConfigurationFeature, index);
}

std::int32_t GenericCamera::SaveConfiguration() {
  if (!featureTree_) return 0;
  std::uint32_t index = 0;
  if (!featureTree_->GetFeatureIndex(kSaveConfigurationFeature, index)) {
    ReportMessage(MESSAGE_FAILURE, kSaveConfigurationMissing);
    return 0;
  }
  // Writing a command executes it and waits for it to finish.
  return SetFeatureValueText(index, "0");
}

std::int32_t GenericCamera::GetDeviceModelName(char* buffer, std::uint32_t size) {
  GenericFeature feature;
  if (buffer == nullptr || !featureTree_ ||
      !featureTree_->GetFeatureByName(kModelNameFeature, feature)) {
    return 0;
  }
  // Integer and float reads fill 8 bytes whatever the size: a smaller buffer
  // is refused rather than overrun.
  std::uint32_t type = 0;
  feature.GetType(type);
  if ((type == FEATURE_TYPE_INTEGER || type == FEATURE_TYPE_FLOAT) && size < sizeof(double)) {
    return 0;
  }
  return feature.GetValue(buffer, size);
}

std::int32_t GenericCamera::GetHelpFileName(char* buffer, std::uint32_t size) const {
  if (!nodeMap_) return 0;
  auto* deviceInfo = dynamic_cast<GenApi::IDeviceInfo*>(nodeMap_->_Ptr);
  if (deviceInfo == nullptr) return 0;
  const GenICam::gcstring model = deviceInfo->GetModelName();
  FormatText(buffer, size, "%s.chm", model.c_str());
  return 1;
}

}  // namespace vq
