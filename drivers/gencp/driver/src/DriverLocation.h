// Where the driver library lies and where its data files are: the location directory is the
// parent of the OS subfolder (Linux64_x64) holding the library, or the library's own folder.
#pragma once

#include <string>
#include <vector>

namespace vq::gencpdrv {

std::string driverLocation();

// Reads a whole file; false when it cannot be read.
bool readTextFile(const std::string& path, std::string& text);

// Names (not paths) of the regular files in a directory; empty when it cannot be listed.
std::vector<std::string> listFiles(const std::string& directory);

}  // namespace vq::gencpdrv
