// The cursor of the window seam. Cursors are the system's: LoadCursor knows
// the predefined cursors by their numeric identifiers. On a terminal the
// current cursor is the terminal window's mouse pointer: SetCursor sends
// xterm's pointer-shape control sequence (OSC 22), which prints nothing and
// which terminals that do not know it ignore; without a terminal it only
// changes what GetCursor answers. The terminal is the one VQ_DIALOG names (see
// UiTerminal.h); VQ_DIALOG=none shows no pointer.
#pragma once

#include <cstdint>

#include "ui/Window.h"

namespace vq::ui {

// A cursor name: a numeric system cursor identifier or a resource name.
struct CursorName {
  constexpr CursorName(std::uint32_t identifier) : id(identifier), name(nullptr) {}
  constexpr CursorName(const char* resourceName) : id(0), name(resourceName) {}

  std::uint32_t id;
  const char* name;
};

constexpr CursorName IDC_ARROW{32512u};
constexpr CursorName IDC_IBEAM{32513u};
constexpr CursorName IDC_WAIT{32514u};
constexpr CursorName IDC_APPSTARTING{32650u};
// The system wait cursor.
constexpr CursorName kWaitCursor = IDC_WAIT;

struct SystemCursor {
  std::uint32_t id;          // 0 for the terminal's own pointer
  const char* pointerShape;  // X cursor-font name; empty for the terminal's own
};

using HCURSOR = const SystemCursor*;

// The system cursor with that identifier; null for a name the system does not
// have (resource names included: the module ships no cursors).
HCURSOR LoadCursor(CursorName name);

// The current cursor; at first the terminal's own pointer.
HCURSOR GetCursor();

// Makes `cursor` current and shows it on the terminal; returns the previous
// one. A null cursor changes only what GetCursor answers: a terminal pointer
// cannot be hidden everywhere, so the terminal keeps its shape.
HCURSOR SetCursor(HCURSOR cursor);

// Shares the input state of two threads. On a terminal the pointer belongs to
// the terminal, not to a thread, so there is nothing to share: always true.
bool AttachThreadInput(ThreadId from, ThreadId to, bool attach);

}  // namespace vq::ui
