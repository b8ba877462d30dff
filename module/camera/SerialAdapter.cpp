#include "camera/SerialAdapter.h"

#include <cstring>

#include "camera/GenericCamera.h"

namespace vq {

SerialAdapter::SerialAdapter(GenericCamera& owner) : owner_(owner) {}

SerialAdapter::~SerialAdapter() = default;

std::int32_t SerialAdapter::Request(std::uint32_t request, std::uint32_t value,
                                    std::uint32_t timeout, void* data, std::uint32_t* valueOut) {
  SerialRequestRecord record{};
  record.portIndex = portIndex_;
  record.timeout = timeout;
  record.value = value;
  record.data = data;
  if (owner_.hostCallback == nullptr) return kSerialRequestRefused;
  if (owner_.hostCallback(HOST_SERIAL_REQUEST, request, &record, owner_.hostContext) == 0) {
    return kSerialRequestRefused;
  }
  if (valueOut != nullptr) *valueOut = record.value;
  return record.status;
}

CLINT32 SerialAdapter::clSerialRead(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 serialTimeOut) {
  if (bufferSize == nullptr) return kSerialRequestRefused;
  return Request(SERIAL_READ, *bufferSize, serialTimeOut, buffer, bufferSize);
}

CLINT32 SerialAdapter::clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize,
                                     CLUINT32 serialTimeOut) {
  if (bufferSize == nullptr) return kSerialRequestRefused;
  return Request(SERIAL_WRITE, *bufferSize, serialTimeOut, buffer, bufferSize);
}

CLINT32 SerialAdapter::clGetSupportedBaudRates(CLUINT32* baudRates) {
  return Request(SERIAL_GET_BAUD_RATES, 0, 0, baudRates, nullptr);
}

CLINT32 SerialAdapter::clSetBaudRate(CLUINT32 baudRate) {
  return Request(SERIAL_SET_BAUD_RATE, baudRate, 0, nullptr, nullptr);
}

CLINT32 SerialAdapter::SerialInit() { return 0; }
void SerialAdapter::SerialClose() {}
void SerialAdapter::CheckError(CLINT32) {}

std::int32_t SerialAdapter::SelectPort(std::uint32_t index) {
  std::uint32_t largestIndex = 0;
  if (owner_.hostCallback == nullptr) return 0;
  if (owner_.hostCallback(HOST_SERIAL_REQUEST, SERIAL_SELECT_PORT, &largestIndex,
                          owner_.hostContext) == 0) {
    return 0;
  }
  if (index > largestIndex) return 0;
  portIndex_ = index;
  return 1;
}

std::int32_t SerialAdapter::QueryPortInfo(std::uint32_t index, std::uint32_t& portIndex,
                                          std::string& cameraText) {
  if (owner_.hostCallback == nullptr) return 0;
  // Large block: kept off the stack of the host's thread.
  auto block = std::make_unique<PortInformationBlock>();
  std::memset(block.get(), 0, sizeof(PortInformationBlock));
  SerialRequestRecord record{};
  record.portIndex = portIndex_;
  record.value = index;
  record.data = block.get();
  if (owner_.hostCallback(HOST_SERIAL_REQUEST, SERIAL_QUERY_PORT_INFO, &record,
                          owner_.hostContext) != 1) {
    return 0;
  }
  portIndex = index;
  if (block->cameraTextValid == 1) {
    // The host's text is NUL-terminated; a host that fills the whole field
    // still gets no more than the field holds.
    cameraText.assign(block->cameraText, strnlen(block->cameraText, sizeof block->cameraText));
  } else {
    cameraText.clear();
  }
  return 1;
}

std::int32_t SerialAdapter::IsPortAlive() {
  if (owner_.hostCallback == nullptr) return 0;
  SerialRequestRecord record{};
  record.portIndex = portIndex_;
  return owner_.hostCallback(HOST_SERIAL_REQUEST, SERIAL_IS_PORT_ALIVE, &record,
                             owner_.hostContext);
}

std::int32_t SerialAdapter::LoadDriverLibrary(const char* driverPath) {
  FreeDriverLibrary();
  library_ = platform::SharedLibrary::Open(driverPath == nullptr ? "" : driverPath);
  if (!library_.IsOpen()) return kLibraryNotLoaded;
  entry_ = library_.FindFunction<ComPortFunction>(kComPortEntryName);
  if (entry_ == nullptr) return kFunctionNotFound;
  return 0;
}

void SerialAdapter::FreeDriverLibrary() {
  entry_ = nullptr;
  library_.Close();
}

std::int32_t SerialAdapter::TranslateParameterName(const char* name, std::uint32_t& address,
                                                   const char* shortDeviceID) {
  if (entry_ == nullptr || name == nullptr) return 0;
  std::uint32_t result = 0;
  const std::int32_t status =
      entry_(1, name, std::strlen(name), &result, sizeof result,
             shortDeviceID == nullptr ? "" : shortDeviceID);
  if (status != 0) return 0;
  address = result;
  return 1;
}

}  // namespace vq
