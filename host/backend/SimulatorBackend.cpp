#include "backend/SimulatorBackend.h"

#include <filesystem>

namespace vq::host {

namespace fs = std::filesystem;

std::string SimulatorBackend::ResolveProfile(const std::string& profile,
                                             const std::string& programPath) {
  const std::string standard = sim::findDefaultProfile(programPath);
  if (profile.empty()) return standard;
  std::error_code ec;
  if (fs::exists(fs::path(profile) / "profile.ini", ec)) return profile;
  if (standard.empty() || profile.find('/') != std::string::npos) return std::string();
  const fs::path example = fs::path(standard).parent_path() / profile;
  if (fs::exists(example / "profile.ini", ec)) return example.string();
  return std::string();
}

SimulatorBackend::SimulatorBackend(const std::string& profile, const std::string& programPath) {
  folder_ = ResolveProfile(profile, programPath);
  if (folder_.empty()) {
    throw ConnectionError("no simulated camera profile '" + profile +
                          "'; give a folder holding profile.ini or an example name such as "
                          "korva-area or korva-line");
  }
  try {
    profile_ = sim::loadProfile(folder_);
    simulator_ = std::make_unique<sim::Simulator>(profile_);
  } catch (const std::exception& e) {
    throw ConnectionError("the simulated camera cannot start: " + std::string(e.what()) +
                          "; check the profile folder " + folder_);
  }
  port_ = std::make_unique<sim::InProcessPort>(*simulator_);
}

std::string SimulatorBackend::describe() const {
  return "simulated camera " + profile_.manufacturer + " " + profile_.model + " (" +
         fs::path(folder_).filename().string() + ")";
}

std::int32_t SimulatorBackend::read(std::uint8_t* data, std::uint32_t& count,
                                    std::uint32_t timeoutMs) {
  const std::uint32_t wanted = count;
  count = static_cast<std::uint32_t>(port_->read(data, wanted, timeoutMs));
  if (count == wanted) return kClOk;
  lastError_ = "the simulated camera did not answer in time";
  return kClTimeout;
}

std::int32_t SimulatorBackend::write(const std::uint8_t* data, std::uint32_t& count,
                                     std::uint32_t) {
  if (!port_->write(data, count)) {
    count = 0;
    return kClInvalidReference;
  }
  return kClOk;
}

std::int32_t SimulatorBackend::setBaudRate(std::uint32_t rateBit) {
  return port_->setBaudRate(rateBit) ? kClOk : kClBaudRateNotSupported;
}

}  // namespace vq::host
