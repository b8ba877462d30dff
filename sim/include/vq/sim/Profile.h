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
  uint32_t commandDelayMs = 50;  // time before a command register clears itself
  std::string saveCommand;       // Command node that stores the configuration
  uint32_t saveTimeMs = 0;       // duration of the configuration save
};

// Reads `<directory>/profile.ini` and the files it names. Throws ProfileError with the
// file and line concerned on any problem.
Profile loadProfile(const std::string& directory);

// Parses profile text; file names are resolved against `directory`.
Profile parseProfile(const std::string& iniText, const std::string& directory);

// Folder of the default demo camera (KORVA area-scan): looks next to `programPath`
// (<bin>/../share/vqcam/examples/korva-area), then in the source tree. Empty if absent.
std::string findDefaultProfile(const std::string& programPath = std::string());

}  // namespace vq::sim
