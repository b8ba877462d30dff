// Finding drivers: the locations named by GENICAM_CLPROTOCOL, then this library's own
// lib/clprotocol; in each, the OS subfolder holds lib*.so drivers. Loaded drivers are kept
// process-wide by path until Terminate.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "DriverLibrary.h"

namespace CLProtocol {

// Name of the OS subfolder holding driver binaries.
extern const char* const kDriverSubfolder;

// Driver locations in search order, without duplicates.
std::vector<std::string> DriverLocations();

// Paths of the driver binaries in the locations, in search order; a file reached twice (through
// a symbolic link, or a location listed under two names) is listed once.
std::vector<std::string> DriverPaths();

// The loaded driver at `path`, loading it on first use; throws when it cannot be used.
std::shared_ptr<DriverLibrary> GetDriver(const std::string& path);

// Every driver found that loads; those that do not are skipped.
std::vector<std::shared_ptr<DriverLibrary>> LoadAllDrivers();

// Releases every loaded driver.
void UnloadDrivers();

// Problems met while looking for drivers and their templates, one sentence each naming the
// driver; Diagnose replaces the list.
void Diagnose(std::vector<std::string> messages);
std::vector<std::string> Diagnostics();

}  // namespace CLProtocol
