// A serial adapter over a real (termios) serial device, as a client of CCLPort would write one.
#pragma once

#include <CLProtocol/ISerialAdapter.h>
#include <GenICam.h>

#include <string>

#include "vq/platform/serial_port.h"

namespace clprotocol_test {

class TermiosAdapter : public CLProtocol::ISerialAdapter {
 public:
  explicit TermiosAdapter(std::string devicePath) : path_(std::move(devicePath)) {}

  CLINT32 SerialInit() override {
    ++inits;
    if (port_.IsOpen()) return CL_ERR_NO_ERR;
    return port_.Open(path_) ? CL_ERR_NO_ERR : CL_ERR_UNABLE_TO_OPEN_PORT;
  }
  void SerialClose() override {
    ++closes;
    port_.Close();
  }
  void CheckError(CLINT32 code) override {
    if (code < 0) throw RUNTIME_EXCEPTION("serial error (Code: %d)", code);
  }

  CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 timeout) override {
    if (buffer == nullptr || bufferSize == nullptr) return CL_ERR_INVALID_PTR;
    const int64_t got = port_.Read(buffer, *bufferSize, timeout);
    if (got < 0) return CL_ERR_INVALID_REFERENCE;
    if (got == 0) return CL_ERR_TIMEOUT;
    *bufferSize = static_cast<CLUINT32>(got);
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 timeout) override {
    if (buffer == nullptr || bufferSize == nullptr) return CL_ERR_INVALID_PTR;
    return port_.Write(buffer, *bufferSize, timeout) ? CL_ERR_NO_ERR : CL_ERR_TIMEOUT;
  }
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* baudRates) override {
    if (baudRates == nullptr) return CL_ERR_INVALID_PTR;
    *baudRates = 0;
    for (CLUINT32 bit = 1; bit <= CL_BAUDRATE_921600; bit <<= 1) {
      if (vq::platform::SerialPort::IsSupportedBaudRate(RateOf(bit))) *baudRates |= bit;
    }
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override {
    const uint32_t rate = RateOf(baudRate);
    if (rate == 0 || !port_.SetBaudRate(rate)) return CL_ERR_BAUD_RATE_NOT_SUPPORTED;
    lastRate = baudRate;
    if (baudRate > highestRate) highestRate = baudRate;
    return CL_ERR_NO_ERR;
  }

  static uint32_t RateOf(CLUINT32 bit) {
    static const uint32_t kRates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
    for (int i = 0; i < 8; ++i) {
      if (bit == CLUINT32{1} << i) return kRates[i];
    }
    return 0;
  }

  int inits = 0;
  int closes = 0;
  CLUINT32 lastRate = 0;
  CLUINT32 highestRate = 0;

 private:
  std::string path_;
  vq::platform::SerialPort port_;
};

}  // namespace clprotocol_test
