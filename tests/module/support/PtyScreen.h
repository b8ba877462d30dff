// Helpers for driving the module's terminal user interface through a real
// pseudo-terminal: reading what the module wrote, answering the selector
// dialog's screens, setting VQ_DIALOG for a test, and running code in a child
// process that has (or has not) the pseudo-terminal as its controlling
// terminal.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "vq/platform/environment.h"
#include "vq/platform/pseudo_terminal.h"

namespace vq::test {

// Reads the master side until `needle` has arrived (or `timeoutMs` passed, or
// the line failed); returns everything read.
inline std::string ReadUntil(platform::PseudoTerminal& pty, const std::string& needle,
                             std::uint32_t timeoutMs = 10000) {
  std::string text;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (text.find(needle) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
    char buffer[512];
    const std::int64_t count = pty.ReadSome(buffer, sizeof buffer, 100);
    if (count < 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

// What the selector dialog writes each time it is shown and when it ends.
constexpr const char* kEnterScreen = "\x1b[?1049h";
constexpr const char* kLeaveScreen = "\x1b[?25h\x1b[?1049l";
// An answer that hangs up the terminal instead of typing.
const std::string kHangUp = "<hang up>";

inline std::size_t CountOf(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// Reads the master side until the selector dialog has been shown `showings`
// times and its latest screen is drawn down to the line of key help; false
// when that has not happened within 30 s.
inline bool ReadDialogScreen(platform::PseudoTerminal& pty, std::string& screen,
                             std::size_t showings) {
  const auto complete = [&] {
    const std::size_t help = screen.rfind("Keys:");
    return CountOf(screen, kEnterScreen) >= showings && help != std::string::npos &&
           help > screen.rfind(kEnterScreen) && screen.find('\n', help) != std::string::npos;
  };
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!complete()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    screen += ReadUntil(pty, "\n", 500);
  }
  return true;
}

// Answers the dialogs that `run` (started on its own thread) shows: after the
// (i + 1)-th showing has drawn its screen, types answers[i]. Then waits for
// `run` to end, hanging up the terminal if it does not, and returns everything
// the dialogs wrote.
inline std::string AnswerDialogs(platform::PseudoTerminal& pty, std::future<void>& run,
                                 const std::vector<std::string>& answers) {
  std::string screen;
  for (std::size_t showing = 0; showing < answers.size(); ++showing) {
    if (!ReadDialogScreen(pty, screen, showing + 1)) {
      ADD_FAILURE() << "the dialog was shown " << showing << " times, expected " << answers.size();
      pty.Close();  // a hung-up terminal closes the dialog
      break;
    }
    if (answers[showing] == kHangUp) {
      pty.Close();
    } else {
      EXPECT_TRUE(pty.Write(answers[showing].data(), answers[showing].size()));
    }
  }
  if (run.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
    ADD_FAILURE() << "the dialog did not end";
    pty.Close();
  }
  run.get();
  return screen + ReadUntil(pty, kLeaveScreen, 500);
}

// Writes `marker` on the slave side, then reads the master up to it: what the
// module wrote before the marker, whatever its timing.
inline std::string ReadUpToMarker(platform::PseudoTerminal& pty, const std::string& marker) {
  const int slave = open(pty.SlavePath().c_str(), O_WRONLY | O_NOCTTY);
  if (slave < 0) return "<cannot open slave>";
  const bool written =
      write(slave, marker.data(), marker.size()) == static_cast<ssize_t>(marker.size());
  close(slave);
  if (!written) return "<cannot write marker>";
  const std::string text = ReadUntil(pty, marker);
  const std::size_t at = text.find(marker);
  return at == std::string::npos ? text + "<no marker>" : text.substr(0, at);
}

// Sets (or, with nullopt, removes) an environment variable for one scope.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value)
      : name_(std::move(name)), saved_(platform::GetEnv(name_)) {
    Apply(value);
  }
  ~ScopedEnv() { Apply(saved_); }

 private:
  void Apply(const std::optional<std::string>& value) {
    if (value) {
      platform::SetEnv(name_, *value);
    } else {
      platform::UnsetEnv(name_);
    }
  }
  std::string name_;
  std::optional<std::string> saved_;
};

// Runs `body` in a child process in a new session, so that it has no
// controlling terminal, unless `controllingTerminal` names a terminal it is to
// take. Standard input comes from `input`, standard output and error go to
// `output` (device paths). Returns the child's exit code, or -1 when it did
// not exit normally.
inline int RunInChildSession(const std::string& controllingTerminal, const std::string& input,
                             const std::string& output, const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    setsid();
    if (!controllingTerminal.empty()) {
      const int terminal = open(controllingTerminal.c_str(), O_RDWR);
      if (terminal < 0 || ioctl(terminal, TIOCSCTTY, 0) != 0) _exit(100);
    }
    const int in = open(input.c_str(), O_RDONLY | O_NOCTTY);
    const int out = open(output.c_str(), O_WRONLY | O_NOCTTY);
    if (in < 0 || out < 0) _exit(101);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    _exit(body());
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

}  // namespace vq::test
