#include "Commands.h"

#include "Failure.h"
#include "Session.h"
#include "Text.h"

namespace vq::host {

namespace {

using Args = std::vector<std::string>;
using nlohmann::json;

// "NAME=VALUE" split at its first "=".
std::pair<std::string, std::string> AssignmentOf(const std::string& word) {
  const auto equals = word.find('=');
  if (equals == std::string::npos || equals == 0) {
    throw UsageError("set takes NAME=VALUE, not '" + word + "'");
  }
  return {Trim(word.substr(0, equals)), word.substr(equals + 1)};
}

// The baud-rate bit of "max" (0: ask the module) or of a rate.
std::uint32_t BaudBitOf(const std::string& word) {
  if (Lower(word) == "max") return 0;
  double rate = 0;
  std::uint32_t bit = 0;
  if (ParseNumber(word, rate) && rate > 0 && rate < 1e7) {
    bit = BitOfBaudRate(static_cast<std::uint32_t>(rate));
  }
  if (bit == 0) {
    throw UsageError("'" + word + "' is not a Camera Link baud rate; use max, 9600, 19200, " +
                     "38400, 57600, 115200, 230400, 460800 or 921600");
  }
  return bit;
}

std::string ValueShown(const Feature& feature, const std::string& text) {
  if (feature.isButton()) return "(command)";
  return UserValue(feature, text);
}

// The camera's identity from its standard features, where the camera has them: the value
// of the first candidate name that resolves, empty otherwise.
std::string Identity(Session& session, std::initializer_list<const char*> candidates) {
  for (const char* name : candidates) {
    try {
      const Feature& feature = session.names().resolve(name);
      return feature.kind == VALUE_KIND_TEXT ? session.readValue(feature) : std::string();
    } catch (const Failure&) {
    }
  }
  return std::string();
}

void Info(Session& session, const Args&) {
  auto& ext = session.extension();
  char model[512] = {};
  char help[512] = {};
  char name[512] = {};
  std::uint32_t unused[3] = {};
  ext.QueryCommand(CMD_MODEL_NAME, model, sizeof(model));
  ext.QueryCommand(CMD_HELP_FILE_NAME, help, sizeof(help));
  ext.GetExtensionName(name, sizeof(name), &unused[0], &unused[1], &unused[2]);
  const bool canSave = ext.QueryCommand(CMD_CAN_SAVE_CONFIGURATION, unused, sizeof(unused)) == 1;
  const auto& catalogue = session.catalogue();
  const std::uint32_t baud = BaudRateOfBit(session.currentBaudBit());
  const std::uint32_t maxBaud = BaudRateOfBit(session.maxBaudBit());
  const auto& backend = session.host().backend();
  const std::string vendor = Identity(session, {"DeviceVendorName", "Vendor Name"});
  const std::string version = Identity(session, {"DeviceVersion", "Device Version"});
  const std::string serial = Identity(session, {"DeviceSerialNumber", "Serial Number"});
  const json result = {
      {"command", "info"},
      {"extension", name},
      {"connection", backend.describe()},
      {"cameraText", session.host().cameraText()},
      {"vendor", vendor},
      {"model", model},
      {"version", version},
      {"serialNumber", serial},
      {"helpFile", help},
      {"baudRate", baud},
      {"maxBaudRate", maxBaud},
      {"visibility", session.visibilityLevel()},
      {"features", catalogue.parameterCount()},
      {"visibleFeatures", catalogue.features().size()},
      {"categories", catalogue.categories().size()},
      {"canSaveConfiguration", canSave},
  };
  const std::vector<Row> rows = {
      {"Extension", name},
      {"Connection", backend.describe()},
      {"Camera text", session.host().cameraText()},
      {"Vendor", vendor},
      {"Model", model},
      {"Version", version},
      {"Serial number", serial},
      {"Help file", help},
      {"Baud rate", std::to_string(baud) + " (fastest common: " + std::to_string(maxBaud) + ")"},
      {"Visibility", result["visibility"].get<std::string>()},
      {"Features", std::to_string(catalogue.parameterCount()) + " (" +
                       std::to_string(catalogue.features().size()) + " shown at this level)"},
      {"Categories", std::to_string(catalogue.categories().size())},
      {"Save config", canSave ? "yes" : "no"},
  };
  session.output().emit(result, AlignedTable(rows));
}

void Get(Session& session, const Args& args) {
  json values = json::array();
  std::vector<Row> rows;
  for (const auto& name : args) {
    const Feature& feature = session.names().resolve(name);
    const std::string text = session.readValue(feature);
    values.push_back(FeatureJson(session, feature, &text));
    rows.push_back({feature.name, "= " + ValueShown(feature, text)});
  }
  session.output().emit({{"command", "get"}, {"values", values}}, AlignedTable(rows));
}

void Set(Session& session, const Args& args) {
  json values = json::array();
  std::vector<Row> rows;
  for (const auto& assignment : args) {
    const auto [name, requested] = AssignmentOf(assignment);
    const Feature& feature = session.names().resolve(name);
    const std::string moduleText = session.names().toModuleText(feature, requested);
    session.writeValue(feature, moduleText, requested);
    const std::string text = session.readValue(feature);
    json item = FeatureJson(session, feature, &text);
    item["requested"] = requested;
    values.push_back(item);
    rows.push_back({feature.name, "= " + ValueShown(feature, text)});
  }
  session.output().emit({{"command", "set"}, {"values", values}}, AlignedTable(rows));
}

void Press(Session& session, const Args& args) {
  const Feature& feature = session.names().resolve(args[0]);
  if (!feature.isButton()) {
    throw UsageError("'" + feature.name + "' is not a command; use 'set " + feature.name +
                     "=VALUE'");
  }
  if (session.extension().PressParameterButton(nullptr, feature.index) != 1) {
    throw session.refusal("the camera refused the command " + feature.name);
  }
  session.output().emit({{"command", "press"}, {"index", feature.index}, {"name", feature.name}},
                        "pressed " + feature.name + "\n");
}

void Categories(Session& session, const Args&) {
  const auto& catalogue = session.catalogue();
  json list = json::array();
  std::vector<Row> rows = {{"#", "Category", "Features"}};
  for (std::size_t index = 0; index < catalogue.categories().size(); ++index) {
    std::size_t count = 0;
    for (const auto& feature : catalogue.features()) count += feature.category == index ? 1 : 0;
    const std::string& name = catalogue.categories()[index];
    list.push_back({{"index", index}, {"name", name}, {"features", count}});
    rows.push_back({std::to_string(index), name, std::to_string(count)});
  }
  session.output().emit({{"command", "categories"}, {"categories", list}}, AlignedTable(rows));
}

void Baud(Session& session, const Args& args) {
  if (!args.empty()) {
    const std::uint32_t bit = BaudBitOf(args[0]);
    session.setBaudBit(bit != 0 ? bit : session.maxBaudBit());
  }
  const std::uint32_t baud = BaudRateOfBit(session.currentBaudBit());
  const std::uint32_t maxBaud = BaudRateOfBit(session.maxBaudBit());
  const std::uint32_t port = BaudRateOfBit(session.host().backend().baudRate());
  session.output().emit(
      {{"command", "baud"}, {"baudRate", baud}, {"maxBaudRate", maxBaud}, {"portBaudRate", port}},
      AlignedTable({{"Baud rate", std::to_string(baud)},
                    {"Fastest common", std::to_string(maxBaud)},
                    {"Port", std::to_string(port)}}));
}

void SaveConfig(Session& session, const Args&) {
  auto& ext = session.extension();
  std::uint32_t unused = 0;
  if (ext.QueryCommand(CMD_CAN_SAVE_CONFIGURATION, &unused, sizeof(unused)) != 1) {
    throw Refused("this camera cannot store its configuration");
  }
  if (ext.ExecuteCommand(CMD_SAVE_CONFIGURATION, &unused, sizeof(unused)) != 1) {
    throw session.refusal("the camera did not store its configuration");
  }
  session.output().emit({{"command", "save-config"}, {"saved", true}},
                        "configuration stored in the camera\n");
}

void Refresh(Session& session, const Args& args) {
  std::string name = args[0];
  if (session.extension().ExecuteCommand(CMD_REFRESH_PARAMETER, name.data(),
                                         static_cast<std::uint32_t>(name.size() + 1)) != 1) {
    throw Refused("the camera driver does not know the parameter '" + args[0] +
                  "'; refresh and visible take node names of the camera's description");
  }
  session.catalogue().reload();
  session.output().emit({{"command", "refresh"}, {"name", args[0]}, {"refreshed", true}},
                        args[0] + " will be read again from the camera\n");
}

void Visible(Session& session, const Args& args) {
  std::string name = args[0];
  const bool visible =
      session.extension().QueryCommand(CMD_IS_PARAMETER_VISIBLE, name.data(),
                                       static_cast<std::uint32_t>(name.size() + 1)) == 1;
  session.output().emit({{"command", "visible"}, {"name", args[0]}, {"visible", visible}},
                        args[0] + (visible ? " is shown\n" : " is not shown\n"));
}

void Watch(Session& session, const Args&) {
  session.setWatching(true);
  session.output().emit({{"command", "watch"}, {"watching", true}},
                        "watching: changes the camera reports are printed as they come\n");
}

}  // namespace

const std::vector<CommandInfo>& CommandTable() {
  static const std::vector<CommandInfo> table = {
      {"info", "", "camera, connection, baud rate, visibility, counts", 0, 0, Info},
      {"list", "[PATTERN]", "features with values, access and range (PATTERN: text or * ?)", 0, 1,
       ListCommand},
      {"get", "NAME...", "read feature values", 1, -1, Get},
      {"set", "NAME=VALUE...", "write feature values, in order", 1, -1, Set},
      {"press", "NAME", "execute a command feature", 1, 1, Press},
      {"categories", "", "top-level categories", 0, 0, Categories},
      {"describe", "NAME", "description, kind, access, limits, entries", 1, 1, DescribeCommand},
      {"baud", "[max|RATE]", "show or switch the serial baud rate", 0, 1, Baud},
      {"save-config", "", "store the configuration in the camera", 0, 0, SaveConfig},
      {"refresh", "NAME", "read a driver parameter again from the camera", 1, 1, Refresh},
      {"visible", "NAME", "whether a driver parameter should be shown", 1, 1, Visible},
      {"watch", "", "print change notices during the following commands", 0, 0, Watch},
      {"export", "FILE", "write every writable value to FILE", 1, 1, ExportCommand},
      {"import", "FILE", "apply the values of FILE, reporting refusals", 1, 1, ImportCommand},
  };
  return table;
}

std::string CommandHelp() {
  std::vector<Row> rows;
  for (const auto& command : CommandTable()) {
    rows.push_back(
        {std::string("  ") + command.name + (*command.arguments ? " " : "") + command.arguments,
         command.summary});
  }
  rows.push_back({"  run FILE|-", "run commands from FILE or standard input, one per line"});
  return AlignedTable(rows);
}

namespace {

const CommandInfo& Find(const std::vector<std::string>& words) {
  const std::string& name = words.front();
  for (const auto& command : CommandTable()) {
    if (name != command.name) continue;
    const int count = static_cast<int>(words.size()) - 1;
    if (count < command.minArgs || (command.maxArgs >= 0 && count > command.maxArgs)) {
      throw UsageError(std::string("usage: vqcam ") + command.name + " " + command.arguments);
    }
    return command;
  }
  throw UsageError("unknown command '" + name + "'; run 'vqcam --help' for the commands");
}

}  // namespace

void CheckCommand(const std::vector<std::string>& words) {
  if (words.front() == "run") {
    if (words.size() != 2) throw UsageError("usage: vqcam run FILE|-");
    return;
  }
  Find(words);
  if (words.front() == "set") {
    for (std::size_t i = 1; i < words.size(); ++i) AssignmentOf(words[i]);
  } else if (words.front() == "baud" && words.size() == 2) {
    BaudBitOf(words[1]);
  }
}

void RunCommand(Session& session, const std::vector<std::string>& words) {
  Find(words).run(session, std::vector<std::string>(words.begin() + 1, words.end()));
}

}  // namespace vq::host
