// Placeholder of the busy cursor until the dialogs and controls land.
#pragma once

#include <cstdint>

namespace vq {

namespace ui {
constexpr std::uintptr_t kWaitCursor = 32514;
}

class WBCursor {
 public:
  WBCursor(std::uintptr_t, std::uint32_t, void*, std::uint32_t) {}
  virtual ~WBCursor() = default;
};

}  // namespace vq
