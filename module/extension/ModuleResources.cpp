#include "extension/ModuleResources.h"

namespace vq {

namespace {

const StringResource kStrings[] = {
    {IDS_BUTTON_CLICKED, "%s button was clicked."},
};

// Dialog 2000: Load (OK), Close (Cancel), the check box and the template tree.
const DialogItemResource kCameraXmlSelectorItems[] = {
    {1, "button", "Load", 98, 175, 50, 14, 0x50010001},
    {2, "button", "Close", 169, 175, 50, 14, 0x50010000},
    {IDC_SHOW_WHEN_NO_XML, "button",
     "Show this dialog when no xml file is found for the detected camera.", 29, 159, 231, 10,
     0x50010003},
    {IDC_DEVICE_ID_TREE, "SysTreeView32", "", 23, 16, 265, 129, 0x50810007},
};

const DialogResource kDialogs[] = {
    {IDD_CAMERA_XML_SELECTOR, "Camera XML Selector", 0, 0, 310, 215, 0x80C800C8, "MS Shell Dlg", 8,
     400, false, 1, kCameraXmlSelectorItems,
     sizeof(kCameraXmlSelectorItems) / sizeof(kCameraXmlSelectorItems[0])},
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

const DialogItemResource* DialogResource::FindItem(std::uint32_t itemId) const {
  for (std::uint32_t i = 0; i < itemCount; ++i) {
    if (items[i].id == itemId) return &items[i];
  }
  return nullptr;
}

const ModuleResources& ThisModuleResources() { return kThisModule; }

}  // namespace vq
