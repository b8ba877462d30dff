// Texts of the messages the camera's feature services send to the host.
#pragma once

namespace vq {

// Level 0, with the parameter index.
constexpr const char* kFeatureLookupFailed =
    "GetFeatureInfo fail to get information of parameter index %d.";
constexpr const char* kCategoryLookupFailed =
    "GetFeatureCategory fail to get information of parameter index %d.";
// Level 0, after a serial time-out that the camera does not answer.
constexpr const char* kCameraNotAvailable = "Camera is not available.";
// Level 0, with the parameter's display name and the host's text.
constexpr const char* kValueNotANumber =
    "Parameter %s: \"%s\" is not a valid number; the value was not changed.";
// Level 0, when the camera has no configuration-save command.
constexpr const char* kSaveConfigurationMissing = "Unable to save camera configuration";

}  // namespace vq
