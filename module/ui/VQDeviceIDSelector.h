// Placeholder of the camera XML selector until the dialog lands: it closes as
// if Close were pressed.
#pragma once

#include <cstdint>

#include "camera/GenICamCalls.h"

namespace vq {

constexpr std::int32_t IDOK = 1;
constexpr std::int32_t IDCANCEL = 2;

class VQDeviceIDSelector {
 public:
  VQDeviceIDSelector(void*, const GenICam::gcstring_vector&) {}
  std::int32_t DoModal() { return IDCANCEL; }
  GenICam::gcstring GetSelectedTemplate() const { return GenICam::gcstring(); }
  GenICam::gcstring GetSelectedShortDeviceID() const { return GenICam::gcstring(); }
  GenICam::gcstring GetSelectedCameraFamily() const { return GenICam::gcstring(); }
  std::uint32_t showWhenNoXml = 1;
};

}  // namespace vq
