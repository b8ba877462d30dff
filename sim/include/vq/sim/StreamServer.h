// Serving a simulator over a byte stream: a pseudo-terminal master or standard
// input/output.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "vq/sim/Simulator.h"

namespace vq::platform {
class PseudoTerminal;
}

namespace vq::sim {

// A bidirectional byte stream the server reads from and writes to.
class ByteChannel {
 public:
  virtual ~ByteChannel() = default;
  // Waits at most `timeoutMs` for input; returns the bytes read, 0 on time-out, -1 when the
  // stream ended or failed (`error` says which).
  virtual int64_t readSome(uint8_t* buffer, std::size_t size, uint32_t timeoutMs,
                           std::string& error) = 0;
  virtual bool write(const uint8_t* data, std::size_t size, std::string& error) = 0;
  // The baud-rate bit the host side uses, 0 when the channel cannot tell (the camera's rate
  // is then assumed).
  virtual uint32_t hostBaudRate() const { return 0; }
};

struct ServeOptions {
  // Hold every byte for its time on the line at the current baud rate.
  bool pace = false;
  // Serving stops soon after this becomes true (may be null).
  const std::atomic<bool>* stop = nullptr;
  // Called after every round of the serving loop (may be empty).
  std::function<void(Simulator&)> afterRound;
};

// Serves until `options.stop` is set or the channel ends. Returns an empty string after a
// requested stop, otherwise the reason the stream ended.
std::string serve(Simulator& simulator, ByteChannel& channel, const ServeOptions& options);

// Channel over a pseudo-terminal master. The rate the client sets on the slave side is the
// host's rate: bytes sent while it differs from the camera's arrive garbled, as on a wire.
class PseudoTerminalChannel : public ByteChannel {
 public:
  explicit PseudoTerminalChannel(platform::PseudoTerminal& terminal) : terminal_(terminal) {}
  int64_t readSome(uint8_t* buffer, std::size_t size, uint32_t timeoutMs,
                   std::string& error) override;
  bool write(const uint8_t* data, std::size_t size, std::string& error) override;
  uint32_t hostBaudRate() const override;

 private:
  platform::PseudoTerminal& terminal_;
};

// Channel over standard input and output; input ends at end of file.
class StdioChannel : public ByteChannel {
 public:
  StdioChannel();
  ~StdioChannel() override;
  int64_t readSome(uint8_t* buffer, std::size_t size, uint32_t timeoutMs,
                   std::string& error) override;
  bool write(const uint8_t* data, std::size_t size, std::string& error) override;

  struct State;

 private:
  State* state_;
};

// Starts a background reader that sets `flag` when standard input reaches end of file.
void watchStdinForEof(std::atomic<bool>& flag);

}  // namespace vq::sim
