// The live line that shows an open's progress on a terminal: bytes moved over the link and
// the time so far, redrawn at most ten times a second. Off when standard error is not a
// terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vq::host {

class Progress {
 public:
  explicit Progress(bool enabled) : enabled_(enabled) {}
  void begin(const std::string& label);
  void update(std::uint64_t bytes);
  // Clears the line for other text; the next update draws it again.
  void clearLine();
  // Counts time from now (after the selector dialog, whose waiting is the person's).
  void restartClock();
  // Leaves the final line standing with `outcome` after it.
  void end(std::uint64_t bytes, const std::string& outcome);
  bool enabled() const { return enabled_; }

 private:
  void draw(std::uint64_t bytes, const std::string& tail);

  bool enabled_;
  bool active_ = false;
  bool drawn_ = false;
  std::string label_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDraw_;
};

// "1.2 kB", "345 B", "2.0 MB".
std::string FormatBytes(std::uint64_t bytes);

}  // namespace vq::host
