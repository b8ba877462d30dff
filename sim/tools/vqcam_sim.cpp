// vqcam-sim: a simulated GenCP camera on a pseudo-terminal or on standard input/output.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "vq/gencp/Constants.h"
#include "vq/platform/pseudo_terminal.h"
#include "vq/sim/Profile.h"
#include "vq/sim/Simulator.h"
#include "vq/sim/StreamServer.h"

namespace {

std::atomic<bool> gStop{false};

extern "C" void onSignal(int) { gStop.store(true); }

const char kUsage[] =
    "usage: vqcam-sim (--pty | --stdio) [--profile DIR] [options]\n"
    "  --pty               serve on a new pseudo-terminal; prints its device path\n"
    "  --stdio             serve on standard input and output\n"
    "  --profile DIR       camera profile folder (default: the KORVA area-scan camera)\n"
    "  --set KEY=VALUE     override a profile.ini entry (repeatable)\n"
    "  --pace              hold every byte for its time on the line\n"
    "  --no-stdin          with --pty: do not stop at end of standard input\n"
    "  --command-delay MS  time before command registers clear themselves\n"
    "  --drop-answers N    execute but do not answer the next N commands\n"
    "  --corrupt-answers N alter one byte of the next N answers\n"
    "  --answer-delay MS   send every answer this much later\n"
    "  --processing MS     extra processing time per command (pending acknowledge when long)\n"
    "  --status CODE[:N]   answer the next N (default 1) commands with this GenCP status\n"
    "  --silent            never answer\n"
    "  --stats             print line statistics to standard error at the end\n"
    "  --stats-file PATH   keep line statistics and link state in PATH (key = value lines)\n";

struct Options {
  enum class Mode { None, Pty, Stdio } mode = Mode::None;
  std::string profile;
  std::string overrides;  // profile.ini lines from --set
  std::string statsFile;
  bool pace = false;
  bool watchStdin = true;
  bool stats = false;
  long commandDelayMs = -1;
  vq::sim::FaultPlan faults;
};

bool parseNumber(const char* text, unsigned long& value) {
  if (text == nullptr || *text == '\0') return false;
  char* end = nullptr;
  value = std::strtoul(text, &end, 0);
  return end != nullptr && (*end == '\0' || *end == ':');
}

// Returns false (after printing why) for bad arguments.
bool parseArguments(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const char* next = i + 1 < argc ? argv[i + 1] : nullptr;
    unsigned long n = 0;
    auto number = [&](const char* name) {
      if (!parseNumber(next, n)) {
        std::fprintf(stderr, "vqcam-sim: %s needs a number\n", name);
        return false;
      }
      ++i;
      return true;
    };
    if (arg == "--pty") {
      options.mode = Options::Mode::Pty;
    } else if (arg == "--stdio") {
      options.mode = Options::Mode::Stdio;
    } else if (arg == "--profile" && next) {
      options.profile = next;
      ++i;
    } else if (arg == "--set" && next && std::strchr(next, '=')) {
      options.overrides += std::string(next) + "\n";
      ++i;
    } else if (arg == "--stats-file" && next) {
      options.statsFile = next;
      ++i;
    } else if (arg == "--pace") {
      options.pace = true;
    } else if (arg == "--no-stdin") {
      options.watchStdin = false;
    } else if (arg == "--stats") {
      options.stats = true;
    } else if (arg == "--silent") {
      options.faults.silent = true;
    } else if (arg == "--command-delay") {
      if (!number(arg.c_str())) return false;
      options.commandDelayMs = static_cast<long>(n);
    } else if (arg == "--drop-answers") {
      if (!number(arg.c_str())) return false;
      options.faults.dropAnswers = static_cast<uint32_t>(n);
    } else if (arg == "--corrupt-answers") {
      if (!number(arg.c_str())) return false;
      options.faults.corruptAnswers = static_cast<uint32_t>(n);
    } else if (arg == "--answer-delay") {
      if (!number(arg.c_str())) return false;
      options.faults.answerDelayMs = static_cast<uint32_t>(n);
    } else if (arg == "--processing") {
      if (!number(arg.c_str())) return false;
      options.faults.processingDelayMs = static_cast<uint32_t>(n);
    } else if (arg == "--status") {
      if (!number(arg.c_str())) return false;
      options.faults.forcedStatus = static_cast<uint16_t>(n);
      const char* colon = std::strchr(argv[i], ':');
      unsigned long count = 1;
      if (colon && !parseNumber(colon + 1, count)) return false;
      options.faults.forcedStatusCount = static_cast<uint32_t>(count);
    } else {
      std::fprintf(stderr, "vqcam-sim: unknown argument '%s'\n%s", arg.c_str(), kUsage);
      return false;
    }
  }
  if (options.mode == Options::Mode::None) {
    std::fputs(kUsage, stderr);
    return false;
  }
  return true;
}

std::string statsText(const vq::sim::Simulator& sim) {
  const auto& s = sim.stats();
  const auto& d = sim.device();
  char text[512];
  std::snprintf(text, sizeof text,
                "bytes_in = %llu\nbytes_out = %llu\nline_seconds = %.6f\ncommands = %llu\n"
                "bad_packets = %llu\nrepeated_answers = %llu\npending_acks = %llu\n"
                "garbled_bytes = %llu\nbaud_rate = %u\nbaud_fallbacks = %u\n"
                "heartbeat_expiries = %u\naccess_privilege = %u\nheartbeat_enabled = %d\n",
                static_cast<unsigned long long>(s.bytesIn),
                static_cast<unsigned long long>(s.bytesOut), s.linkSeconds,
                static_cast<unsigned long long>(s.commands),
                static_cast<unsigned long long>(s.badPackets),
                static_cast<unsigned long long>(s.repeatedAnswers),
                static_cast<unsigned long long>(s.pendingAcks),
                static_cast<unsigned long long>(s.garbledBytes), d.baudRate(), d.baudFallbacks(),
                d.heartbeatExpiries(), d.accessPrivilege(), d.heartbeatEnabled() ? 1 : 0);
  return text;
}

// Rewrites the statistics file when its text changed; a reader never sees half a file.
class StatsFile {
 public:
  explicit StatsFile(std::string path) : path_(std::move(path)) {}
  void update(const vq::sim::Simulator& sim) {
    const std::string text = statsText(sim);
    if (text == last_) return;
    const std::string temporary = path_ + ".tmp";
    std::ofstream out(temporary, std::ios::trunc);
    out << text;
    out.close();
    if (out && std::rename(temporary.c_str(), path_.c_str()) == 0) last_ = text;
  }

 private:
  std::string path_;
  std::string last_;
};

void printStats(const vq::sim::Simulator& sim) {
  const auto& s = sim.stats();
  std::fprintf(stderr,
               "vqcam-sim: %llu bytes in, %llu bytes out, %.3f s on the line, %llu commands, "
               "%llu bad packets, %llu repeated answers, %llu pending acks\n",
               static_cast<unsigned long long>(s.bytesIn),
               static_cast<unsigned long long>(s.bytesOut), s.linkSeconds,
               static_cast<unsigned long long>(s.commands),
               static_cast<unsigned long long>(s.badPackets),
               static_cast<unsigned long long>(s.repeatedAnswers),
               static_cast<unsigned long long>(s.pendingAcks));
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parseArguments(argc, argv, options)) return 2;
  if (options.profile.empty()) options.profile = vq::sim::findDefaultProfile(argv[0]);
  if (options.profile.empty()) {
    std::fprintf(stderr, "vqcam-sim: no default profile found; use --profile DIR\n");
    return 2;
  }
  try {
    vq::sim::Simulator sim(vq::sim::loadProfile(options.profile, options.overrides));
    sim.faults() = options.faults;
    if (options.commandDelayMs >= 0) {
      sim.device().setCommandDelayMs(static_cast<uint32_t>(options.commandDelayMs));
    }
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
    vq::sim::ServeOptions serveOptions;
    serveOptions.pace = options.pace;
    serveOptions.stop = &gStop;
    StatsFile statsFile(options.statsFile);
    if (!options.statsFile.empty()) {
      serveOptions.afterRound = [&statsFile](const vq::sim::Simulator& s) { statsFile.update(s); };
    }
    std::string ended;
    if (options.mode == Options::Mode::Pty) {
      vq::platform::PseudoTerminal terminal;
      std::string error;
      if (!terminal.Open(&error)) {
        std::fprintf(stderr, "vqcam-sim: cannot create a pseudo-terminal: %s\n", error.c_str());
        return 2;
      }
      std::printf("%s\n", terminal.SlavePath().c_str());
      std::fflush(stdout);
      if (options.watchStdin) vq::sim::watchStdinForEof(gStop);
      vq::sim::PseudoTerminalChannel channel(terminal);
      ended = vq::sim::serve(sim, channel, serveOptions);
    } else {
      sim.setHostFollowsDevice(true);
      vq::sim::StdioChannel channel;
      ended = vq::sim::serve(sim, channel, serveOptions);
      if (ended == "standard input ended") ended.clear();
    }
    if (options.stats) printStats(sim);
    if (!ended.empty()) {
      std::fprintf(stderr, "vqcam-sim: %s\n", ended.c_str());
      return 1;
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "vqcam-sim: %s\n", e.what());
    return 2;
  }
  return 0;
}
