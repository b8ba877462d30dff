#include "Progress.h"

#include <cstdio>

namespace vq::host {

std::string FormatBytes(std::uint64_t bytes) {
  char text[32];
  if (bytes < 1000) {
    std::snprintf(text, sizeof(text), "%llu B", static_cast<unsigned long long>(bytes));
  } else if (bytes < 1000000) {
    std::snprintf(text, sizeof(text), "%.1f kB", static_cast<double>(bytes) / 1e3);
  } else {
    std::snprintf(text, sizeof(text), "%.1f MB", static_cast<double>(bytes) / 1e6);
  }
  return text;
}

void Progress::begin(const std::string& label) {
  if (!enabled_) return;
  label_ = label;
  active_ = true;
  start_ = std::chrono::steady_clock::now();
  lastDraw_ = start_;
  // Nothing is drawn before the first bytes move: the module may first show its selector.
}

void Progress::update(std::uint64_t bytes) {
  if (!active_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - lastDraw_ < std::chrono::milliseconds(100)) return;
  lastDraw_ = now;
  draw(bytes, "");
}

void Progress::clearLine() {
  if (!drawn_) return;
  std::fputs("\r\033[K", stderr);
  drawn_ = false;
  lastDraw_ = std::chrono::steady_clock::time_point();
}

void Progress::restartClock() { start_ = std::chrono::steady_clock::now(); }

void Progress::end(std::uint64_t bytes, const std::string& outcome) {
  if (!active_) return;
  draw(bytes, outcome.empty() ? "" : ", " + outcome);
  std::fputs("\n", stderr);
  std::fflush(stderr);
  active_ = false;
  drawn_ = false;
}

void Progress::draw(std::uint64_t bytes, const std::string& tail) {
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  // Carriage return and erase-line redraw the same terminal line.
  std::fprintf(stderr, "\r\033[K%s: %s over the link, %.1f s%s", label_.c_str(),
               FormatBytes(bytes).c_str(), seconds, tail.c_str());
  std::fflush(stderr);
  drawn_ = true;
}

}  // namespace vq::host
