// A command that cannot go on: the exit code and a one-line message that says what to do.
#pragma once

#include <stdexcept>
#include <string>

namespace vq::host {

enum ExitCode : int {
  kExitSuccess = 0,
  kExitRefused = 1,  // the camera refused
  kExitUsage = 2,    // usage or connection error
};

class Failure : public std::runtime_error {
 public:
  Failure(int exitCode, const std::string& message)
      : std::runtime_error(message), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

inline Failure UsageError(const std::string& message) { return Failure(kExitUsage, message); }
inline Failure Refused(const std::string& message) { return Failure(kExitRefused, message); }

}  // namespace vq::host
