// A port of a Camera Link serial library (a frame grabber's clser*.so), loaded at run time
// and driven through the standard's clSerial* functions.
#pragma once

#include <string>

#include "backend/SerialBackend.h"
#include "vq/clser/ClSerial.h"
#include "vq/platform/shared_library.h"

namespace vq::host {

class ClSerialBackend : public SerialBackend {
 public:
  // Loads `library`, checks that it has every function and opens port `index`. Throws
  // ConnectionError otherwise.
  ClSerialBackend(const std::string& library, std::uint32_t index);
  ~ClSerialBackend() override;
  ClSerialBackend(const ClSerialBackend&) = delete;
  ClSerialBackend& operator=(const ClSerialBackend&) = delete;

  std::string describe() const override;
  std::uint32_t portIndex() const override { return index_; }
  std::uint32_t lastPortIndex() const override { return portCount_ - 1; }
  std::int32_t read(std::uint8_t* data, std::uint32_t& count, std::uint32_t timeoutMs) override;
  std::int32_t write(const std::uint8_t* data, std::uint32_t& count,
                     std::uint32_t timeoutMs) override;
  std::uint32_t supportedBaudRates() const override;
  std::int32_t setBaudRate(std::uint32_t rateBit) override;
  std::uint32_t baudRate() const override { return baudRate_; }

  // "LIB[:INDEX]" split into the library and the port index (0 when absent). False when
  // the index is not a number.
  static bool ParseLibraryArgument(const std::string& argument, std::string& library,
                                   std::uint32_t& index);

 private:
  template <typename Function>
  void bind(Function& function, const char* name);
  std::string errorText(CLINT32 status) const;
  void remember(const char* operation, CLINT32 status);

  platform::SharedLibrary library_;
  std::uint32_t index_ = 0;
  std::uint32_t portCount_ = 0;
  std::uint32_t baudRate_ = 1;  // ports start at 9600 baud
  hSerRef ref_ = nullptr;

  clser::ClSerialInitFn init_ = nullptr;
  clser::ClSerialReadFn read_ = nullptr;
  clser::ClSerialWriteFn write_ = nullptr;
  clser::ClSerialCloseFn close_ = nullptr;
  clser::ClGetNumSerialPortsFn portCountFn_ = nullptr;
  clser::ClGetSupportedBaudRatesFn supported_ = nullptr;
  clser::ClSetBaudRateFn setBaud_ = nullptr;
  clser::ClFlushPortFn flush_ = nullptr;
  clser::ClGetErrorTextFn errorText_ = nullptr;
};

}  // namespace vq::host
