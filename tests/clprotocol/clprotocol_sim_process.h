// The vqcam-sim program as a child process on a new pseudo-terminal, with its statistics file
// and its control file (fault options that take effect while it runs), and a fixture that
// registers a termios serial adapter on it with CCLPort.
#pragma once

#include <CLProtocol/CLPort.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "clprotocol_port_access.h"
#include "clprotocol_test_serial.h"

extern char** environ;

namespace clprotocol_test {

using Clock = std::chrono::steady_clock;

inline int MsLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

inline void SleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

inline std::string ExampleDir(const char* folder) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + folder;
}

inline std::string DriverDirectory() {
  return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64";
}

class SimProcess {
 public:
  ~SimProcess() { Stop(); }

  // Starts the program with `arguments` after --pty, --profile, --stats-file and --control,
  // and waits (bounded) for the device path on its standard output. Its standard input stays
  // open: end of input would stop it, as it does when this process dies.
  bool Start(const std::string& profileDir, const std::vector<std::string>& arguments,
             std::string* error) {
    const std::string base = ::testing::TempDir() + "vqcam-sim-" + std::to_string(getpid()) +
                             "-" + std::to_string(++starts_);
    statsPath_ = base + ".stats";
    controlPath_ = base + ".control";
    std::vector<std::string> args = {VQ_SIM_PROGRAM, "--pty",        "--profile",  profileDir,
                                     "--stats-file", statsPath_,     "--control",  controlPath_};
    args.insert(args.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) return Fail("pipe failed", error);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    const int spawned = posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    stdin_ = in[1];
    stdout_ = out[0];
    if (spawned != 0) {
      pid_ = -1;
      return Fail("cannot start " + args[0] + ": errno " + std::to_string(spawned), error);
    }
    return ReadPath(error);
  }

  const std::string& DevicePath() const { return path_; }
  bool Running() const { return pid_ > 0; }

  // SIGTERM, a bounded wait, SIGKILL if the program did not end. Says how it ended.
  std::string Stop() {
    std::string how = "not running";
    if (pid_ > 0) {
      kill(pid_, SIGCONT);
      kill(pid_, SIGTERM);
      int status = 0;
      if (WaitFor(5000, &status)) {
        how = WIFEXITED(status) ? "exit " + std::to_string(WEXITSTATUS(status))
                                : "signal " + std::to_string(WTERMSIG(status));
      } else {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
        how = "killed after ignoring SIGTERM";
      }
      pid_ = -1;
    }
    for (int* fd : {&stdin_, &stdout_}) {
      if (*fd >= 0) close(*fd);
      *fd = -1;
    }
    std::remove(statsPath_.c_str());
    std::remove(controlPath_.c_str());
    return how;
  }

  // Stops the program where it is (SIGSTOP) and lets it go on (SIGCONT).
  void Pause() { kill(pid_, SIGSTOP); }
  void Resume() { kill(pid_, SIGCONT); }

  // Replaces the program's faults with `options` (its fault options; empty clears them) and
  // waits until it took them.
  bool Control(const std::string& options) {
    const std::string temporary = controlPath_ + ".tmp";
    std::ofstream(temporary) << options << "\n";
    if (std::rename(temporary.c_str(), controlPath_.c_str()) != 0) return false;
    const auto deadline = Clock::now() + std::chrono::milliseconds(5000);
    while (std::filesystem::exists(controlPath_)) {
      if (MsLeft(deadline) == 0) return false;
      SleepMs(2);
    }
    return true;
  }

  // The program's statistics and link state, once its serving loop has gone round after the
  // last exchange.
  std::map<std::string, double> Stats() const {
    SleepMs(30);
    std::map<std::string, double> values;
    std::ifstream in(statsPath_);
    for (std::string key, equals; in >> key >> equals;) in >> values[key];
    return values;
  }

 private:
  static bool Fail(const std::string& why, std::string* error) {
    *error = why;
    return false;
  }

  bool ReadPath(std::string* error) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(10000);
    std::string line;
    while (line.find('\n') == std::string::npos) {
      pollfd fd{stdout_, POLLIN, 0};
      const int ready = poll(&fd, 1, MsLeft(deadline));
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) return Fail("no device path within the start time", error);
      char chunk[128];
      const ssize_t got = read(stdout_, chunk, sizeof chunk);
      if (got <= 0) return Fail("the program ended before printing a path: " + line, error);
      line.append(chunk, static_cast<std::size_t>(got));
    }
    path_ = line.substr(0, line.find('\n'));
    return path_.rfind("/dev/", 0) == 0 || Fail("not a device path: " + path_, error);
  }

  bool WaitFor(int timeoutMs, int* status) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    do {
      if (waitpid(pid_, status, WNOHANG) == pid_) return true;
      SleepMs(5);
    } while (MsLeft(deadline) > 0);
    return false;
  }

  pid_t pid_ = -1;
  int stdin_ = -1;
  int stdout_ = -1;
  int starts_ = 0;
  std::string path_;
  std::string statsPath_;
  std::string controlPath_;
};

// A CCLPort on a termios adapter registered on the program's pseudo-terminal. The program runs
// the KORVA area-scan camera unless a test starts it otherwise.
class SimProgram : public ::testing::Test {
 protected:
  void SetUp() override {
    unsetenv("GENICAM_CLPROTOCOL");  // the library's own location is enough
    // Descriptions are cached where this test alone looks, however it is run.
    cacheDir_ = ::testing::TempDir() + "clp-sim-cache-" + std::to_string(getpid());
    setenv("XDG_CACHE_HOME", cacheDir_.c_str(), 1);
    CLProtocol::CCLPort::Terminate();
  }
  void TearDown() override {
    port_.reset();
    CLProtocol::CCLPort::Terminate();
    adapter_.reset();
    std::filesystem::remove_all(cacheDir_);
    if (sim_.Running()) {
      EXPECT_EQ("exit 0", sim_.Stop());  // a clean end on SIGTERM
    }
  }

  void StartSim(const std::vector<std::string>& arguments = {}, const char* folder = "korva-area") {
    port_.reset();
    CLProtocol::CCLPort::UnRegisterSerials();  // an adapter of an earlier run goes now
    std::string error;
    ASSERT_TRUE(sim_.Start(ExampleDir(folder), arguments, &error)) << error;
    adapter_ = std::make_unique<TermiosAdapter>(sim_.DevicePath());
    RegisterPort();
  }

  // Forgets every driver and port, as a new process would start.
  void Restart() {
    port_.reset();
    CLProtocol::CCLPort::Terminate();
    RegisterPort();
  }

  void RegisterPort() {
    portID_ = CLProtocol::CCLPort::RegisterSerial("SimProgram", adapter_.get());
    port_ = std::make_unique<CLProtocol::CCLPort>();
  }

  static GenICam::gcstring Template(const std::string& shortTemplate = "KORVA#AreaScan#A2040M") {
    return GenICam::gcstring(
        (DriverDirectory() + "#libCLProtocolGenCP.so#" + shortTemplate).c_str());
  }

  void Open(const std::string& shortTemplate = "KORVA#AreaScan#A2040M") {
    const GenICam::gcstring id =
        CLProtocol::CCLPort::ProbeDevice(portID_, Template(shortTemplate), 1000);
    port_->Connect(portID_, id);
  }

  uint32_t ReadU32(int64_t address) { return clprotocol_test::ReadU32(*port_, address); }
  void WriteU32(int64_t address, uint32_t value) {
    clprotocol_test::WriteU32(*port_, address, value);
  }
  std::string ErrorOf(void (*call)(CLProtocol::CCLPort&)) {
    return clprotocol_test::ErrorOf(*port_, call);
  }
  // A write of 512 to Width, or a read of Width expecting 2048: "no exception" or the error.
  std::string WidthOutcome(bool write) {
    return write ? ErrorOf([](CLProtocol::CCLPort& p) {
      const uint8_t bytes[4] = {0, 0, 2, 0};
      p.Write(bytes, 0x40108, 4);
    })
                 : ErrorOf([](CLProtocol::CCLPort& p) {
                     uint8_t bytes[4];
                     p.Read(bytes, 0x40108, 4);
                     if (bytes[2] != 8) throw RUNTIME_EXCEPTION("read %d", bytes[2]);
                   });
  }

  std::string cacheDir_;
  SimProcess sim_;
  std::unique_ptr<TermiosAdapter> adapter_;
  GenICam::gcstring portID_;
  std::unique_ptr<CLProtocol::CCLPort> port_;
};

constexpr int64_t kWidthReg = 0x40108;
constexpr int64_t kVendorNameReg = 0x0004;
constexpr int64_t kUnmappedAddress = 0x7FF000;

}  // namespace clprotocol_test
