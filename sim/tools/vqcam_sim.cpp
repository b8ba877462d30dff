// vqcam-sim: a simulated GenCP camera on a pseudo-terminal or on standard input/output.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

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
    "  --stats-file PATH   keep line statistics and link state in PATH (key = value lines)\n"
    "  --control PATH      when PATH appears, its fault options replace the current ones\n";

struct Options {
  enum class Mode { None, Pty, Stdio } mode = Mode::None;
  std::string profile;
  std::string overrides;  // profile.ini lines from --set
  std::string statsFile;
  std::string controlFile;
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

// Parses the fault option at args[i] (advancing i past its value) into `faults`. Returns false
// with a message in `error` for a bad value or an option that is not a fault.
bool parseFaultOption(const std::vector<std::string>& args, std::size_t& i,
                      vq::sim::FaultPlan& faults, long& commandDelayMs, std::string& error) {
  const std::string& arg = args[i];
  if (arg == "--silent") {
    faults.silent = true;
    return true;
  }
  struct NumberOption {
    const char* name;
    uint32_t* target;
  };
  uint32_t commandDelay = 0;
  const NumberOption numbers[] = {{"--drop-answers", &faults.dropAnswers},
                                  {"--corrupt-answers", &faults.corruptAnswers},
                                  {"--answer-delay", &faults.answerDelayMs},
                                  {"--processing", &faults.processingDelayMs},
                                  {"--command-delay", &commandDelay},
                                  {"--status", nullptr}};
  for (const auto& option : numbers) {
    if (arg != option.name) continue;
    unsigned long n = 0;
    const char* value = i + 1 < args.size() ? args[i + 1].c_str() : nullptr;
    if (!parseNumber(value, n)) {
      error = arg + " needs a number";
      return false;
    }
    ++i;
    if (option.target == &commandDelay) {
      commandDelayMs = static_cast<long>(n);
    } else if (option.target != nullptr) {
      *option.target = static_cast<uint32_t>(n);
    } else {
      faults.forcedStatus = static_cast<uint16_t>(n);
      const char* colon = std::strchr(value, ':');
      unsigned long count = 1;
      if (colon && !parseNumber(colon + 1, count)) {
        error = "--status takes CODE[:COUNT]";
        return false;
      }
      faults.forcedStatusCount = static_cast<uint32_t>(count);
    }
    return true;
  }
  error = "unknown argument '" + arg + "'";
  return false;
}

// Returns false (after printing why) for bad arguments.
bool parseArguments(const std::vector<std::string>& args, Options& options) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    auto take = [&](std::string& target) {
      target = args[++i];
      return true;
    };
    if (arg == "--pty") {
      options.mode = Options::Mode::Pty;
    } else if (arg == "--stdio") {
      options.mode = Options::Mode::Stdio;
    } else if (arg == "--profile" && hasValue) {
      take(options.profile);
    } else if (arg == "--set" && hasValue && args[i + 1].find('=') != std::string::npos) {
      options.overrides += args[++i] + "\n";
    } else if (arg == "--stats-file" && hasValue) {
      take(options.statsFile);
    } else if (arg == "--control" && hasValue) {
      take(options.controlFile);
    } else if (arg == "--pace") {
      options.pace = true;
    } else if (arg == "--no-stdin") {
      options.watchStdin = false;
    } else if (arg == "--stats") {
      options.stats = true;
    } else {
      std::string error;
      if (!parseFaultOption(args, i, options.faults, options.commandDelayMs, error)) {
        std::fprintf(stderr, "vqcam-sim: %s\n%s", error.c_str(), kUsage);
        return false;
      }
    }
  }
  if (options.mode == Options::Mode::None) {
    std::fputs(kUsage, stderr);
    return false;
  }
  return true;
}

// The control file: fault options (as on the command line, any layout) that replace the
// faults in force when the file appears; the file is removed once applied.
void applyControlFile(const std::string& path, vq::sim::Simulator& sim) {
  std::ifstream in(path);
  if (!in) return;
  std::vector<std::string> args;
  for (std::string word; in >> word;) args.push_back(word);
  in.close();
  vq::sim::FaultPlan faults;
  long commandDelayMs = -1;
  std::string error;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (!parseFaultOption(args, i, faults, commandDelayMs, error)) {
      std::fprintf(stderr, "vqcam-sim: control file: %s\n", error.c_str());
      std::remove(path.c_str());
      return;
    }
  }
  sim.faults() = faults;
  if (commandDelayMs >= 0) sim.device().setCommandDelayMs(static_cast<uint32_t>(commandDelayMs));
  std::remove(path.c_str());
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

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parseArguments(std::vector<std::string>(argv + 1, argv + argc), options)) return 2;
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
    serveOptions.afterRound = [&](vq::sim::Simulator& s) {
      if (!options.controlFile.empty()) applyControlFile(options.controlFile, s);
      if (!options.statsFile.empty()) statsFile.update(s);
    };
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
    if (options.stats) std::fputs(statsText(sim).c_str(), stderr);
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
