// The simulator serves registers at fixed addresses only. A description's
// registers whose address a formula computes are found by reading every node
// once over the simulator's own register image, and are then added to that
// image zero-filled, so the whole description can be served.
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "vq/sim/Simulator.h"

namespace vq::test {

// A port over a register image that answers zeros where the image has no
// register and remembers every range read.
class RecordingPort : public GenApi::IPort {
 public:
  explicit RecordingPort(const sim::RegisterSpace& image) : image_(image) {}
  GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
  void Read(void* buffer, int64_t address, int64_t length) override {
    ranges.emplace_back(address, length);
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    for (int64_t i = 0; i < length; ++i) {
      std::vector<std::uint8_t> byte;
      bytes[i] = image_.peek(std::uint64_t(address + i), 1, byte) ? byte[0] : 0;
    }
  }
  void Write(const void*, int64_t, int64_t) override {}
  std::vector<std::pair<int64_t, int64_t>> ranges;

 private:
  const sim::RegisterSpace& image_;
};

inline void CoverComputedRegisters(const std::string& text, sim::Simulator& simulator) {
  GenApi::CNodeMapRef map("Device");
  map._LoadXMLFromString(text.c_str());
  RecordingPort port(simulator.device().registers());
  map._Connect(&port, "Device");
  GenApi::NodeList_t nodes;
  map._GetNodes(nodes);
  for (GenApi::INode* node : nodes) {  // every readable node once
    try {
      if (!GenApi::IsReadable(node->GetAccessMode())) continue;
      if (auto* value = dynamic_cast<GenApi::IValue*>(node)) value->ToString();
      if (auto* integer = dynamic_cast<GenApi::IInteger*>(node)) integer->GetMax();
      if (auto* number = dynamic_cast<GenApi::IFloat*>(node)) number->GetMax();
    } catch (const GenICam::GenericException&) {
    }
  }
  sim::RegisterSpace& image = simulator.device().registers();
  for (const auto& range : port.ranges) {
    if (range.second > 0 && range.second <= (1 << 20) &&
        !image.covers(std::uint64_t(range.first), std::uint64_t(range.second))) {
      image.add(std::uint64_t(range.first), std::uint64_t(range.second), sim::Access::RW);
    }
  }
}

}  // namespace vq::test
