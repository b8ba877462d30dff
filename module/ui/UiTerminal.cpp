#include "ui/UiTerminal.h"

#include "vq/platform/environment.h"

namespace vq::ui {

DialogSetting ParseDialogSetting(const std::string& value) {
  static const std::string kTerminalPathPrefix = "tty:";
  DialogSetting setting;
  if (value == "tty") {
    setting.kind = PresenterKind::Terminal;
  } else if (value == "none") {
    setting.kind = PresenterKind::None;
  } else if (value.compare(0, kTerminalPathPrefix.size(), kTerminalPathPrefix) == 0 &&
             value.size() > kTerminalPathPrefix.size()) {
    setting.kind = PresenterKind::Terminal;
    setting.terminalPath = value.substr(kTerminalPathPrefix.size());
  }
  return setting;
}

DialogSetting ReadDialogSetting() {
  return ParseDialogSetting(platform::GetEnv("VQ_DIALOG").value_or(std::string()));
}

bool OpenUiTerminal(const DialogSetting& setting, platform::TerminalDevice* terminal) {
  if (!terminal->Open(setting.terminalPath)) return false;
  if (terminal->IsBackground()) {
    terminal->Close();
    return false;
  }
  return true;
}

}  // namespace vq::ui
