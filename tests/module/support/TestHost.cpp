#include "support/TestHost.h"

#include <CLProtocol/CLProtocol.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq::test {

namespace {

const std::string kModulePath = std::string(VQ_BINARY_DIR) + "/lib/libVQGenericCamera.so";

// The module stays loaded for the whole test program, as in a host.
CreateExtensionFunction Factory() {
  static platform::SharedLibrary* library = [] {
    std::string error;
    auto* opened = new platform::SharedLibrary(platform::SharedLibrary::Open(kModulePath, &error));
    if (!opened->IsOpen()) throw std::runtime_error("cannot load the module: " + error);
    return opened;
  }();
  auto create = library->FindFunction<CreateExtensionFunction>(CREATE_EXTENSION_SYMBOL);
  if (create == nullptr) throw std::runtime_error("the module has no CreateExtension");
  return create;
}

}  // namespace

SimulatedLink::SimulatedLink(const sim::Profile& profile)
    : simulator_(profile), port_(simulator_) {}

std::int32_t SimulatedLink::Read(void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) {
  count = static_cast<std::uint32_t>(
      port_.read(static_cast<std::uint8_t*>(buffer), count, timeoutMs));
  return count == 0 ? CL_ERR_TIMEOUT : CL_ERR_NO_ERR;
}

std::int32_t SimulatedLink::Write(const void* buffer, std::uint32_t& count, std::uint32_t) {
  return port_.write(static_cast<const std::uint8_t*>(buffer), count) ? CL_ERR_NO_ERR
                                                                       : CL_ERR_INVALID_PTR;
}

std::int32_t SimulatedLink::SetBaudRate(std::uint32_t baudRateBit) {
  return port_.setBaudRate(baudRateBit) ? CL_ERR_NO_ERR : CL_ERR_BAUD_RATE_NOT_SUPPORTED;
}

VQ_Ext* CreateModuleExtension() { return Factory()(); }

TestHost::TestHost() {
  // A cache directory that does not exist, also when the program runs outside ctest: no cached
  // description or device record of an earlier run shortens an open, and none is written.
  vq::platform::SetEnv("XDG_CACHE_HOME",
                       (std::filesystem::temp_directory_path() / "vq-module-no-cache").string());
  extension_ = CreateModuleExtension();
  if (extension_ == nullptr) throw std::runtime_error("CreateExtension returned null");
  extension_->SetHostCallback(&TestHost::Callback, reinterpret_cast<HostContext>(this));
  extension_->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList());
}

TestHost::~TestHost() { delete extension_; }

std::int32_t TestHost::Open(std::uint32_t portIndex, std::uint32_t alwaysShowSelector,
                            std::uint32_t showSelectorWhenNoMatch, std::uint32_t* status) {
  CommandRecord record{};
  record.openRequest = 0;
  record.portIndex = portIndex;
  record.openStatus = 0xFFFFFFFFu;
  record.alwaysShowSelector = alwaysShowSelector;
  record.showSelectorWhenNoMatch = showSelectorWhenNoMatch;
  const std::int32_t result = extension_->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record);
  if (status != nullptr) *status = record.openStatus;
  return result;
}

std::int32_t TestHost::Close() {
  CommandRecord record{};
  record.openRequest = -1;
  return extension_->ExecuteCommand(CMD_OPEN_CAMERA, &record, sizeof record);
}

std::vector<std::string> TestHost::MessagesOfLevel(std::uint32_t level) const {
  std::vector<std::string> texts;
  for (const HostMessage& message : messages) {
    if (message.level == level) texts.push_back(message.text);
  }
  return texts;
}

void TestHost::ClearRecords() {
  messages.clear();
  notices.clear();
  serialRequests.clear();
  selectorStates.clear();
  probeFailurePorts.clear();
  bytesFromCamera = 0;
}

std::int32_t TestHost::Callback(std::uint32_t code, std::uint32_t detail, void* data,
                                HostContext context) {
  auto* host = reinterpret_cast<TestHost*>(context);
  switch (code) {
    case HOST_MESSAGE:
      host->messages.push_back({detail, data == nullptr ? "" : static_cast<const char*>(data)});
      break;
    case HOST_FEATURE_CHANGED:
      host->notices.push_back(detail);
      break;
    case HOST_SELECTOR_STATE:
      host->selectorStates.push_back(*static_cast<const std::uint32_t*>(data));
      break;
    case HOST_SERIAL_REQUEST:
      host->serialRequests.push_back(detail);
      if (host->refuseEverything) return 0;
      return host->Serve(detail, data);
    default:
      break;
  }
  return host->refuseEverything ? 0 : 1;
}

CameraLink* TestHost::LinkOf(std::uint32_t portIndex) const {
  const auto found = links_.find(portIndex);
  return found == links_.end() ? nullptr : found->second;
}

std::int32_t TestHost::Serve(std::uint32_t request, void* data) {
  if (request == SERIAL_SELECT_PORT) {
    *static_cast<std::uint32_t*>(data) = largestPortIndex;
    return 1;
  }
  auto& record = *static_cast<SerialRequestRecord*>(data);
  switch (request) {
    case SERIAL_QUERY_PORT_INFO: {
      auto& block = *static_cast<PortInformationBlock*>(record.data);
      std::strncpy(block.cameraText, cameraText.c_str(), sizeof block.cameraText - 1);
      block.cameraTextValid = cameraTextValid;
      return portInfoAnswer;
    }
    case SERIAL_IS_PORT_ALIVE:
      return aliveAnswer;
    case SERIAL_REPORT_PROBE_FAILURE:
      probeFailurePorts.push_back(record.portIndex);
      return 1;
    default:
      return ServeTransfer(request, record);
  }
}

std::int32_t TestHost::ServeTransfer(std::uint32_t request, SerialRequestRecord& record) {
  CameraLink* link = LinkOf(record.portIndex);
  if (link == nullptr) {
    record.status = CL_ERR_INVALID_INDEX;
    return 1;
  }
  switch (request) {
    case SERIAL_READ:
      record.status = link->Read(record.data, record.value, record.timeout);
      bytesFromCamera += record.value;
      return 1;
    case SERIAL_WRITE:
      record.status = link->Write(record.data, record.value, record.timeout);
      return 1;
    case SERIAL_GET_BAUD_RATES:
      *static_cast<std::uint32_t*>(record.data) = link->SupportedBaudRates();
      record.status = CL_ERR_NO_ERR;
      return 1;
    case SERIAL_SET_BAUD_RATE:
      record.status = link->SetBaudRate(record.value);
      return 1;
    default:
      return 0;
  }
}

sim::Profile KorvaAreaProfile() {
  return sim::loadProfile(std::string(VQ_SOURCE_DIR) + "/examples/korva-area");
}

sim::Profile ProfileForDescription(const std::string& descriptionText, const std::string& model) {
  sim::Profile profile = KorvaAreaProfile();
  profile.model = model;
  profile.descriptionText = descriptionText;
  profile.descriptionFileName = "Description.xml";
  profile.valuesText.clear();
  profile.saveCommand.clear();
  return profile;
}

}  // namespace vq::test
