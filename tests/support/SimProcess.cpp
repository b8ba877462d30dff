#include "SimProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

extern char** environ;

namespace vq::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kStartTimeoutMs = 10000;
constexpr int kStopTimeoutMs = 5000;

int MsLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

bool Fail(const std::string& why, std::string* error) {
  if (error != nullptr) *error = why;
  return false;
}

}  // namespace

bool SimProcess::Start(const std::string& program, const std::string& profileDir,
                       std::string* error, const std::vector<std::string>& extraArguments) {
  Stop();
  int in[2], out[2];
  if (pipe2(in, O_CLOEXEC) != 0) return Fail("pipe failed", error);
  if (pipe2(out, O_CLOEXEC) != 0) {
    close(in[0]);
    close(in[1]);
    return Fail("pipe failed", error);
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  std::vector<std::string> words = {program, "--pty", "--profile", profileDir};
  words.insert(words.end(), extraArguments.begin(), extraArguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const int spawned = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  stdin_ = in[1];
  stdout_ = out[0];
  if (spawned != 0) {
    pid_ = -1;
    Stop();
    return Fail("cannot start " + program + ": errno " + std::to_string(spawned), error);
  }
  return ReadPath(error);
}

void SimProcess::Pause() {
  if (pid_ > 0) kill(pid_, SIGSTOP);
}

void SimProcess::Resume() {
  if (pid_ > 0) kill(pid_, SIGCONT);
}

std::string SimProcess::Stop() {
  std::string how = "not running";
  if (pid_ > 0) {
    kill(pid_, SIGCONT);
    kill(pid_, SIGTERM);
    int status = 0;
    if (WaitFor(kStopTimeoutMs, &status)) {
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
  return how;
}

bool SimProcess::ReadPath(std::string* error) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(kStartTimeoutMs);
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

bool SimProcess::WaitFor(int timeoutMs, int* status) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  do {
    if (waitpid(pid_, status, WNOHANG) == pid_) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  } while (MsLeft(deadline) > 0);
  return false;
}

}  // namespace vq::test
