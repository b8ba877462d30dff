#include "Script.h"

#include <fstream>
#include <iostream>

#include "Failure.h"
#include "Text.h"
#include "vq/platform/terminal.h"

namespace vq::host {

std::vector<Words> SplitCommands(const Words& words) {
  std::vector<Words> commands(1);
  for (const auto& word : words) {
    if (word == ",") {
      commands.emplace_back();
    } else {
      commands.back().push_back(word);
    }
  }
  std::vector<Words> nonEmpty;
  for (auto& command : commands) {
    if (!command.empty()) nonEmpty.push_back(std::move(command));
  }
  return nonEmpty;
}

void ReportFailure(const Output& output, const std::string& command, const Failure& failure) {
  std::fprintf(stderr, "vqcam: %s\n", failure.what());
  std::fflush(stderr);
  if (output.json()) {
    const nlohmann::json result = {
        {"command", command}, {"error", failure.what()}, {"exitCode", failure.exitCode()}};
    std::printf("%s\n",
                result.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    std::fflush(stdout);
  }
}

namespace {

int RunOne(Session& session, const Words& command) {
  try {
    session.run(command);
    return kExitSuccess;
  } catch (const Failure& failure) {
    ReportFailure(session.output(), command.front(), failure);
    return failure.exitCode();
  } catch (const std::exception& error) {
    // The module lets some GenICam exceptions through its interface.
    ReportFailure(session.output(), command.front(),
                  Refused(std::string("the camera module failed: ") + error.what()));
    return kExitRefused;
  }
}

int RunScript(Session& session, std::istream& input, bool interactive) {
  int result = kExitSuccess;
  std::string line;
  for (int number = 1;; ++number) {
    if (interactive) std::fputs("vqcam> ", stderr);
    if (!std::getline(input, line)) break;
    Words words;
    std::string error;
    if (!SplitWords(line, words, error)) {
      ReportFailure(session.output(), "run",
                    UsageError("line " + std::to_string(number) + ": " + error));
      result = kExitUsage;
    } else if (!words.empty() && words.front() == "run") {
      ReportFailure(session.output(), "run", UsageError("a script cannot run another script"));
      result = kExitUsage;
    } else if (!words.empty()) {
      result = RunOne(session, words);
    }
    if (result != kExitSuccess && !interactive) return result;
  }
  if (interactive) std::fputs("\n", stderr);
  return interactive ? kExitSuccess : result;
}

}  // namespace

int RunCommands(Session& session, const std::vector<Words>& commands) {
  for (const auto& command : commands) {
    int result = kExitSuccess;
    if (command.front() == "run") {
      if (command.size() != 2) {
        ReportFailure(session.output(), "run", UsageError("usage: vqcam run FILE|-"));
        return kExitUsage;
      }
      if (command[1] == "-") {
        result = RunScript(session, std::cin, platform::IsStdinTerminal());
      } else {
        std::ifstream file(command[1]);
        if (!file) {
          ReportFailure(session.output(), "run",
                        UsageError("cannot read " + command[1] + "; check the file name"));
          return kExitUsage;
        }
        result = RunScript(session, file, false);
      }
    } else {
      result = RunOne(session, command);
    }
    if (result != kExitSuccess) return result;
  }
  return kExitSuccess;
}

}  // namespace vq::host
