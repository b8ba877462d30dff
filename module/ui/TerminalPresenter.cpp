#include "ui/TerminalPresenter.h"

#include <vector>

#include "ui/Button.h"
#include "ui/Dialog.h"
#include "ui/TerminalLayout.h"
#include "ui/TreeControl.h"

namespace vq::ui {

namespace {

constexpr char kEscape = '\x1b';
constexpr char kCtrlC = '\x03';
constexpr char kCtrlD = '\x04';
constexpr std::uint32_t kKeyWaitMs = 1000;
// How long the rest of an arrow key's sequence may take after its Escape.
constexpr std::uint32_t kSequenceWaitMs = 50;
constexpr std::uint32_t kScreenWriteTimeoutMs = 2000;
constexpr const char* kEnterScreen = "\x1b[?1049h\x1b[?25l";
constexpr const char* kLeaveScreen = "\x1b[?25h\x1b[?1049l";
constexpr const char* kClearScreen = "\x1b[H\x1b[2J";

void WriteText(platform::TerminalDevice& terminal, const std::string& text) {
  terminal.Write(text.data(), text.size(), kScreenWriteTimeoutMs);
}

// The alternate screen and raw mode for the session, given back on every way
// out.
struct ScreenSession {
  platform::TerminalDevice& terminal;
  explicit ScreenSession(platform::TerminalDevice& device) : terminal(device) {
    WriteText(terminal, kEnterScreen);
  }
  ~ScreenSession() {
    WriteText(terminal, kLeaveScreen);
    terminal.RestoreMode();
  }
};

TreeControl* FindTree(Dialog& dialog) {
  const DialogResource& dialogTemplate = *dialog.Template();
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    if (auto* tree = dynamic_cast<TreeControl*>(dialog.GetDlgItem(dialogTemplate.items[i].id))) {
      return tree;
    }
  }
  return nullptr;
}

// The first control of the template whose template style passes `wanted`.
Window* FindButton(Dialog& dialog, bool (*wanted)(const DialogItemResource&)) {
  const DialogResource& dialogTemplate = *dialog.Template();
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    const DialogItemResource& item = dialogTemplate.items[i];
    if (std::string(item.windowClass) == "button" && wanted(item))
      return dialog.GetDlgItem(item.id);
  }
  return nullptr;
}

bool IsCheckBoxItem(const DialogItemResource& item) {
  const std::uint32_t type = item.style & BS_TYPEMASK;
  return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX;
}

bool IsDefaultButtonItem(const DialogItemResource& item) {
  return (item.style & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
}

// The push button whose hot key is `key`, or null.
Window* FindButtonForKey(Dialog& dialog, char key) {
  const DialogResource& dialogTemplate = *dialog.Template();
  for (std::uint32_t i = 0; i < dialogTemplate.itemCount; ++i) {
    const DialogItemResource& item = dialogTemplate.items[i];
    const std::uint32_t type = item.style & BS_TYPEMASK;
    if (std::string(item.windowClass) == "button" &&
        (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON) && ButtonHotKey(item.text) == key) {
      return dialog.GetDlgItem(item.id);
    }
  }
  return nullptr;
}

}  // namespace

void ClickControl(Window& control) {
  const Rect client = control.GetClientRect();
  const LPARAM point =
      static_cast<LPARAM>(MakeWParam(static_cast<std::uint32_t>(client.Width() / 2),
                                     static_cast<std::uint32_t>(client.Height() / 2)));
  control.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, point);
  control.SendMessage(WM_LBUTTONUP, 0, point);
}

void TerminalPresenter::RunModalLoop(Dialog& dialog) {
  platform::TerminalDevice terminal;
  if (!OpenUiTerminal(setting_, &terminal) || !terminal.EnterRawMode()) {
    NonePresenter().RunModalLoop(dialog);
    return;
  }
  ScreenSession session(terminal);
  while (!dialog.IsEnded()) {
    Draw(terminal, dialog);
    const Key key = ReadKey(terminal);
    if (key.kind == KeyKind::Closed) {
      NonePresenter().RunModalLoop(dialog);
      break;
    }
    HandleKey(key, dialog);
  }
}

TerminalPresenter::Key TerminalPresenter::ReadKey(platform::TerminalDevice& terminal) {
  char byte = 0;
  std::int64_t count = 0;
  while ((count = terminal.ReadSome(&byte, 1, kKeyWaitMs)) == 0) {
  }
  if (count < 0) return Key{KeyKind::Closed, 0};
  if (byte != kEscape) return Key{KeyKind::Character, byte};
  if (terminal.ReadSome(&byte, 1, kSequenceWaitMs) != 1) return Key{KeyKind::Escape, 0};
  if (byte != '[' && byte != 'O') return Key{KeyKind::Escape, 0};
  // A control sequence: parameters, then a final byte from '@' to '~'.
  while (terminal.ReadSome(&byte, 1, kSequenceWaitMs) == 1) {
    if (byte >= '@' && byte <= '~') break;
  }
  if (byte == 'A') return Key{KeyKind::Up, 0};
  if (byte == 'B') return Key{KeyKind::Down, 0};
  return Key{KeyKind::Character, 0};
}

void TerminalPresenter::Draw(platform::TerminalDevice& terminal, Dialog& dialog) {
  std::size_t treeRowsShown = 0;
  std::uint32_t screenRows = 0;
  TreeControl* tree = FindTree(dialog);
  if (tree != nullptr && terminal.GetSize(&screenRows, nullptr)) {
    // Keep the selected item inside the rows that fit on the screen.
    const std::size_t otherLines = CountNonTreeLines(dialog);
    treeRowsShown = screenRows > otherLines + 3 ? screenRows - otherLines : 3;
    const std::vector<TreeRow> rows = ListTreeRows(*tree);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].item != tree->GetSelectedItem()) continue;
      if (i < treeFirstRow_) treeFirstRow_ = i;
      if (i >= treeFirstRow_ + treeRowsShown) treeFirstRow_ = i + 1 - treeRowsShown;
    }
  }
  std::string screen = kClearScreen;
  for (const std::string& line : LayoutDialog(dialog, treeFirstRow_, treeRowsShown)) {
    screen += line + "\r\n";
  }
  WriteText(terminal, screen);
}

void TerminalPresenter::HandleKey(const Key& key, Dialog& dialog) {
  const char ch = key.character;
  const bool digit = key.kind == KeyKind::Character && ch >= '0' && ch <= '9';
  if (!digit) typedNumber_ = 0;
  if (key.kind == KeyKind::Up || (key.kind == KeyKind::Character && ch == 'k')) {
    MoveSelection(-1, dialog);
  } else if (key.kind == KeyKind::Down || (key.kind == KeyKind::Character && ch == 'j')) {
    MoveSelection(1, dialog);
  } else if (key.kind == KeyKind::Escape || ch == 'q' || ch == kCtrlC || ch == kCtrlD) {
    PressDialogButton(dialog, IDCANCEL);
  } else if (digit) {
    SelectLeafByDigit(ch - '0', dialog);
  } else if (ch == ' ') {
    if (Window* checkBox = FindButton(dialog, &IsCheckBoxItem)) ClickControl(*checkBox);
  } else if (ch == '\r' || ch == '\n') {
    Window* button = FindButton(dialog, &IsDefaultButtonItem);
    if (button != nullptr) {
      ClickControl(*button);
    } else {
      PressDialogButton(dialog, IDOK);
    }
  } else if (Window* button = FindButtonForKey(dialog, ch); button != nullptr && ch != '\0') {
    ClickControl(*button);
  }
}

void TerminalPresenter::SelectLeafByDigit(int digit, Dialog& dialog) {
  TreeControl* tree = FindTree(dialog);
  if (tree == nullptr) return;
  const std::vector<TreeRow> rows = ListTreeRows(*tree);
  auto selectLeaf = [&](std::uint32_t number) {
    for (const TreeRow& row : rows) {
      if (number != 0 && row.leafNumber == number) return tree->SelectItem(row.item);
    }
    return false;
  };
  const std::uint32_t longer = typedNumber_ * 10 + static_cast<std::uint32_t>(digit);
  if (typedNumber_ != 0 && longer < 1000000 && selectLeaf(longer)) {
    typedNumber_ = longer;
  } else if (selectLeaf(static_cast<std::uint32_t>(digit))) {
    typedNumber_ = static_cast<std::uint32_t>(digit);
  } else {
    typedNumber_ = 0;
  }
}

void TerminalPresenter::MoveSelection(int step, Dialog& dialog) {
  TreeControl* tree = FindTree(dialog);
  if (tree == nullptr) return;
  const std::vector<TreeRow> rows = ListTreeRows(*tree);
  if (rows.empty()) return;
  std::size_t index = step > 0 ? 0 : rows.size() - 1;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].item != tree->GetSelectedItem()) continue;
    index = i;
    if (step > 0 && i + 1 < rows.size()) index = i + 1;
    if (step < 0 && i > 0) index = i - 1;
  }
  tree->SelectItem(rows[index].item);
}

}  // namespace vq::ui
