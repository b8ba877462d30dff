// Whether the standard streams are attached to a terminal.
#ifndef VQ_PLATFORM_TERMINAL_H
#define VQ_PLATFORM_TERMINAL_H

namespace vq::platform {

bool IsStdinTerminal();
bool IsStdoutTerminal();
bool IsStderrTerminal();

}  // namespace vq::platform

#endif  // VQ_PLATFORM_TERMINAL_H
