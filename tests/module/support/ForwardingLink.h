// A camera link that passes everything to another one; tests and benchmarks
// derive from it to watch or change one part of the traffic.
#pragma once

#include "support/TestHost.h"

namespace vq::test {

class ForwardingLink : public CameraLink {
 public:
  explicit ForwardingLink(CameraLink& camera) : camera_(camera) {}
  std::int32_t Read(void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) override {
    return camera_.Read(buffer, count, timeoutMs);
  }
  std::int32_t Write(const void* buffer, std::uint32_t& count, std::uint32_t timeoutMs) override {
    return camera_.Write(buffer, count, timeoutMs);
  }
  std::uint32_t SupportedBaudRates() override { return camera_.SupportedBaudRates(); }
  std::int32_t SetBaudRate(std::uint32_t bit) override { return camera_.SetBaudRate(bit); }

 private:
  CameraLink& camera_;
};

}  // namespace vq::test
