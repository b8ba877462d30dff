// Terminal detection: standard input swapped for a pseudo-terminal slave, then
// for a pipe; terminal devices opened by path.
#include "vq/platform/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "vq/platform/pseudo_terminal.h"

namespace {

// Puts `fd` in place of standard input for the lifetime of the object.
class StdinReplacement {
 public:
  explicit StdinReplacement(int fd) : saved_(dup(STDIN_FILENO)) { dup2(fd, STDIN_FILENO); }
  ~StdinReplacement() {
    dup2(saved_, STDIN_FILENO);
    close(saved_);
  }

 private:
  int saved_;
};

TEST(TerminalTest, StdinIsATerminalOnAPseudoTerminalOnly) {
  vq::platform::PseudoTerminal pty;
  ASSERT_TRUE(pty.Open());
  int pipeEnds[2];
  ASSERT_EQ(pipe(pipeEnds), 0);
  const int slave = open(pty.SlavePath().c_str(), O_RDWR | O_NOCTTY);
  ASSERT_GE(slave, 0);
  for (const auto& [fd, terminal] : {std::pair{slave, true}, std::pair{pipeEnds[0], false}}) {
    StdinReplacement replacement(fd);
    EXPECT_EQ(vq::platform::IsStdinTerminal(), terminal) << (terminal ? "terminal" : "pipe");
  }
  for (int fd : {slave, pipeEnds[0], pipeEnds[1]}) close(fd);
  // Whatever ctest gives us, asking must not fail.
  (void)vq::platform::IsStdoutTerminal();
  (void)vq::platform::IsStderrTerminal();
}

TEST(TerminalDeviceTest, OpensOnlyTerminals) {
  vq::platform::PseudoTerminal pty;
  ASSERT_TRUE(pty.Open());
  struct Case {
    std::string path;
    bool opens;
    const char* errorPart;
  };
  const Case cases[] = {
      {pty.SlavePath(), true, ""},
      {"/dev/null", false, "is not a terminal"},
      {"/nonexistent/tty", false, "cannot open terminal"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    vq::platform::TerminalDevice terminal;
    std::string error;
    EXPECT_EQ(terminal.Open(c.path, &error), c.opens);
    EXPECT_NE(error.find(c.errorPart), std::string::npos) << error;
    // Not this process's controlling terminal, and of unknown size.
    EXPECT_FALSE(terminal.IsBackground());
    EXPECT_FALSE(terminal.GetSize(nullptr, nullptr));
    EXPECT_EQ(terminal.EnterRawMode(), c.opens);
  }
}

}  // namespace
