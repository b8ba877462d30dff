// A register image of zeros for driving a node map without a camera: reads
// give zeros, writes are swallowed, and both are counted. Shared by the XML
// loader fuzz target and the GenApi benchmark.
#pragma once

#include <GenApi/IPort.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vq_support {

class ZeroPort : public GenApi::IPort {
 public:
  GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
  void Read(void* buffer, int64_t, int64_t length) override {
    if (buffer != nullptr && length > 0) std::memset(buffer, 0, static_cast<std::size_t>(length));
    ++reads;
  }
  void Write(const void*, int64_t, int64_t) override { ++writes; }
  int64_t reads = 0;
  int64_t writes = 0;
};

}  // namespace vq_support
