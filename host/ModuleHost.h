// The host side of the module contract: loads the camera extension module with the
// platform's dynamic loader, creates its extension object, and answers its callbacks:
// messages (7), change notices (9), serial requests (22) served from a SerialBackend, and
// the selector's check-box state (26).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "backend/SerialBackend.h"
#include "vq/VQ_Ext.h"
#include "vq/platform/shared_library.h"

namespace vq::host {

struct HostEvents {
  std::function<void(std::uint32_t level, const std::string& text)> message;
  std::function<void(std::uint32_t index)> featureChanged;
  std::function<void()> traffic;  // after every byte transfer
  std::function<void(std::uint32_t state)> selectorState;
};

class ModuleHost {
 public:
  // Throws ConnectionError when the module cannot be loaded or gives no extension object.
  ModuleHost(const std::string& modulePath, SerialBackend& backend, std::string cameraText);
  ~ModuleHost();
  ModuleHost(const ModuleHost&) = delete;
  ModuleHost& operator=(const ModuleHost&) = delete;

  VQ_Ext& extension() { return *extension_; }
  SerialBackend& backend() { return backend_; }
  // The camera text the host reports for the port.
  const std::string& cameraText() const { return cameraText_; }
  HostEvents& events() { return events_; }

  // Opens the camera (command 25); the module's open status (OpenStatus).
  std::uint32_t open(bool alwaysShowSelector);
  void close();

  // Bytes moved over the link so far.
  std::uint64_t bytesMoved() const { return bytesMoved_; }
  // False once several reads in a row came back empty: the camera stopped answering.
  bool cameraAnswering() const { return emptyReads_ < kSilentReads; }
  // The last message the module sent, for failure reports.
  const std::string& lastMessage() const { return lastMessage_; }
  void clearLastMessage() { lastMessage_.clear(); }

 private:
  static std::int32_t Callback(std::uint32_t code, std::uint32_t detail, void* data,
                               HostContext context);
  std::int32_t serve(std::uint32_t request, void* data);
  std::int32_t transfer(std::uint32_t request, SerialRequestRecord& record);

  SerialBackend& backend_;
  std::string cameraText_;
  platform::SharedLibrary library_;
  VQ_Ext* extension_ = nullptr;
  HostEvents events_;
  std::uint64_t bytesMoved_ = 0;
  static constexpr unsigned kSilentReads = 3;
  unsigned emptyReads_ = 0;
  std::string lastMessage_;
};

// The module next to a program: <program's folder>/../lib/libVQGenericCamera.so.
std::string DefaultModulePath();

}  // namespace vq::host
