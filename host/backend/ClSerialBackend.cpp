#include "backend/ClSerialBackend.h"

#include <cstdlib>
#include <vector>

namespace vq::host {

bool ClSerialBackend::ParseLibraryArgument(const std::string& argument, std::string& library,
                                           std::uint32_t& index) {
  library = argument;
  index = 0;
  const auto colon = argument.rfind(':');
  if (colon == std::string::npos || argument.find('/', colon) != std::string::npos) return true;
  const std::string number = argument.substr(colon + 1);
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos ||
      number.size() > 9) {
    return false;
  }
  library = argument.substr(0, colon);
  index = static_cast<std::uint32_t>(std::strtoul(number.c_str(), nullptr, 10));
  return true;
}

template <typename Function>
void ClSerialBackend::bind(Function& function, const char* name) {
  function = library_.FindFunction<Function>(name);
  if (function == nullptr) {
    throw ConnectionError(library_.Path() + " is not a Camera Link serial library (it has no " +
                          name + "); give the frame grabber's clser library");
  }
}

ClSerialBackend::ClSerialBackend(const std::string& library, std::uint32_t index) : index_(index) {
  std::string error;
  library_ = platform::SharedLibrary::Open(library, &error);
  if (!library_) {
    throw ConnectionError("cannot load the Camera Link serial library " + library + ": " + error +
                          "; check the path");
  }
  bind(init_, "clSerialInit");
  bind(read_, "clSerialRead");
  bind(write_, "clSerialWrite");
  bind(close_, "clSerialClose");
  bind(portCountFn_, "clGetNumSerialPorts");
  bind(supported_, "clGetSupportedBaudRates");
  bind(setBaud_, "clSetBaudRate");
  bind(flush_, "clFlushPort");
  bind(errorText_, "clGetErrorText");
  CLUINT32 count = 0;
  if (portCountFn_(&count) != CL_ERR_NO_ERR || count == 0) {
    throw ConnectionError(library +
                          " offers no serial port; check that the frame grabber is "
                          "installed");
  }
  portCount_ = count;
  if (index >= count) {
    throw ConnectionError(library + " has " + std::to_string(count) + " serial port(s); choose " +
                          "an index from 0 to " + std::to_string(count - 1));
  }
  const CLINT32 status = init_(index, &ref_);
  if (status != CL_ERR_NO_ERR || ref_ == nullptr) {
    ref_ = nullptr;
    throw ConnectionError("cannot open port " + std::to_string(index) + " of " + library + ": " +
                          errorText(status) + "; check that no other program uses it");
  }
  flush_(ref_);
}

ClSerialBackend::~ClSerialBackend() {
  if (ref_ != nullptr) close_(ref_);
}

std::string ClSerialBackend::describe() const {
  return library_.Path() + " port " + std::to_string(index_);
}

std::string ClSerialBackend::errorText(CLINT32 status) const {
  CLUINT32 size = 0;
  errorText_(status, nullptr, &size);
  if (size > 0 && size < 4096) {
    std::vector<CLINT8> text(size + 1, '\0');
    if (errorText_(status, text.data(), &size) == CL_ERR_NO_ERR) {
      return std::string(text.data()) + " (" + std::to_string(status) + ")";
    }
  }
  return "status " + std::to_string(status);
}

void ClSerialBackend::remember(const char* operation, CLINT32 status) {
  lastError_ = std::string(operation) + " on " + describe() + " failed: " + errorText(status);
}

std::int32_t ClSerialBackend::read(std::uint8_t* data, std::uint32_t& count,
                                   std::uint32_t timeoutMs) {
  const CLINT32 status = read_(ref_, reinterpret_cast<CLINT8*>(data), &count, timeoutMs);
  if (status != CL_ERR_NO_ERR) remember("clSerialRead", status);
  return status;
}

std::int32_t ClSerialBackend::write(const std::uint8_t* data, std::uint32_t& count,
                                    std::uint32_t timeoutMs) {
  // The standard's write takes a non-const buffer but only reads it.
  auto* bytes = reinterpret_cast<CLINT8*>(const_cast<std::uint8_t*>(data));
  const CLINT32 status = write_(ref_, bytes, &count, timeoutMs);
  if (status != CL_ERR_NO_ERR) remember("clSerialWrite", status);
  return status;
}

std::uint32_t ClSerialBackend::supportedBaudRates() const {
  CLUINT32 mask = 0;
  if (supported_(ref_, &mask) != CL_ERR_NO_ERR) return 1;
  return mask;
}

std::int32_t ClSerialBackend::setBaudRate(std::uint32_t rateBit) {
  const CLINT32 status = setBaud_(ref_, rateBit);
  if (status == CL_ERR_NO_ERR) {
    baudRate_ = rateBit;
  } else {
    remember("clSetBaudRate", status);
  }
  return status;
}

}  // namespace vq::host
