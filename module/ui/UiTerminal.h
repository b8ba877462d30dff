// Which terminal the module's user interface uses, from the variable
// VQ_DIALOG:
//   tty          the terminal presenter on the controlling terminal (the busy
//                pointer goes to the controlling terminal in every form but
//                none and tty:PATH)
//   tty:PATH     the terminal presenter on the terminal device PATH (for
//                instance a pseudo-terminal's /dev/pts/N); the busy pointer
//                goes there too
//   none         no terminal user interface: dialogs close as their Close
//                button would, the busy pointer is not shown
//   unset/other  automatic: the terminal presenter when the controlling
//                terminal can be opened, the process is in its foreground and
//                standard input is a terminal; otherwise none, so that a
//                script never waits for keys
#pragma once

#include <string>

#include "vq/platform/terminal.h"

namespace vq::ui {

enum class PresenterKind { Automatic, Terminal, None };

struct DialogSetting {
  PresenterKind kind = PresenterKind::Automatic;
  std::string terminalPath;  // empty: the controlling terminal
};

DialogSetting ParseDialogSetting(const std::string& value);
DialogSetting ReadDialogSetting();

// Opens the terminal the setting names. The controlling terminal is only
// taken while this process is in its foreground, so that using it can never
// stop the process. False when there is none.
bool OpenUiTerminal(const DialogSetting& setting, platform::TerminalDevice* terminal);

}  // namespace vq::ui
