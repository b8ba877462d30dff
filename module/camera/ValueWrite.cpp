// Writing a feature from the host's value text: the text is converted by the
// feature's type, written with verification, and a refusal is reported with
// the camera's own error text; a serial time-out checks that the camera is
// still there. Also the host's button press.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "camera/CameraMessages.h"
#include "camera/GenericCamera.h"
#include "camera/SerialAdapter.h"
#include "extension/ModuleState.h"
#include "features/BoundedText.h"
#include "features/FeatureCodes.h"
#include "features/FeatureInfoRecord.h"

namespace vq {

namespace {

// Error codes that decide the outcome of a refused write.
constexpr std::int32_t kWrittenWithWarning = -30100;
constexpr std::int32_t kSerialTimeout = -10004;

// A number as "%lf" reads it: leading blanks skipped, reading stops at the
// first character that is not part of it. Only finite numbers are accepted.
bool ReadNumber(const char* text, double& number) {
  char* end = nullptr;
  number = std::strtod(text, &end);
  return end != text && std::isfinite(number);
}

// An integer as "%d" reads it: the low 32 bits of the decimal number.
bool ReadInteger(const char* text, std::uint32_t& number) {
  const char* digits = text;
  while (*digits == ' ' || (*digits >= '\t' && *digits <= '\r')) ++digits;
  if (*digits == '-' || *digits == '+') ++digits;
  if (*digits < '0' || *digits > '9') return false;
  number = static_cast<std::uint32_t>(std::strtoll(text, nullptr, 10));
  return true;
}

// The typed form of the host's text for SetValue, by feature type.
struct TypedValue {
  std::vector<char> bytes;
  std::uint32_t size = 0;

  template <typename T>
  void Hold(const T& number) {
    bytes.resize(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number);
    size = sizeof number;
  }
};

bool ConvertText(std::uint32_t type, const char* text, TypedValue& value) {
  if (type == FEATURE_TYPE_STRING) {
    const std::size_t length = std::strlen(text);
    value.bytes.assign(text, text + length + 1);
    value.size = static_cast<std::uint32_t>(length);
    return true;
  }
  if (type == FEATURE_TYPE_BOOLEAN || type == FEATURE_TYPE_ENUMERATION) {
    std::uint32_t number = 0;
    if (!ReadInteger(text, number)) return false;
    value.Hold(number);
    return true;
  }
  double number = 0;
  if (!ReadNumber(text, number)) return false;
  // An integer feature also refuses numbers beyond the 64-bit range.
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (type == FEATURE_TYPE_INTEGER && !(number >= -kTwoTo63 && number < kTwoTo63)) return false;
  value.Hold(number);
  return true;
}

// Text of a string resource with one "%s" completed, of any length.
std::string FormatResourceText(std::uint32_t id, const char* value) {
  const std::string format = LoadModuleString(id);
  const int length = std::snprintf(nullptr, 0, format.c_str(), value);
  if (length <= 0) return std::string();
  std::vector<char> text(static_cast<std::size_t>(length) + 1);
  std::snprintf(text.data(), text.size(), format.c_str(), value);
  return std::string(text.data());
}

}  // namespace

std::int32_t GenericCamera::SetFeatureValueText(std::uint32_t index, const char* text) {
  if (!featureTree_) return 0;
  GenericFeature feature;
  if (!featureTree_->GetFeatureByIndex(index, feature)) {
    ReportIndexFailure(kFeatureLookupFailed, index);
    return 0;
  }
  std::uint32_t type = 0;
  feature.GetType(type);
  if (type == FEATURE_TYPE_NONE || type > FEATURE_TYPE_STRING) return 1;  // nothing to write
  // A missing text is no value at all: nothing is written.
  if (text == nullptr) return 0;

  TypedValue value;
  if (!ConvertText(type, text, value)) {
    // A text that is no number for a numeric feature would leave the value to
    // chance: the write is refused and the user told what was not taken.
    char name[kFeatureTextSize];
    feature.GetDisplayName(name, sizeof name);
    char message[kMessageBufferSize];
    FormatText(message, sizeof message, kValueNotANumber, name, text);
    ReportMessage(MESSAGE_FAILURE, message);
    return 0;
  }
  if (feature.SetValue(value.bytes.data(), value.size)) {
    ReportWriteWarning(feature);
    return 1;
  }

  ReportMessage(MESSAGE_DEVICE_ERROR, feature.FormatErrorMessage().c_str());
  feature.InvalidateRegisters(feature.Node());
  const std::int32_t code = feature.GetErrorCode();
  if (code == kWrittenWithWarning) return 1;
  if (code == kSerialTimeout) {
    // Without an adapter there is nobody to ask: the camera counts as gone.
    const std::int32_t alive = serialAdapter_ ? serialAdapter_->IsPortAlive() : 0;
    if (alive == 0) ReportMessage(MESSAGE_FAILURE, kCameraNotAvailable);
  }
  return 0;
}

void GenericCamera::ReportWriteWarning(GenericFeature& feature) {
  // The node map writes through the port of its own connection, which an open
  // that kept it has set aside.
  CLProtocol::CCLPort* port = retiredPorts_.empty() ? port_.get() : retiredPorts_.front().get();
  if (port == nullptr) return;
  const GenICam::gcstring warning = port->GetLastWriteWarning();
  if (warning.empty()) return;
  // Executed with a warning: the host gets the camera's text as for a
  // refusal, and the registers are read afresh, but the write stands.
  feature.SetLastError(warning.c_str());
  ReportMessage(MESSAGE_DEVICE_ERROR, feature.FormatErrorMessage().c_str());
  feature.InvalidateRegisters(feature.Node());
}

std::int32_t GenericCamera::PressParameterButton(void*, std::uint32_t index) {
  FeatureInfoRecord record;
  if (!GetFeatureInfo(index, record, 0)) return 0;
  const std::string clicked = FormatResourceText(IDS_BUTTON_CLICKED, record.DisplayName);
  ReportMessage(MESSAGE_INFORMATION, clicked.c_str());
  return SetFeatureValueText(index, "1");
}

}  // namespace vq
