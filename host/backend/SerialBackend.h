// One serial line to one camera, as the host serves it to the module: byte transfers with
// time-outs and Camera Link baud-rate bits. Every operation returns a Camera Link status.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "vq/clser/ClSerial.h"

namespace vq::host {

// Camera Link serial status codes the backends use.
enum ClStatus : std::int32_t {
  kClOk = CL_ERR_NO_ERR,
  kClTimeout = CL_ERR_TIMEOUT,
  kClInvalidReference = CL_ERR_INVALID_REFERENCE,
  kClBaudRateNotSupported = CL_ERR_BAUD_RATE_NOT_SUPPORTED,
};

// A connection that cannot be made; the text says what went wrong and what to do.
class ConnectionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SerialBackend {
 public:
  virtual ~SerialBackend() = default;

  // Where the line goes, for messages ("simulated camera KORVA A2040M", "/dev/ttyUSB0").
  virtual std::string describe() const = 0;
  // The port's index among the ports of its kind, and the highest index there is.
  virtual std::uint32_t portIndex() const { return 0; }
  virtual std::uint32_t lastPortIndex() const { return 0; }

  // Reads `count` bytes unless `timeoutMs` passes first; `count` comes back as the number
  // of bytes read. kClTimeout when fewer arrived.
  virtual std::int32_t read(std::uint8_t* data, std::uint32_t& count, std::uint32_t timeoutMs) = 0;
  // Sends `count` bytes; `count` comes back as the number sent.
  virtual std::int32_t write(const std::uint8_t* data, std::uint32_t& count,
                             std::uint32_t timeoutMs) = 0;

  // Rates the port offers and the current one, as Camera Link baud-rate bits.
  virtual std::uint32_t supportedBaudRates() const = 0;
  virtual std::int32_t setBaudRate(std::uint32_t rateBit) = 0;
  virtual std::uint32_t baudRate() const = 0;

  // What the host reports as the camera on this port when the user names none (empty for
  // none), and the camera's description text when the backend knows it (the simulator).
  virtual std::string defaultCameraText() const { return std::string(); }
  virtual std::string knownDescription() const { return std::string(); }

  // The last transfer failure in words (empty when none), for the user's message.
  const std::string& lastError() const { return lastError_; }

 protected:
  std::string lastError_;
};

// Baud-rate bits and their rates: 1 = 9600 ... 128 = 921600; 0 for anything else.
std::uint32_t BaudRateOfBit(std::uint32_t rateBit);
std::uint32_t BitOfBaudRate(std::uint32_t baudRate);

}  // namespace vq::host
