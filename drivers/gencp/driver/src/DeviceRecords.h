// Devices identified before, kept on disk so that a probe in a new process need not read the
// whole bootstrap block again: one file, devices.rec, in the user's cache folder
// ($XDG_CACHE_HOME/vqcam, else ~/.cache/vqcam), next to the description cache. A record holds
// what a full identification learns (identity tokens, bootstrap facts, supported rates, GenCP
// version, the model name register's bytes) and is keyed by the serial number text. Only hints:
// a probe checks serial number and model name on the line before using one.
//
// The file carries a checksum; a damaged, cut or foreign file counts as empty and is replaced by
// the next store. Writes go to a temporary file renamed into place. The vqcam folder is only
// made inside a cache directory that exists; without one nothing is kept and nothing fails.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "PortMemory.h"

namespace vq::gencpdrv {

class DeviceRecords {
 public:
  // Records kept; storing one more drops the oldest.
  static constexpr std::size_t kMaxRecords = 32;

  // Every record of the file, oldest first; empty when there is no file or it is damaged.
  // Strings pass the same token rules as strings read from a device.
  static std::vector<KnownDevice> load();
  // Adds or refreshes the record of the device's serial number text (best effort).
  static void store(const KnownDevice& device);
  // The file, empty when the environment names no cache directory.
  static std::string path();
};

}  // namespace vq::gencpdrv
