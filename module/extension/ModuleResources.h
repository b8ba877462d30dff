// The module's own resources: its string table and dialog templates. Looked up
// through the module state that is current on the calling thread.
#pragma once

#include <cstdint>

namespace vq {

// Resource identifiers.
constexpr std::uint32_t IDD_CAMERA_XML_SELECTOR = 2000;
constexpr std::uint32_t IDS_BUTTON_CLICKED = 2002;

struct StringResource {
  std::uint32_t id;
  const char* text;
};

struct DialogResource {
  std::uint32_t id;
  const char* caption;
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
