// The one exception type inside the driver: a CLProtocol status code and a sentence saying what
// went wrong. The exported entry points turn it back into a return code and a last-error text.
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <stdexcept>
#include <string>

namespace vq::gencpdrv {

class DriverFailure : public std::runtime_error {
 public:
  DriverFailure(CLINT32 code, const std::string& text) : std::runtime_error(text), code_(code) {}
  CLINT32 code() const { return code_; }

 private:
  CLINT32 code_;
};

}  // namespace vq::gencpdrv
