// Pseudo-terminal pairs: this object owns the master side; clients open the
// slave path (for instance with SerialPort) as if it were a serial device.
#ifndef VQ_PLATFORM_PSEUDO_TERMINAL_H
#define VQ_PLATFORM_PSEUDO_TERMINAL_H

#include <cstdint>
#include <string>

#include "vq/platform/device_stream.h"

namespace vq::platform {

class PseudoTerminal : public DeviceStream {
 public:
  PseudoTerminal() noexcept = default;
  PseudoTerminal(PseudoTerminal&& other) noexcept;
  PseudoTerminal& operator=(PseudoTerminal&& other) noexcept;
  ~PseudoTerminal();

  // Creates a pair with both sides raw. The pair keeps its own handle on the
  // slave so that the master reads time-outs (not errors) while no client has
  // the slave open, and clients may come and go.
  bool Open(std::string* error = nullptr);

  // e.g. "/dev/pts/5"; empty when not open.
  const std::string& SlavePath() const { return slavePath_; }

  // Line speed the client last set on the slave side (bits per second), 0 when unknown.
  // A pseudo-terminal carries bytes at any speed; this only tells what the client asked for.
  std::uint32_t SlaveBaudRate() const;

  // Closes both sides.
  void Close();

 private:
  std::intptr_t slaveHandle_ = -1;
  std::string slavePath_;
};

}  // namespace vq::platform

#endif  // VQ_PLATFORM_PSEUDO_TERMINAL_H
