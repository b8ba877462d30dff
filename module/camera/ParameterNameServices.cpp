// Camera parameters named by the camera's protocol driver: the driver turns
// the name into a register address, and the feature at that address is read
// afresh or tested for visibility.
#include <strings.h>

#include "camera/GenericCamera.h"
#include "camera/SerialAdapter.h"
#include "features/FeatureCodes.h"

namespace vq {

std::int32_t GenericCamera::FindFeatureOfParameter(const char* parameterName,
                                                   const CLProtocol::CDeviceID& deviceID,
                                                   GenericFeature& feature) const {
  std::uint32_t address = 0;
  if (!serialAdapter_->TranslateParameterName(parameterName, address,
                                              deviceID.GetShortDeviceID().c_str())) {
    return 0;
  }
  return featureTree_->GetFeatureByAddress(static_cast<std::int64_t>(address), feature);
}

std::int32_t GenericCamera::RefreshCameraParameter(const char* parameterName) {
  if (!featureTree_ || !port_ || !serialAdapter_ || parameterName == nullptr) return 0;
  CLProtocol::CDeviceID deviceID;
  deviceID.FromString(port_->GetDeviceID());
  if (parameterName[0] == '\0') return 1;
  GenericFeature feature;
  if (!FindFeatureOfParameter(parameterName, deviceID, feature)) return 0;
  feature.InvalidateRegisters(feature.Node());
  return 1;
}

std::int32_t GenericCamera::IsCameraParameterVisible(const char* parameterName) {
  if (!featureTree_ || !port_ || !serialAdapter_ || parameterName == nullptr) return 0;
  // The protocol's own "gcp" parameters are never shown.
  if (strncasecmp(parameterName, "gcp", 3) == 0) return 0;
  CLProtocol::CDeviceID deviceID;
  deviceID.FromString(port_->GetDeviceID());
  if (parameterName[0] == '\0') return 0;
  GenericFeature feature;
  if (!FindFeatureOfParameter(parameterName, deviceID, feature)) return 0;
  std::uint32_t visibility = 0;
  feature.GetVisibility(visibility);
  return visibility == FEATURE_VISIBILITY_INVISIBLE ? 0 : 1;
}

}  // namespace vq
