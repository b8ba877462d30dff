#include "extension/ModuleResources.h"

namespace vq {

namespace {

const StringResource kStrings[] = {
    {IDS_BUTTON_CLICKED, "%s button was clicked."},
};

const DialogResource kDialogs[] = {
    {IDD_CAMERA_XML_SELECTOR, "Camera XML Selector"},
};

const ModuleResources kThisModule = {
    "VQGenericCamera",
    kStrings,
    sizeof(kStrings) / sizeof(kStrings[0]),
    kDialogs,
    sizeof(kDialogs) / sizeof(kDialogs[0]),
};

}  // namespace

const char* ModuleResources::FindString(std::uint32_t id) const {
  for (std::uint32_t i = 0; i < stringCount; ++i) {
    if (strings[i].id == id) return strings[i].text;
  }
  return nullptr;
}

const DialogResource* ModuleResources::FindDialog(std::uint32_t id) const {
  for (std::uint32_t i = 0; i < dialogCount; ++i) {
    if (dialogs[i].id == id) return &dialogs[i];
  }
  return nullptr;
}

const ModuleResources& ThisModuleResources() { return kThisModule; }

}  // namespace vq
