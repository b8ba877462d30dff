// vqcam as a person sees it on a terminal: run in a tmux pane, the screen captured and read.
// Opening shows its progress there and nowhere else; --select brings up the module's own
// selector dialog on the terminal.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "host_test_support.h"

namespace {

// A socket name no other pane uses, so a server that is still going away is never reused.
std::string NewSocketName() {
  static int panes = 0;
  return "vqcam-test-" + std::to_string(getpid()) + "-" + std::to_string(++panes);
}

// A tmux server of its own with one pane running a shell command.
class TmuxPane {
 public:
  explicit TmuxPane(const std::string& command) : socket_(NewSocketName()) {
    const auto started =
        Tmux({"new-session", "-d", "-s", "t", "-x", "160", "-y", "40",
              "env VQ_DIALOG=tty XDG_CACHE_HOME=" VQ_BINARY_DIR "/no-description-cache " + command +
                  "; echo EXIT=$?; sleep 120"});
    EXPECT_EQ(started.exitCode, 0) << started.err;
  }
  ~TmuxPane() { Tmux({"kill-server"}); }

  std::string screen() { return Tmux({"capture-pane", "-p", "-t", "t"}).out; }
  void keys(const std::vector<std::string>& keys) {
    std::vector<std::string> args = {"send-keys", "-t", "t"};
    args.insert(args.end(), keys.begin(), keys.end());
    Tmux(args);
  }
  // Waits (bounded) until the screen shows `text`; returns the screen.
  std::string waitFor(const std::string& text, int timeoutMs = 120000) {
    std::string shown;
    for (int waited = 0; waited < timeoutMs; waited += 100) {
      shown = screen();
      if (shown.find(text) != std::string::npos) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return shown;
  }

 private:
  hosttest::RunResult Tmux(std::vector<std::string> args) {
    args.insert(args.begin(), {"/usr/bin/tmux", "-L", socket_});
    return hosttest::Run(args, "", {}, 20000);
  }
  std::string socket_;
};

TEST(Terminal, OpeningShowsProgressOnATerminalOnly) {
  const auto simulator = hosttest::StartSimulator();
  const std::string command =
      hosttest::VqcamProgram() + " --port " + simulator->DevicePath() + " --camera A2040M info";
  TmuxPane pane(command);
  const std::string screen = pane.waitFor("EXIT=");
  EXPECT_NE(screen.find("opening " + simulator->DevicePath() + ": "), std::string::npos) << screen;
  EXPECT_NE(screen.find(" kB over the link, "), std::string::npos) << screen;
  EXPECT_NE(screen.find(" s, open"), std::string::npos) << screen;
  EXPECT_NE(screen.find("EXIT=0"), std::string::npos) << screen;

  const auto again = hosttest::StartSimulator();
  const auto piped = hosttest::Vqcam({"--port", again->DevicePath(), "--camera", "A2040M", "info"});
  EXPECT_EQ(piped.exitCode, 0) << piped.err;
  EXPECT_EQ(piped.err.find("over the link"), std::string::npos) << piped.err;
}

// The selector's number of the model named on the screen, e.g. "(2) A2040M" gives "2":
// on the first line naming the model after "(digits) ", those digits.
std::string NumberOf(const std::string& screen, const std::string& model) {
  for (size_t at = screen.find(model); at != std::string::npos; at = screen.find(model, at + 1)) {
    const size_t lineStart = screen.rfind('\n', at) + 1;  // npos + 1 is 0
    for (size_t open = screen.find('(', lineStart); open < at; open = screen.find('(', open + 1)) {
      const size_t close = screen.find(") ", open);
      const std::string digits = screen.substr(open + 1, close - open - 1);
      if (close < at && !digits.empty() &&
          digits.find_first_not_of("0123456789") == std::string::npos)
        return digits;
    }
  }
  return "?";
}

struct SelectorCase {
  const char* what;
  bool load;  // choose the camera's model and load it, or close the dialog
  const char* outcome;
};

// --select shows the module's selector on the terminal even though the camera text
// matches; the person picks the model and loads it, or closes the dialog.
TEST(Terminal, SelectShowsTheModulesSelectorOnTheTerminal) {
  const SelectorCase cases[] = {
      {"load", true, "EXIT=0"},
      {"close", false, "no camera description was chosen"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    TmuxPane pane(hosttest::VqcamProgram() + " --simulate --select info");
    const std::string dialog = pane.waitFor("Camera XML Selector", 60000);
    ASSERT_NE(dialog.find("Camera XML Selector"), std::string::npos) << dialog;
    ASSERT_NE(dialog.find("A2040M"), std::string::npos) << dialog;
    if (c.load) {
      pane.keys({NumberOf(dialog, "A2040M"), "Enter"});
    } else {
      pane.keys({"Escape"});
    }
    const std::string after = pane.waitFor("EXIT=");
    EXPECT_NE(after.find(c.outcome), std::string::npos) << after;
    if (c.load) {
      // The module's message and the progress line each keep a line of their own.
      EXPECT_NE(after.find("vqcam [info] XML Camera file for device: KORVA#AreaScan#A2040M is "
                           "loaded\nopening simulated camera"),
                std::string::npos)
          << after;
      EXPECT_NE(after.find(" over the link, "), std::string::npos) << after;
    }
  }
}

}  // namespace
