// How a modal dialog is shown: a presenter runs the dialog's modal loop,
// turning the user's input into window messages until the dialog ends.
#pragma once

#include <cstdint>
#include <memory>

#include "ui/UiTerminal.h"

namespace vq::ui {

class Dialog;

class Presenter {
 public:
  virtual ~Presenter() = default;
  // Returns once the dialog has ended.
  virtual void RunModalLoop(Dialog& dialog) = 0;
};

// No user: the dialog closes as its Close (IDCANCEL) button would.
class NonePresenter : public Presenter {
 public:
  void RunModalLoop(Dialog& dialog) override;
};

// The presenter for a setting (see UiTerminal.h): the terminal presenter, or
// none.
std::unique_ptr<Presenter> ChoosePresenter(const DialogSetting& setting);

// Presses a dialog button as a click would (BM_CLICK); without such a button
// the dialog gets the button's BN_CLICKED directly.
void PressDialogButton(Dialog& dialog, std::int32_t id);

}  // namespace vq::ui
