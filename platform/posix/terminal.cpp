// Terminal detection of the standard streams.
#include "vq/platform/terminal.h"

#include <unistd.h>

namespace vq::platform {

bool IsStdinTerminal() { return isatty(STDIN_FILENO) == 1; }
bool IsStdoutTerminal() { return isatty(STDOUT_FILENO) == 1; }
bool IsStderrTerminal() { return isatty(STDERR_FILENO) == 1; }

}  // namespace vq::platform
