// Terminal detection: standard input swapped for a pseudo-terminal slave, then
// for a pipe.
#include "vq/platform/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

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

TEST(TerminalTest, StdinOnAPseudoTerminalIsATerminal) {
  vq::platform::PseudoTerminal pty;
  ASSERT_TRUE(pty.Open());
  const int slave = open(pty.SlavePath().c_str(), O_RDWR | O_NOCTTY);
  ASSERT_GE(slave, 0);
  {
    StdinReplacement replacement(slave);
    EXPECT_TRUE(vq::platform::IsStdinTerminal());
  }
  close(slave);
}

TEST(TerminalTest, StdinOnAPipeIsNotATerminal) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  {
    StdinReplacement replacement(ends[0]);
    EXPECT_FALSE(vq::platform::IsStdinTerminal());
  }
  close(ends[0]);
  close(ends[1]);
  // Whatever ctest gives us, asking must not fail.
  (void)vq::platform::IsStdoutTerminal();
  (void)vq::platform::IsStderrTerminal();
}

}  // namespace
