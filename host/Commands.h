// The commands of vqcam: their table (name, arguments, summary) and how each runs against a
// session.
#pragma once

#include <string>
#include <vector>

#include "nlohmann/json.hpp"

namespace vq::host {

class Session;
struct Feature;

struct CommandInfo {
  const char* name;
  const char* arguments;
  const char* summary;
  int minArgs;
  int maxArgs;  // -1: any number
  void (*run)(Session& session, const std::vector<std::string>& args);
};

const std::vector<CommandInfo>& CommandTable();
// The commands' part of --help.
std::string CommandHelp();
// A usage Failure for an unknown command or a wrong number of arguments ("run" included).
void CheckCommand(const std::vector<std::string>& words);
// Runs one command; a usage Failure for an unknown command or wrong arguments.
void RunCommand(Session& session, const std::vector<std::string>& words);

// Shared by the commands: a feature as JSON (with its value when `value` is given) and its
// kind, access and range in words.
nlohmann::json FeatureJson(Session& session, const Feature& feature, const std::string* value);
std::string KindName(const Feature& feature);
std::string AccessName(const Feature& feature);
std::string RangeText(const Feature& feature);

// Commands defined in their own files.
void ExportCommand(Session& session, const std::vector<std::string>& args);
void ImportCommand(Session& session, const std::vector<std::string>& args);
void DescribeCommand(Session& session, const std::vector<std::string>& args);
void ListCommand(Session& session, const std::vector<std::string>& args);

}  // namespace vq::host
