#include "host_test_support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <sstream>

extern char** environ;

namespace hosttest {

namespace {

using Clock = std::chrono::steady_clock;

int MsLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

void CloseFd(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

}  // namespace

Child::~Child() {
  if (pid_ > 0) {
    kill(pid_, SIGCONT);
    finish(5000);
  }
  CloseFd(in_);
  CloseFd(out_);
  CloseFd(err_);
}

bool Child::start(const std::vector<std::string>& argv,
                  const std::map<std::string, std::string>& env) {
  int in[2], out[2], err[2];
  if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
  std::vector<std::string> environment;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (env.count(text.substr(0, text.find('='))) == 0) environment.push_back(text);
  }
  for (const auto& [name, value] : env) environment.push_back(name + "=" + value);
  std::vector<char*> args, envp;
  std::vector<std::string> argvCopy = argv;
  for (auto& arg : argvCopy) args.push_back(arg.data());
  args.push_back(nullptr);
  for (auto& entry : environment) envp.push_back(entry.data());
  envp.push_back(nullptr);
  const int spawned =
      posix_spawn(&pid_, argvCopy[0].c_str(), &actions, nullptr, args.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  close(err[1]);
  in_ = in[1];
  out_ = out[0];
  err_ = err[0];
  ::signal(SIGPIPE, SIG_IGN);  // a child that ended early must not end the test
  if (spawned != 0) pid_ = -1;
  return spawned == 0;
}

void Child::write(const std::string& text) {
  if (in_ >= 0) {
    [[maybe_unused]] const ssize_t written = ::write(in_, text.data(), text.size());
  }
}

void Child::closeInput() { CloseFd(in_); }

void Child::pump(int timeoutMs) {
  pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
  if (poll(fds, 2, timeoutMs) <= 0) return;
  std::string* sinks[2] = {&result_.out, &result_.err};
  int* fdsOwned[2] = {&out_, &err_};
  for (int i = 0; i < 2; ++i) {
    if (fds[i].revents == 0 || *fdsOwned[i] < 0) continue;
    char chunk[4096];
    const ssize_t got = read(*fdsOwned[i], chunk, sizeof chunk);
    if (got > 0) {
      sinks[i]->append(chunk, static_cast<std::size_t>(got));
    } else {
      CloseFd(*fdsOwned[i]);
    }
  }
}

bool Child::waitForOutput(const std::string& text, int timeoutMs) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (result_.out.find(text) == std::string::npos) {
    if (MsLeft(deadline) == 0 || (out_ < 0 && err_ < 0)) return false;
    pump(std::min(MsLeft(deadline), 100));
  }
  return true;
}

RunResult Child::finish(int timeoutMs) {
  closeInput();
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while ((out_ >= 0 || err_ >= 0) && MsLeft(deadline) > 0) pump(std::min(MsLeft(deadline), 100));
  if (pid_ > 0) {
    int status = 0;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
      if (MsLeft(deadline) == 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
        status = -1;
        break;
      }
      usleep(10000);
    }
    result_.exitCode = status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    pid_ = -1;
  }
  CloseFd(out_);
  CloseFd(err_);
  return result_;
}

void Child::signal(int number) {
  if (pid_ > 0) kill(pid_, number);
}

RunResult Run(const std::vector<std::string>& argv, const std::string& input,
              const std::map<std::string, std::string>& env, int timeoutMs) {
  Child child;
  if (!child.start(argv, env)) {
    ADD_FAILURE() << "cannot start " << argv.front();
    return {};
  }
  child.write(input);
  RunResult result = child.finish(timeoutMs);
  EXPECT_NE(result.exitCode, -1) << argv.front() << " did not end in time; stderr: " << result.err;
  return result;
}

RunResult Vqcam(const std::vector<std::string>& args, const std::string& input,
                std::map<std::string, std::string> env) {
  std::vector<std::string> argv = {VqcamProgram()};
  argv.insert(argv.end(), args.begin(), args.end());
  env.emplace("VQ_DIALOG", "none");
  // No description cache unless a test asks for one, as under ctest.
  env.emplace("XDG_CACHE_HOME", std::string(VQ_BINARY_DIR) + "/no-description-cache");
  return Run(argv, input, env);
}

std::unique_ptr<vq::test::SimProcess> StartSimulator(const std::string& profile) {
  auto simulator = std::make_unique<vq::test::SimProcess>();
  std::string error;
  EXPECT_TRUE(simulator->Start(VQ_SIM_PROGRAM, ExampleProfile(profile), &error)) << error;
  return simulator;
}

std::vector<nlohmann::json> JsonLines(const std::string& out) {
  std::vector<nlohmann::json> lines;
  std::istringstream stream(out);
  std::string line;
  while (std::getline(stream, line)) {
    if (line.empty()) continue;
    try {
      lines.push_back(nlohmann::json::parse(line));
    } catch (const nlohmann::json::exception& e) {
      ADD_FAILURE() << "not JSON: " << line << " (" << e.what() << ")";
    }
  }
  return lines;
}

std::string VqcamProgram() { return VQCAM_PROGRAM; }
std::string ClSerialLibrary() { return VQ_CLSER_LIBRARY; }
std::string ExampleProfile(const std::string& name) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + name;
}
std::string TempPath(const std::string& name) {
  return std::string(VQ_BINARY_DIR) + "/tests/host/" + std::to_string(getpid()) + "-" + name;
}
std::string ReadFile(const std::string& path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace hosttest
