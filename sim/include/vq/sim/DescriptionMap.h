// What the simulator learns from a register description: every register node with a fixed
// address, and every command with the register it writes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vq/sim/RegisterSpace.h"

namespace vq::sim {

struct RegisterDef {
  std::string name;
  uint64_t address = 0;
  uint64_t length = 0;
  Access access = Access::RO;
};

struct CommandDef {
  std::string name;
  std::string registerName;
  uint64_t address = 0;
  uint64_t length = 0;
  int64_t commandValue = 1;
};

struct DescriptionInfo {
  std::vector<RegisterDef> registers;
  std::vector<CommandDef> commands;
  // Register nodes skipped because their address is computed (pAddress, pIndex, ...).
  std::vector<std::string> skipped;
  // Versions from the root element, for the manifest.
  uint32_t schemaMajor = 1, schemaMinor = 1, schemaSubMinor = 0;
  uint32_t fileMajor = 0, fileMinor = 0, fileSubMinor = 0;
  std::string modelName;
};

// Parses description text. Throws ProfileError (Profile.h) for malformed XML or a root
// element that is not a RegisterDescription.
DescriptionInfo readDescription(const std::string& xmlText);

}  // namespace vq::sim
