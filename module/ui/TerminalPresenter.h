// The terminal presenter: shows a modal dialog on a terminal in raw mode, on
// the terminal's alternate screen, redrawn after every key (layout in
// TerminalLayout.h). Keys:
//   digits        select the tree leaf with that number (digits typed one after
//                 the other make one number while such a leaf exists)
//   Up/Down, k/j  move the selection over every tree item
//   Space         click the check box
//   Enter         click the default push button
//   a letter      click the push button whose text starts with it ("l" Load,
//                 "c" Close)
//   q, Esc, Ctrl-C, Ctrl-D
//                 click the Cancel button (Close)
// Every click arrives at its control as a left-button press and release, so
// the control's own message handling decides what it does. End of input, a
// hung-up terminal or a terminal that cannot be opened closes the dialog as
// Close would. The terminal's mode is restored on every way out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "ui/Presenter.h"
#include "vq/platform/terminal.h"

namespace vq::ui {

class Window;

class TerminalPresenter : public Presenter {
 public:
  explicit TerminalPresenter(DialogSetting setting) : setting_(std::move(setting)) {}
  void RunModalLoop(Dialog& dialog) override;

 private:
  enum class KeyKind { Character, Up, Down, Escape, Closed };
  struct Key {
    KeyKind kind;
    char character;
  };

  Key ReadKey(platform::TerminalDevice& terminal);
  void Draw(platform::TerminalDevice& terminal, Dialog& dialog);
  void HandleKey(const Key& key, Dialog& dialog);
  void SelectLeafByDigit(int digit, Dialog& dialog);
  void MoveSelection(int step, Dialog& dialog);

  DialogSetting setting_;
  std::uint32_t typedNumber_ = 0;
  std::size_t treeFirstRow_ = 0;
};

// A left-button press and release in the middle of the control.
void ClickControl(Window& control);

}  // namespace vq::ui
