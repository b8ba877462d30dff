// A host for tests, as a third-party host is built: it loads the module with
// the platform's dynamic loader, creates the extension through the exported
// factory and answers the module's callback. Serial requests are served from
// the camera link attached to the requested port index; everything the module
// sends is recorded.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vq/VQ_Ext.h"
#include "vq/sim/InProcessPort.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace vq::test {

// One camera on one of the host's serial ports. Results are Camera Link codes.
class CameraLink {
 public:
  virtual ~CameraLink() = default;
  virtual std::int32_t Read(void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) = 0;
  virtual std::int32_t Write(const void* buffer, std::uint32_t& count,
                             std::uint32_t timeoutMs) = 0;
  virtual std::uint32_t SupportedBaudRates() = 0;
  virtual std::int32_t SetBaudRate(std::uint32_t baudRateBit) = 0;
};

// A simulated camera in this process; time is simulated.
class SimulatedLink : public CameraLink {
 public:
  explicit SimulatedLink(const sim::Profile& profile);
  std::int32_t Read(void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) override;
  std::int32_t Write(const void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) override;
  std::uint32_t SupportedBaudRates() override { return sim::InProcessPort::supportedBaudRates(); }
  std::int32_t SetBaudRate(std::uint32_t baudRateBit) override;
  sim::Simulator& simulator() { return simulator_; }

 private:
  sim::Simulator simulator_;
  sim::InProcessPort port_;
};

struct HostMessage {
  std::uint32_t level;
  std::string text;
};

class TestHost {
 public:
  // Loads the module (once per process), creates an extension, registers the
  // callback and creates the camera.
  TestHost();
  ~TestHost();
  TestHost(const TestHost&) = delete;
  TestHost& operator=(const TestHost&) = delete;

  VQ_Ext& Extension() { return *extension_; }
  void Attach(std::uint32_t portIndex, CameraLink* link) { links_[portIndex] = link; }

  // CMD_OPEN_CAMERA with openRequest 0; returns ExecuteCommand's result and
  // stores the record's openStatus (untouched records read 0xFFFFFFFF).
  std::int32_t Open(std::uint32_t portIndex, std::uint32_t alwaysShowSelector,
                    std::uint32_t showSelectorWhenNoMatch, std::uint32_t* status);
  std::int32_t Close();
  // Texts of the recorded messages of one level.
  std::vector<std::string> MessagesOfLevel(std::uint32_t level) const;
  void ClearRecords();

  // How the host answers.
  std::string cameraText;          // request 6, offset 4108
  std::uint32_t cameraTextValid = 1;
  std::int32_t portInfoAnswer = 1;  // callback result of request 6
  std::uint32_t largestPortIndex = 3;
  std::int32_t aliveAnswer = 1;
  bool refuseEverything = false;  // every callback answers 0

  // What the module sent.
  std::vector<HostMessage> messages;
  std::vector<std::uint32_t> notices;         // code 9 details
  std::vector<std::uint32_t> serialRequests;  // code 22 details, in order
  std::vector<std::uint32_t> selectorStates;  // code 26 values
  std::vector<std::uint32_t> probeFailurePorts;
  std::uint64_t bytesFromCamera = 0;

 private:
  static std::int32_t Callback(std::uint32_t code, std::uint32_t detail, void* data,
                               HostContext context);
  std::int32_t Serve(std::uint32_t request, void* data);
  std::int32_t ServeTransfer(std::uint32_t request, SerialRequestRecord& record);
  CameraLink* LinkOf(std::uint32_t portIndex) const;

  VQ_Ext* extension_ = nullptr;
  std::map<std::uint32_t, CameraLink*> links_;
};

// A new extension object from the loaded module, without callback or camera.
VQ_Ext* CreateModuleExtension();

// The KORVA area-scan example's profile from the source tree.
sim::Profile KorvaAreaProfile();
// A profile serving any description text (registers zero-filled), with the
// identity given.
sim::Profile ProfileForDescription(const std::string& descriptionText, const std::string& model);

}  // namespace vq::test
