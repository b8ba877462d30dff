// Opening the camera: attach the serial adapter to the host's port, find out
// which camera answers, choose its description (by the host's camera text or
// through the selector dialog), fetch the description from the camera, and
// build the node map, the feature tree and the category table. Also closing a
// connection and the camera object's teardown.
#include <strings.h>

#include <cstring>

#include "camera/GenICamRuntime.h"
#include "camera/GenericCamera.h"
#include "camera/SerialAdapter.h"
#include "features/BoundedText.h"
#include "ui/VQDeviceIDSelector.h"
#include "ui/WBCursor.h"

namespace vq {

namespace {

constexpr const char* kSerialPortName = "KorvaPort";
constexpr const char* kPortID = "Local#KorvaPort";
constexpr CLUINT32 kProbeTimeoutMs = 12000;

// The first template whose camera model is a prefix of the host's camera text.
GenICam::gcstring MatchDeviceTemplate(const GenICam::gcstring_vector& templates,
                                      const std::string& cameraText) {
  if (cameraText.empty()) return GenICam::gcstring();
  for (const GenICam::gcstring& candidate : templates) {
    CLProtocol::CDeviceID id;
    id.FromString(candidate);
    const GenICam::gcstring model = id.GetCameraModel();
    if (!model.empty() && cameraText.compare(0, model.size(), model.c_str()) == 0) {
      return candidate;
    }
  }
  return GenICam::gcstring();
}

// The family field of a device ID: three "#"-separated fields are dropped from
// the front (a drop without a "#" keeps the text), then the text up to the
// next "#" is kept.
void DetectedFamily(const GenICam::gcstring& deviceID, char (&family)[kMessageBufferSize]) {
  const char* text = deviceID.c_str();
  for (int drop = 0; drop < 3; ++drop) {
    const char* separator = std::strchr(text, '#');
    if (separator != nullptr) text = separator + 1;
  }
  const char* end = std::strchr(text, '#');
  const std::string field = end == nullptr ? std::string(text) : std::string(text, end);
  FormatText(family, sizeof family, "%s", field.c_str());
}

bool DiffersIgnoringCase(const char* detected, const GenICam::gcstring& chosen) {
  char chosenCut[kMessageBufferSize];
  CopyText(chosenCut, sizeof chosenCut, chosen.c_str());
  return strcasecmp(detected, chosenCut) != 0;
}

}  // namespace

void GenericCamera::ReportProbeFailure(std::uint32_t portIndex) {
  SerialRequestRecord record{};
  record.portIndex = portIndex;
  CallHost(HOST_SERIAL_REQUEST, SERIAL_REPORT_PROBE_FAILURE, &record);
}

void GenericCamera::ReportFormatted(std::uint32_t level, const char* format, const char* value) {
  char text[kMessageBufferSize];
  FormatText(text, sizeof text, format, value);
  ReportMessage(level, text);
}

void GenericCamera::ReplacePortAndAdapter() {
  // A node map that survives this open (the user may cancel the selector)
  // still reads through the old port and adapter: they are kept aside until
  // that node map goes, so it never reaches a deleted port.
  const bool survivors = nodeMap_ != nullptr;
  if (port_) {
    CLProtocol::CCLPort::UnRegisterSerials();
    if (survivors) {
      retiredPorts_.push_back(std::move(port_));
    } else {
      port_.reset();
    }
  }
  if (serialAdapter_) {
    if (survivors) {
      retiredAdapters_.push_back(std::move(serialAdapter_));
    } else {
      serialAdapter_->FreeDriverLibrary();
      serialAdapter_.reset();
    }
  }
  port_ = std::make_unique<CLProtocol::CCLPort>();
  serialAdapter_ = std::make_unique<SerialAdapter>(*this);
  CLProtocol::CCLPort::RegisterSerial(kSerialPortName, serialAdapter_.get());
}

void GenericCamera::ReleaseRetiredPorts() {
  retiredPorts_.clear();
  for (auto& adapter : retiredAdapters_) adapter->FreeDriverLibrary();
  retiredAdapters_.clear();
}

std::uint32_t GenericCamera::RunSelector(void* parentWindow, std::uint32_t portIndex,
                                         std::uint32_t showSelectorWhenNoMatch,
                                         const GenICam::gcstring_vector& templates,
                                         const char* detectedFamily,
                                         GenICam::gcstring& deviceID) {
  for (;;) {
    VQDeviceIDSelector dialog(parentWindow, templates);
    dialog.showWhenNoXml = showSelectorWhenNoMatch;
    const std::int32_t choice = dialog.DoModal();
    std::uint32_t checkBoxState = dialog.showWhenNoXml;
    CallHost(HOST_SELECTOR_STATE, 0, &checkBoxState);
    const GenICam::gcstring selected = dialog.GetSelectedTemplate();
    if (choice == IDCANCEL || selected.empty()) {
      const bool nothingLoaded = !featureTree_ || !nodeMap_;
      return choice != IDCANCEL && nothingLoaded ? OPEN_NO_SELECTION : OPEN_NOTHING_TO_LOAD;
    }
    try {
      serialAdapter_->SelectPort(portIndex);
      if (detectedFamily[0] != '\0' &&
          DiffersIgnoringCase(detectedFamily, dialog.GetSelectedCameraFamily())) {
        char text[kMessageBufferSize];
        FormatText(text, sizeof text,
                   "XML Camera File chosen %s does not belong to the family of cameras you are "
                   "using: %s",
                   dialog.GetSelectedShortDeviceID().c_str(), detectedFamily);
        ReportMessage(MESSAGE_FAILURE, text);
        continue;
      }
      deviceID = CLProtocol::CCLPort::ProbeDevice(kPortID, selected, kProbeTimeoutMs);
      ReportFormatted(MESSAGE_INFORMATION, "XML Camera file for device: %s is loaded",
                      dialog.GetSelectedShortDeviceID().c_str());
      return OPEN_CONNECTED;
    } catch (const GenICam::GenericException&) {
      ReportFormatted(MESSAGE_FAILURE, "The Camera do not support this the device ID: %s",
                      dialog.GetSelectedShortDeviceID().c_str());
      ReportProbeFailure(portIndex);
    }
  }
}

std::uint32_t GenericCamera::Open(std::uint32_t portIndex, void* parentWindow,
                                  std::uint32_t alwaysShowSelector,
                                  std::uint32_t showSelectorWhenNoMatch) {
  ReplacePortAndAdapter();

  std::uint32_t reportedIndex = 0;
  std::string cameraText;
  if (!serialAdapter_->QueryPortInfo(portIndex, reportedIndex, cameraText)) return OPEN_FAILED;

  GenICam::gcstring_vector templates;
  CLProtocol::CCLPort::GetDeviceIDTemplates(templates);
  GenICam::gcstring deviceID = MatchDeviceTemplate(templates, cameraText);
  char family[kMessageBufferSize];
  DetectedFamily(deviceID, family);

  if (alwaysShowSelector == 1 || (deviceID.empty() && showSelectorWhenNoMatch == 1)) {
    const std::uint32_t choice = RunSelector(parentWindow, portIndex, showSelectorWhenNoMatch,
                                             templates, family, deviceID);
    if (choice != OPEN_CONNECTED) return choice;
  }
  // A device ID still empty with a flag other than 0 goes on to connect; the
  // protocol layer refuses it with an exception.
  if (deviceID.empty() && showSelectorWhenNoMatch == 0) return OPEN_NOTHING_TO_LOAD;

  WBCursor busyCursor(ui::kWaitCursor, 0, nullptr, 0);
  ReleaseNodeMapAndTree();
  CLProtocol::CDeviceID parsedID;
  parsedID.FromString(deviceID);
  nodeMap_ = CreateNodeMapReference();
  serialAdapter_->LoadDriverLibrary(parsedID.GetDriverPath().c_str());
  serialAdapter_->SelectPort(portIndex);
  port_->Connect(kPortID, deviceID);
  const GenICam::gcstring xml = port_->GetXML(true);
  if (xml.empty()) {
    ReportFormatted(MESSAGE_FAILURE, "XML File for device: \"%s\" not available.",
                    deviceID.c_str());
    ReleaseNodeMapAndTree();
    return OPEN_FAILED;
  }
  LoadNodeMapFromText(*nodeMap_, xml);
  if (!ConnectNodeMap(*nodeMap_, port_.get())) {
    ReleaseNodeMapAndTree();
    return OPEN_FAILED;
  }
  BuildFeatureTree();
  return OPEN_CONNECTED;
}

void GenericCamera::Close() { ReleaseNodeMapAndTree(); }

void GenericCamera::Teardown() {
  if (port_) {
    CLProtocol::CCLPort::UnRegisterSerials();
    port_.reset();
  }
  if (serialAdapter_) {
    serialAdapter_->FreeDriverLibrary();
    serialAdapter_.reset();
  }
  ReleaseNodeMapAndTree();
}

}  // namespace vq
