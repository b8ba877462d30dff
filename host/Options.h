// What the command line asked for, before any command runs.
#pragma once

#include <optional>
#include <string>

namespace vq::host {

struct Options {
  enum class Link { Simulator, Port, ClSerial };
  Link link = Link::Simulator;
  std::string simulateProfile;  // empty: the default camera
  std::string portPath;
  std::string clserArgument;  // LIB[:INDEX]
  std::optional<std::string> cameraText;
  bool alwaysShowSelector = false;
  std::string baud;        // empty, "max" or a rate
  std::string visibility;  // empty or a level name
  bool json = false;
  std::string modulePath;
  bool verbose = false;
  std::string programPath;
};

}  // namespace vq::host
