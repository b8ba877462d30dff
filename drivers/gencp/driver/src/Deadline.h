// A point in time a wait must not pass, with the remaining milliseconds for serial calls.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace vq::gencpdrv {

class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Deadline(uint64_t milliseconds) : end_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

  bool expired() const { return Clock::now() >= end_; }

  // Remaining time, at least 1 ms so that a last read still gets a chance.
  uint32_t remainingMs() const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - Clock::now());
    return static_cast<uint32_t>(std::clamp<int64_t>(left.count(), 1, 0x7FFFFFFF));
  }

  void extendTo(uint64_t millisecondsFromNow) {
    end_ = Clock::now() + std::chrono::milliseconds(millisecondsFromNow);
  }

 private:
  Clock::time_point end_;
};

// Milliseconds needed to move `bytes` over the link: ten bit times per byte.
inline uint64_t transferMs(uint64_t bytes, uint32_t bitsPerSecond) {
  if (bitsPerSecond == 0) bitsPerSecond = 9600;
  return bytes * 10 * 1000 / bitsPerSecond + 1;
}

}  // namespace vq::gencpdrv
