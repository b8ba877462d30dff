#include "vq/sim/StreamServer.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>

#include "vq/gencp/Constants.h"
#include "vq/platform/pseudo_terminal.h"
#include "vq/platform/sleep.h"

namespace vq::sim {

namespace {

constexpr uint32_t kPollMs = 5;

// Sleeps off the accumulated line time in whole milliseconds.
class Pacer {
 public:
  void add(double seconds) {
    debtUs_ += seconds * 1e6;
    if (debtUs_ >= 1000.0) {
      const auto ms = static_cast<uint32_t>(debtUs_ / 1000.0);
      platform::SleepMilliseconds(ms);
      debtUs_ -= ms * 1000.0;
    }
  }

 private:
  double debtUs_ = 0;
};

}  // namespace

std::string serve(Simulator& sim, ByteChannel& channel, const ServeOptions& options) {
  const auto start = std::chrono::steady_clock::now();
  const uint64_t simStart = sim.nowUs();
  Pacer pacer;
  uint8_t in[256];
  uint8_t out[256];
  std::string error;
  while (options.stop == nullptr || !options.stop->load()) {
    const int64_t got = channel.readSome(in, sizeof in, kPollMs, error);
    if (got < 0) return error.empty() ? "input ended" : error;
    // Timers follow the wall clock while the line is idle.
    const auto realUs = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                                  std::chrono::steady_clock::now() - start)
                                                  .count());
    if (simStart + realUs > sim.nowUs()) sim.advanceTo(simStart + realUs);
    const uint32_t hostRate = channel.hostBaudRate();
    sim.setHostFollowsDevice(hostRate == 0);
    if (hostRate != 0) sim.setHostBaudRate(hostRate);
    if (got > 0) {
      if (options.pace) pacer.add(Simulator::byteSeconds(sim.hostBaudRate()) * got);
      sim.receive(in, static_cast<std::size_t>(got));
    }
    for (std::size_t n; (n = sim.transmit(out, sizeof out)) > 0;) {
      if (options.pace) pacer.add(Simulator::byteSeconds(sim.device().baudRate()) * n);
      if (!channel.write(out, n, error)) return error.empty() ? "output failed" : error;
    }
    if (options.afterRound) options.afterRound(sim);
  }
  return std::string();
}

int64_t PseudoTerminalChannel::readSome(uint8_t* buffer, std::size_t size, uint32_t timeoutMs,
                                        std::string& error) {
  return terminal_.ReadSome(buffer, size, timeoutMs, &error);
}

uint32_t PseudoTerminalChannel::hostBaudRate() const {
  return gencp::baudRateToBit(terminal_.SlaveBaudRate());
}

bool PseudoTerminalChannel::write(const uint8_t* data, std::size_t size, std::string& error) {
  return terminal_.Write(data, size, platform::DeviceStream::kDefaultWriteTimeoutMs, &error);
}

// Standard input is read by a helper thread (a blocking read cannot time out portably);
// bytes wait in a queue for readSome().
struct StdioChannel::State {
  std::mutex mutex;
  std::condition_variable ready;
  std::deque<uint8_t> bytes;
  bool eof = false;
};

namespace {
// One reader for the process's standard input, started on first use and kept for the
// life of the process (it may stay blocked on stdin until exit).
StdioChannel::State* stdinState() {
  static StdioChannel::State* const state = [] {
    auto* created = new StdioChannel::State;
    std::thread([created] {
      for (int c; (c = std::fgetc(stdin)) != EOF;) {
        std::lock_guard<std::mutex> lock(created->mutex);
        created->bytes.push_back(static_cast<uint8_t>(c));
        created->ready.notify_one();
      }
      std::lock_guard<std::mutex> lock(created->mutex);
      created->eof = true;
      created->ready.notify_one();
    }).detach();
    return created;
  }();
  return state;
}
}  // namespace

StdioChannel::StdioChannel() : state_(stdinState()) {}

StdioChannel::~StdioChannel() = default;

int64_t StdioChannel::readSome(uint8_t* buffer, std::size_t size, uint32_t timeoutMs,
                               std::string& error) {
  std::unique_lock<std::mutex> lock(state_->mutex);
  state_->ready.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                         [this] { return !state_->bytes.empty() || state_->eof; });
  if (state_->bytes.empty() && state_->eof) {
    error = "standard input ended";
    return -1;
  }
  std::size_t n = 0;
  while (n < size && !state_->bytes.empty()) {
    buffer[n++] = state_->bytes.front();
    state_->bytes.pop_front();
  }
  return static_cast<int64_t>(n);
}

bool StdioChannel::write(const uint8_t* data, std::size_t size, std::string& error) {
  if (std::fwrite(data, 1, size, stdout) != size || std::fflush(stdout) != 0) {
    error = "cannot write to standard output";
    return false;
  }
  return true;
}

void watchStdinForEof(std::atomic<bool>& flag) {
  std::thread([&flag] {
    while (std::fgetc(stdin) != EOF) {
    }
    flag.store(true);
  }).detach();
}

}  // namespace vq::sim
