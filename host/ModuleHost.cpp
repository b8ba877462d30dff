#include "ModuleHost.h"

#include <cstring>

namespace vq::host {

std::string DefaultModulePath() {
  return platform::DirectoryOf(platform::GetExecutablePath()) + "/../lib/libVQGenericCamera.so";
}

ModuleHost::ModuleHost(const std::string& modulePath, SerialBackend& backend,
                       std::string cameraText)
    : backend_(backend), cameraText_(std::move(cameraText)) {
  std::string error;
  library_ = platform::SharedLibrary::Open(modulePath, &error);
  if (!library_) {
    throw ConnectionError("cannot load the camera module " + modulePath + ": " + error +
                          "; give its path with --module");
  }
  auto create = library_.FindFunction<CreateExtensionFunction>(CREATE_EXTENSION_SYMBOL, &error);
  if (create == nullptr) {
    throw ConnectionError(modulePath + " is not a camera extension module (no " +
                          CREATE_EXTENSION_SYMBOL + "); give the right path with --module");
  }
  extension_ = create();
  if (extension_ == nullptr) throw ConnectionError("the camera module gave no extension object");
  extension_->SetHostCallback(&ModuleHost::Callback, reinterpret_cast<HostContext>(this));
  extension_->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList());
}

ModuleHost::~ModuleHost() {
  // The extension's code lives in the library: destroy it before the library goes.
  delete extension_;
}

std::uint32_t ModuleHost::open(bool alwaysShowSelector) {
  CommandRecord record{};
  record.openRequest = 0;
  record.portIndex = backend_.portIndex();
  record.openStatus = OPEN_FAILED;  // stays so if the module does not answer the request
  record.alwaysShowSelector = alwaysShowSelector ? 1 : 0;
  record.showSelectorWhenNoMatch = 1;
  extension_->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof(record));
  return record.openStatus;
}

void ModuleHost::close() {
  CommandRecord record{};
  record.openRequest = -1;
  extension_->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof(record));
}

std::int32_t ModuleHost::Callback(std::uint32_t code, std::uint32_t detail, void* data,
                                  HostContext context) {
  auto* host = reinterpret_cast<ModuleHost*>(context);
  if (host == nullptr) return 0;
  switch (code) {
    case HOST_MESSAGE: {
      const std::string text = data != nullptr ? static_cast<const char*>(data) : "";
      host->lastMessage_ = text;
      if (host->events_.message) host->events_.message(detail, text);
      return 1;
    }
    case HOST_FEATURE_CHANGED:
      if (host->events_.featureChanged) host->events_.featureChanged(detail);
      return 1;
    case HOST_SERIAL_REQUEST:
      return data != nullptr ? host->serve(detail, data) : 0;
    case HOST_SELECTOR_STATE:
      if (data != nullptr && host->events_.selectorState) {
        host->events_.selectorState(*static_cast<const std::uint32_t*>(data));
      }
      return 1;
    default:
      return 0;
  }
}

std::int32_t ModuleHost::serve(std::uint32_t request, void* data) {
  if (request == SERIAL_SELECT_PORT) {
    *static_cast<std::uint32_t*>(data) = backend_.lastPortIndex();
    return 1;
  }
  auto& record = *static_cast<SerialRequestRecord*>(data);
  switch (request) {
    case SERIAL_QUERY_PORT_INFO: {
      if (record.data == nullptr || record.value != backend_.portIndex()) return 0;
      auto& block = *static_cast<PortInformationBlock*>(record.data);
      std::memset(&block, 0, sizeof(block));
      std::strncpy(block.hostTexts, ("vqcam: " + backend_.describe()).c_str(),
                   sizeof(block.hostTexts) - 1);
      std::strncpy(block.cameraText, cameraText_.c_str(), sizeof(block.cameraText) - 1);
      block.cameraTextValid = cameraText_.empty() ? 0 : 1;
      return 1;
    }
    case SERIAL_IS_PORT_ALIVE:
      return cameraAnswering() ? 1 : 0;
    case SERIAL_READ:
    case SERIAL_WRITE:
      return transfer(request, record);
    case SERIAL_GET_BAUD_RATES:
      if (record.data == nullptr) return 0;
      *static_cast<std::uint32_t*>(record.data) = backend_.supportedBaudRates();
      record.status = kClOk;
      return 1;
    case SERIAL_SET_BAUD_RATE:
      record.status = backend_.setBaudRate(record.value);
      return 1;
    case SERIAL_REPORT_PROBE_FAILURE:
      return 1;
    default:
      return 0;
  }
}

std::int32_t ModuleHost::transfer(std::uint32_t request, SerialRequestRecord& record) {
  if (record.data == nullptr && record.value != 0) return 0;
  auto* bytes = static_cast<std::uint8_t*>(record.data);
  std::uint32_t count = record.value;
  if (request == SERIAL_READ) {
    record.status = backend_.read(bytes, count, record.timeout);
    // Protocols drain the line with reads that may come back empty; several empty reads in
    // a row mean the camera fell silent, and any byte means it answers again.
    if (count > 0) {
      emptyReads_ = 0;
    } else if (record.status != kClOk) {
      ++emptyReads_;
    }
  } else {
    record.status = backend_.write(bytes, count, record.timeout);
  }
  record.value = count;
  bytesMoved_ += count;
  if (events_.traffic) events_.traffic();
  return 1;
}

}  // namespace vq::host
