// The built-in simulated camera, in this process: bytes go straight to a vq::sim::Simulator
// and time is simulated, so a time-out costs no waiting.
#pragma once

#include <memory>
#include <string>

#include "backend/SerialBackend.h"
#include "vq/sim/InProcessPort.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

namespace vq::host {

class SimulatorBackend : public SerialBackend {
 public:
  // `profile` is a profile folder, the name of one of the example profiles, or empty for
  // the default camera. Throws ConnectionError when no such profile can be loaded.
  SimulatorBackend(const std::string& profile, const std::string& programPath);

  std::string describe() const override;
  std::int32_t read(std::uint8_t* data, std::uint32_t& count, std::uint32_t timeoutMs) override;
  std::int32_t write(const std::uint8_t* data, std::uint32_t& count,
                     std::uint32_t timeoutMs) override;
  std::uint32_t supportedBaudRates() const override {
    return sim::InProcessPort::supportedBaudRates();
  }
  std::int32_t setBaudRate(std::uint32_t rateBit) override;
  std::uint32_t baudRate() const override { return port_->baudRate(); }
  std::string defaultCameraText() const override { return profile_.model; }
  std::string knownDescription() const override { return profile_.descriptionText; }

  // The folder a profile name stands for: an existing folder as given, else the example of
  // that name next to the default profile. Empty when neither exists.
  static std::string ResolveProfile(const std::string& profile, const std::string& programPath);

 private:
  std::string folder_;
  sim::Profile profile_;
  std::unique_ptr<sim::Simulator> simulator_;
  std::unique_ptr<sim::InProcessPort> port_;
};

}  // namespace vq::host
