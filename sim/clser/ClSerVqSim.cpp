// libclservqsim.so: a Camera Link serial library whose ports are simulated cameras. Port i
// serves the i-th camera profile: those listed in VQ_CLSER_PROFILES (folders separated by
// ':' or ';'), else every example profile next to the default camera. Each clSerialInit
// powers up a fresh camera; time on its line is simulated.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "vq/clser/ClSerial.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"
#include "vq/sim/InProcessPort.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"

#define CLSER_API extern "C" __attribute__((visibility("default")))

namespace {

struct SimulatedPort {
  explicit SimulatedPort(const vq::sim::Profile& profile) : simulator(profile), port(simulator) {}
  vq::sim::Simulator simulator;
  vq::sim::InProcessPort port;
};

std::vector<std::string> SplitFolders(const std::string& text) {
  std::vector<std::string> folders;
  std::string current;
  for (char c : text) {
    if (c == ':' || c == ';') {
      if (!current.empty()) folders.push_back(current);
      current.clear();
    } else {
      current += c;
    }
  }
  if (!current.empty()) folders.push_back(current);
  return folders;
}

// Profile folders below `directory`, sorted by name.
std::vector<std::string> ProfilesIn(const std::filesystem::path& directory) {
  namespace fs = std::filesystem;
  std::vector<std::string> folders;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(directory, ec)) {
    if (fs::exists(entry.path() / "profile.ini", ec)) folders.push_back(entry.path().string());
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

// Installed, the library sits among the examples; in a build tree the examples are found
// where the simulator finds its default camera.
std::vector<std::string> ExampleFolders() {
  const std::string self = vq::platform::GetModulePath(reinterpret_cast<const void*>(&ProfilesIn));
  auto folders = ProfilesIn(vq::platform::DirectoryOf(self));
  if (!folders.empty()) return folders;
  const std::string standard = vq::sim::findDefaultProfile();
  if (standard.empty()) return {};
  return ProfilesIn(std::filesystem::path(standard).parent_path());
}

// The profile folders, looked up once.
const std::vector<std::string>& PortFolders() {
  static const std::vector<std::string> folders = [] {
    const auto listed = vq::platform::GetEnv("VQ_CLSER_PROFILES");
    return listed ? SplitFolders(*listed) : ExampleFolders();
  }();
  return folders;
}

SimulatedPort* PortOf(hSerRef ref) { return static_cast<SimulatedPort*>(ref); }

struct ErrorText {
  CLINT32 code;
  const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {CL_ERR_NO_ERR, "no error"},
    {CL_ERR_BUFFER_TOO_SMALL, "buffer too small"},
    {CL_ERR_TIMEOUT, "time-out on serial link"},
    {CL_ERR_INVALID_INDEX, "no serial port with this index"},
    {CL_ERR_INVALID_REFERENCE, "invalid serial port reference"},
    {CL_ERR_BAUD_RATE_NOT_SUPPORTED, "baud rate not supported"},
    {CL_ERR_OUT_OF_MEMORY, "out of memory"},
    {CL_ERR_INVALID_PTR, "invalid pointer"},
};

}  // namespace

CLSER_API CLINT32 clGetNumSerialPorts(CLUINT32* numSerialPorts) {
  if (numSerialPorts == nullptr) return CL_ERR_INVALID_PTR;
  *numSerialPorts = static_cast<CLUINT32>(PortFolders().size());
  return CL_ERR_NO_ERR;
}

CLSER_API CLINT32 clSerialInit(CLUINT32 serialIndex, hSerRef* serialRef) {
  if (serialRef == nullptr) return CL_ERR_INVALID_PTR;
  const auto& folders = PortFolders();
  if (serialIndex >= folders.size()) return CL_ERR_INVALID_INDEX;
  try {
    *serialRef = new SimulatedPort(vq::sim::loadProfile(folders[serialIndex]));
  } catch (const std::bad_alloc&) {
    return CL_ERR_OUT_OF_MEMORY;
  } catch (const std::exception&) {
    return CL_ERR_INVALID_INDEX;  // the profile behind this port cannot be served
  }
  return CL_ERR_NO_ERR;
}

CLSER_API void clSerialClose(hSerRef serialRef) { delete PortOf(serialRef); }

CLSER_API CLINT32 clSerialRead(hSerRef serialRef, CLINT8* buffer, CLUINT32* bufferSize,
                               CLUINT32 serialTimeout) {
  if (serialRef == nullptr) return CL_ERR_INVALID_REFERENCE;
  if (buffer == nullptr || bufferSize == nullptr) return CL_ERR_INVALID_PTR;
  const CLUINT32 wanted = *bufferSize;
  *bufferSize = static_cast<CLUINT32>(
      PortOf(serialRef)->port.read(reinterpret_cast<std::uint8_t*>(buffer), wanted, serialTimeout));
  return *bufferSize == wanted ? CL_ERR_NO_ERR : CL_ERR_TIMEOUT;
}

CLSER_API CLINT32 clSerialWrite(hSerRef serialRef, CLINT8* buffer, CLUINT32* bufferSize, CLUINT32) {
  if (serialRef == nullptr) return CL_ERR_INVALID_REFERENCE;
  if (bufferSize == nullptr || (buffer == nullptr && *bufferSize != 0)) return CL_ERR_INVALID_PTR;
  PortOf(serialRef)->port.write(reinterpret_cast<const std::uint8_t*>(buffer), *bufferSize);
  return CL_ERR_NO_ERR;
}

CLSER_API CLINT32 clGetSupportedBaudRates(hSerRef serialRef, CLUINT32* baudRates) {
  if (serialRef == nullptr) return CL_ERR_INVALID_REFERENCE;
  if (baudRates == nullptr) return CL_ERR_INVALID_PTR;
  *baudRates = vq::sim::InProcessPort::supportedBaudRates();
  return CL_ERR_NO_ERR;
}

CLSER_API CLINT32 clSetBaudRate(hSerRef serialRef, CLUINT32 baudRate) {
  if (serialRef == nullptr) return CL_ERR_INVALID_REFERENCE;
  return PortOf(serialRef)->port.setBaudRate(baudRate) ? CL_ERR_NO_ERR
                                                       : CL_ERR_BAUD_RATE_NOT_SUPPORTED;
}

CLSER_API CLINT32 clFlushPort(hSerRef serialRef) {
  if (serialRef == nullptr) return CL_ERR_INVALID_REFERENCE;
  std::uint8_t discard[256];
  auto& port = PortOf(serialRef)->port;
  while (port.read(discard, sizeof(discard), 0) == sizeof(discard)) {
  }
  return CL_ERR_NO_ERR;
}

CLSER_API CLINT32 clGetErrorText(CLINT32 errorCode, CLINT8* errorText, CLUINT32* errorTextSize) {
  if (errorTextSize == nullptr) return CL_ERR_INVALID_PTR;
  for (const auto& entry : kErrorTexts) {
    if (entry.code != errorCode) continue;
    const auto needed = static_cast<CLUINT32>(std::strlen(entry.text) + 1);
    if (errorText == nullptr || *errorTextSize < needed) {
      *errorTextSize = needed;
      return CL_ERR_BUFFER_TOO_SMALL;
    }
    std::memcpy(errorText, entry.text, needed);
    *errorTextSize = needed;
    return CL_ERR_NO_ERR;
  }
  return CL_ERR_ERROR_NOT_FOUND;
}
