// The vqcam-sim program as a child process serving a camera on a new
// pseudo-terminal. Its standard input stays open: end of input stops it, which
// is also what happens when the test process dies.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vq::test {

class SimProcess {
 public:
  SimProcess() = default;
  ~SimProcess() { Stop(); }
  SimProcess(const SimProcess&) = delete;
  SimProcess& operator=(const SimProcess&) = delete;

  // Starts `program --pty --profile <profileDir> <extraArguments...>` and waits
  // (bounded) for the device path it prints.
  bool Start(const std::string& program, const std::string& profileDir, std::string* error,
             const std::vector<std::string>& extraArguments = {});
  const std::string& DevicePath() const { return path_; }
  bool IsRunning() const { return pid_ > 0; }
  // Pauses and resumes the program (SIGSTOP / SIGCONT).
  void Pause();
  void Resume();
  // SIGTERM, a bounded wait, SIGKILL if the program did not end. Says how it ended.
  std::string Stop();

 private:
  bool ReadPath(std::string* error);
  bool WaitFor(int timeoutMs, int* status);

  pid_t pid_ = -1;
  int stdin_ = -1;
  int stdout_ = -1;
  std::string path_;
};

}  // namespace vq::test
