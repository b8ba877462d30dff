#include "ui/Presenter.h"

#include "ui/Dialog.h"
#include "ui/TerminalPresenter.h"
#include "vq/platform/terminal.h"

namespace vq::ui {

void PressDialogButton(Dialog& dialog, std::int32_t id) {
  const auto buttonId = static_cast<std::uint32_t>(id);
  Window* button = dialog.GetDlgItem(buttonId);
  if (button != nullptr) {
    button->SendMessage(BM_CLICK, 0, 0);
  } else {
    dialog.SendMessage(WM_COMMAND, MakeWParam(buttonId, BN_CLICKED), 0);
  }
}

void NonePresenter::RunModalLoop(Dialog& dialog) {
  PressDialogButton(dialog, IDCANCEL);
  // A dialog that refuses Close still has to end: no one is there to answer.
  if (!dialog.IsEnded()) dialog.EndDialog(IDCANCEL);
}

std::unique_ptr<Presenter> ChoosePresenter(const DialogSetting& setting) {
  switch (setting.kind) {
    case PresenterKind::None:
      return std::make_unique<NonePresenter>();
    case PresenterKind::Terminal:
      return std::make_unique<TerminalPresenter>(setting);
    case PresenterKind::Automatic:
      break;
  }
  platform::TerminalDevice terminal;
  if (platform::IsStdinTerminal() && OpenUiTerminal(setting, &terminal)) {
    return std::make_unique<TerminalPresenter>(setting);
  }
  return std::make_unique<NonePresenter>();
}

}  // namespace vq::ui
