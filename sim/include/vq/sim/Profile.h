// A simulated camera profile: identity, description and initial register values, read
// from a folder holding `profile.ini`.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vq::sim {

class ProfileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Profile {
  // Identity in the bootstrap registers.
  std::string manufacturer;
  std::string family;
  std::string model;
  std::string version;
  std::string serialNumber;
  std::string manufacturerInfo;
  std::string userName;

  // The register description text, and whether the manifest serves it zipped.
  std::string descriptionFileName;  // file name inside the manifest's ZIP
  std::string descriptionText;
  bool zipDescription = true;

  // Initial values in the values-file syntax (see Values.h); empty for none.
  std::string valuesText;

  uint32_t supportedBaudRates = 0xFF;  // bits as in the serial bootstrap block
  uint32_t maxResponseTimeMs = 300;
  uint32_t gencpVersion = 0x00010003;  // major << 16 | minor
  // Bootstrap strings as ASCII (0), UTF-8 (1) or big-endian UTF-16 (2), the capability code.
  uint32_t stringEncoding = 0;
  // Heartbeat time-out after power-up; 0 for a device without access privilege and heartbeat.
  uint32_t heartbeatTimeoutMs = 3000;
  // Time the device takes to switch its line to a new rate (0: at once).
  uint32_t baudSwitchMs = 0;
  uint32_t commandDelayMs = 50;  // time before a command register clears itself
  std::string saveCommand;       // Command node that stores the configuration
  uint32_t saveTimeMs = 0;       // duration of the configuration save
};

// Reads `<directory>/profile.ini` and the files it names; `overrides` holds further
// `key = value` lines that win over the file's. Throws ProfileError with the file and line
// concerned on any problem.
Profile loadProfile(const std::string& directory, const std::string& overrides = std::string());

// Parses profile text; file names are resolved against `directory`.
Profile parseProfile(const std::string& iniText, const std::string& directory);

// Folder of the default demo camera (KORVA area-scan): looks next to `programPath`
// (<bin>/../share/vqcam/examples/korva-area), then in the source tree. Empty if absent.
std::string findDefaultProfile(const std::string& programPath = std::string());

}  // namespace vq::sim
