// The camera's serial port as the Camera Link protocol layer sees it. The module
// owns no port: every transfer, baud-rate query and change becomes a serial
// request to the host through the camera's callback (code 22). The adapter also
// loads the camera's protocol driver library to translate parameter names into
// register addresses.
#pragma once

#include <cstdint>
#include <string>

#include "camera/GenICamCalls.h"
#include "vq/platform/shared_library.h"

namespace vq {

class GenericCamera;

// Camera Link status codes the adapter returns itself.
constexpr std::int32_t kSerialRequestRefused = -10007;  // CL_ERR_ERROR_NOT_FOUND
constexpr std::int32_t kLibraryNotLoaded = -10098;      // CL_ERR_UNABLE_TO_LOAD_DLL
constexpr std::int32_t kFunctionNotFound = -10099;      // CL_ERR_FUNCTION_NOT_FOUND

// The driver library's entry: (function, name, name length, result buffer,
// result size, short device ID) -> 0 on success. Function 1 writes the 32-bit
// register address of the named parameter.
using ComPortFunction = std::int32_t (*)(std::int32_t function, const char* name,
                                         std::uint64_t nameLength, void* result,
                                         std::int32_t resultSize, const char* shortDeviceID);
constexpr const char* kComPortEntryName = "vxComPort";

class SerialAdapter : public CLProtocol::ISerialAdapter {
 public:
  explicit SerialAdapter(GenericCamera& owner);
  virtual ~SerialAdapter();
  SerialAdapter(const SerialAdapter&) = delete;
  SerialAdapter& operator=(const SerialAdapter&) = delete;

  // ISerial, in the interface's order: requests 16, 17, 18 and 20.
  CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize,
                                  CLUINT32 serialTimeOut) override;
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize,
                                   CLUINT32 serialTimeOut) override;
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* baudRates) override;
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override;
  // ISerialAdapter: the host opens and closes its ports itself.
  CLINT32 SerialInit() override;
  void SerialClose() override;
  void CheckError(CLINT32 errorCode) override;

  // Request 8: 1 when the host's largest port index admits `index`, which then
  // becomes the adapter's port; 0 otherwise (the previous port stays).
  std::int32_t SelectPort(std::uint32_t index);
  // Request 6: the port's camera text (empty unless the host marks it valid).
  // 1 only when the host answers exactly 1.
  std::int32_t QueryPortInfo(std::uint32_t index, std::uint32_t& portIndex, std::string& cameraText);
  // Request 14: the host's answer; 0 means the camera no longer answers.
  std::int32_t IsPortAlive();

  // 0, kLibraryNotLoaded or kFunctionNotFound.
  std::int32_t LoadDriverLibrary(const char* driverPath);
  void FreeDriverLibrary();
  // The register address behind a parameter name, through the driver's entry.
  std::int32_t TranslateParameterName(const char* name, std::uint32_t& address,
                                      const char* shortDeviceID);

  std::uint32_t PortIndex() const { return portIndex_; }

 private:
  // One code-22 request with the 32-byte record; the host's status, or
  // kSerialRequestRefused when there is no callback or it refuses.
  std::int32_t Request(std::uint32_t request, std::uint32_t value, std::uint32_t timeout,
                       void* data, std::uint32_t* valueOut);

  GenericCamera& owner_;
  ComPortFunction entry_ = nullptr;
  platform::SharedLibrary library_;
  std::uint32_t portIndex_ = 0;
};

}  // namespace vq
