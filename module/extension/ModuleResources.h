// The module's own resources: its string table and dialog templates. Looked up
// through the module state that is current on the calling thread.
#pragma once

#include <cstdint>

namespace vq {

// Resource identifiers.
constexpr std::uint32_t IDD_CAMERA_XML_SELECTOR = 2000;
constexpr std::uint32_t IDS_BUTTON_CLICKED = 2002;
constexpr std::uint32_t IDC_SHOW_WHEN_NO_XML = 2001;
constexpr std::uint32_t IDC_DEVICE_ID_TREE = 2004;

struct StringResource {
  std::uint32_t id;
  const char* text;
};

// One control of a dialog template; geometry in dialog units.
struct DialogItemResource {
  std::uint32_t id;
  const char* windowClass;
  const char* text;
  std::int16_t x;
  std::int16_t y;
  std::int16_t width;
  std::int16_t height;
  std::uint32_t style;
};

// A dialog template: the dialog's own attributes, then its controls in tab
// order.
struct DialogResource {
  std::uint32_t id;
  const char* caption;
  std::int16_t x;
  std::int16_t y;
  std::int16_t width;
  std::int16_t height;
  std::uint32_t style;
  const char* fontFace;
  std::uint16_t fontPointSize;
  std::uint16_t fontWeight;
  bool fontItalic;
  std::uint8_t fontCharSet;
  const DialogItemResource* items;
  std::uint32_t itemCount;

  // The control with this identifier, or null.
  const DialogItemResource* FindItem(std::uint32_t itemId) const;
};

// One module's resource set.
struct ModuleResources {
  const char* moduleName;
  const StringResource* strings;
  std::uint32_t stringCount;
  const DialogResource* dialogs;
  std::uint32_t dialogCount;

  // The text of a string resource, or null when this module has none.
  const char* FindString(std::uint32_t id) const;
  const DialogResource* FindDialog(std::uint32_t id) const;
};

// This module's resources.
const ModuleResources& ThisModuleResources();

}  // namespace vq
