// Terminals: whether the standard streams are attached to one, and a terminal
// device opened for an interactive session (raw keys in, screen text out).
#ifndef VQ_PLATFORM_TERMINAL_H
#define VQ_PLATFORM_TERMINAL_H

#include <cstdint>
#include <memory>
#include <string>

#include "vq/platform/device_stream.h"

namespace vq::platform {

bool IsStdinTerminal();
bool IsStdoutTerminal();
bool IsStderrTerminal();

// A terminal device. Reads and writes never block beyond their time-outs (see
// DeviceStream); a hung-up terminal makes them fail.
class TerminalDevice : public DeviceStream {
 public:
  TerminalDevice() noexcept;
  TerminalDevice(TerminalDevice&& other) noexcept;
  TerminalDevice& operator=(TerminalDevice&& other) noexcept;
  ~TerminalDevice();

  // Opens the terminal at `path`, or the process's controlling terminal when
  // the path is empty, without making it the controlling terminal. False with
  // a text when there is no such terminal or the path is not a terminal.
  bool Open(const std::string& path, std::string* error = nullptr);

  // True when this is the process's controlling terminal and the process is
  // not in its foreground process group: reading, writing or changing modes
  // could then stop the process. False for any other terminal.
  bool IsBackground() const;

  // Raw mode: keys arrive byte by byte, unechoed, without signals; output is
  // not translated. The settings it replaced are kept for RestoreMode.
  bool EnterRawMode(std::string* error = nullptr);
  // Puts back the settings EnterRawMode replaced; nothing when not raw.
  void RestoreMode();

  // The window size; false when the terminal does not know it.
  bool GetSize(std::uint32_t* rows, std::uint32_t* columns) const;

  // Restores the mode, then closes.
  void Close();

 private:
  struct SavedMode;
  std::unique_ptr<SavedMode> savedMode_;
};

}  // namespace vq::platform

#endif  // VQ_PLATFORM_TERMINAL_H
