// Running programs for the vqcam end-to-end tests: vqcam itself, the vqcam-sim program on a
// pseudo-terminal, tmux. Every wait is bounded, so a hanging program fails the test instead
// of hanging it.
#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "SimProcess.h"
#include "nlohmann/json.hpp"

namespace hosttest {

struct RunResult {
  int exitCode = -1;  // -1 when the program did not end in time (it was killed)
  std::string out;
  std::string err;
};

// A child process with pipes on its standard streams.
class Child {
 public:
  Child() = default;
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  bool start(const std::vector<std::string>& argv,
             const std::map<std::string, std::string>& env = {});
  void write(const std::string& text);
  void closeInput();
  // Collects output until standard output holds `text` or `timeoutMs` passed.
  bool waitForOutput(const std::string& text, int timeoutMs);
  // Closes standard input and waits for the end, killing the program after `timeoutMs`.
  RunResult finish(int timeoutMs);
  void signal(int number);
  const std::string& output() const { return result_.out; }

 private:
  void pump(int timeoutMs);

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  int err_ = -1;
  RunResult result_;
};

// Runs a program to its end (at most `timeoutMs`), feeding `input` on standard input.
RunResult Run(const std::vector<std::string>& argv, const std::string& input = "",
              const std::map<std::string, std::string>& env = {}, int timeoutMs = 120000);

// vqcam with these arguments; the dialog presenter is "none" and no description cache is
// used unless `env` says otherwise.
RunResult Vqcam(const std::vector<std::string>& args, const std::string& input = "",
                std::map<std::string, std::string> env = {});

// vqcam-sim serving an example profile on a new pseudo-terminal (a failure when it cannot
// start).
std::unique_ptr<vq::test::SimProcess> StartSimulator(const std::string& profile = "korva-area");

// Each line of standard output parsed as JSON; a line that does not parse fails the test.
std::vector<nlohmann::json> JsonLines(const std::string& out);

std::string VqcamProgram();
std::string ClSerialLibrary();
std::string ExampleProfile(const std::string& name);
std::string TempPath(const std::string& name);
std::string ReadFile(const std::string& path);

}  // namespace hosttest
