#include "ui/Cursor.h"

#include <atomic>
#include <string>

#include "ui/UiTerminal.h"

namespace vq::ui {

namespace {

// The predefined cursors and the X cursor-font shapes that show them.
constexpr SystemCursor kSystemCursors[] = {
    {32512, "left_ptr"},             // arrow
    {32513, "xterm"},                // I-beam
    {32514, "watch"},                // wait
    {32515, "crosshair"},            // cross
    {32516, "sb_up_arrow"},          // up arrow
    {32642, "bottom_right_corner"},  // size north-west to south-east
    {32643, "bottom_left_corner"},   // size north-east to south-west
    {32644, "sb_h_double_arrow"},    // size west to east
    {32645, "sb_v_double_arrow"},    // size north to south
    {32646, "fleur"},                // size all
    {32648, "circle"},               // not allowed
    {32649, "hand2"},                // hand
    {32650, "watch"},                // application starting
    {32651, "question_arrow"},       // help
};

// The terminal's own pointer: an empty shape name asks the terminal for its
// default.
constexpr SystemCursor kTerminalPointer{0, ""};

std::atomic<HCURSOR> currentCursor{&kTerminalPointer};

constexpr std::uint32_t kPointerWriteTimeoutMs = 200;

void ShowPointerShape(const char* shape) {
  const DialogSetting setting = ReadDialogSetting();
  platform::TerminalDevice terminal;
  if (setting.kind == PresenterKind::None || !OpenUiTerminal(setting, &terminal)) return;
  const std::string sequence = std::string("\x1b]22;") + shape + "\x1b\\";
  terminal.Write(sequence.data(), sequence.size(), kPointerWriteTimeoutMs);
}

}  // namespace

HCURSOR LoadCursor(CursorName name) {
  if (name.name != nullptr) return nullptr;
  for (const SystemCursor& cursor : kSystemCursors) {
    if (cursor.id == name.id) return &cursor;
  }
  return nullptr;
}

HCURSOR GetCursor() { return currentCursor.load(); }

HCURSOR SetCursor(HCURSOR cursor) {
  const HCURSOR previous = currentCursor.exchange(cursor);
  if (cursor != nullptr) ShowPointerShape(cursor->pointerShape);
  return previous;
}

bool AttachThreadInput(ThreadId, ThreadId, bool) { return true; }

}  // namespace vq::ui
