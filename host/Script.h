// Several commands in one vqcam run: on the command line separated by a lone ",", or one
// per line from a file or standard input ("run FILE", "run -").
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "Session.h"

namespace vq::host {

using Words = std::vector<std::string>;

// Splits the words after the options at each lone ",".
std::vector<Words> SplitCommands(const Words& words);

// Runs the commands in order; stops at the first failure (printed) and returns its exit
// code, 0 when all succeeded. A "run" command reads its lines from a file or standard input;
// on an interactive terminal it prompts and goes on after a failure.
int RunCommands(Session& session, const std::vector<Words>& commands);

// Prints a failure as vqcam's one-line message (and as JSON on standard output with --json).
void ReportFailure(const Output& output, const std::string& command, const Failure& failure);

}  // namespace vq::host
