#include "Session.h"

#include <algorithm>
#include <cstdio>

#include "Commands.h"
#include "Failure.h"
#include "Text.h"
#include "backend/ClSerialBackend.h"
#include "backend/SerialPortBackend.h"
#include "backend/SimulatorBackend.h"
#include "vq/platform/terminal.h"

namespace vq::host {

namespace {

const char* LevelName(std::uint32_t level) {
  switch (level) {
    case MESSAGE_FAILURE:
      return "error";
    case MESSAGE_INFORMATION:
      return "info";
    case MESSAGE_DEVICE_ERROR:
      return "camera";
    default:
      return "message";
  }
}

std::unique_ptr<SerialBackend> MakeBackend(const Options& options) {
  switch (options.link) {
    case Options::Link::Port:
      return std::make_unique<SerialPortBackend>(options.portPath);
    case Options::Link::ClSerial: {
      std::string library;
      std::uint32_t index = 0;
      if (!ClSerialBackend::ParseLibraryArgument(options.clserArgument, library, index)) {
        throw UsageError("--clser takes LIB or LIB:INDEX with a port number, not '" +
                         options.clserArgument + "'");
      }
      return std::make_unique<ClSerialBackend>(library, index);
    }
    case Options::Link::Simulator:
    default:
      return std::make_unique<SimulatorBackend>(options.simulateProfile, options.programPath);
  }
}

std::string OpenFailureText(std::uint32_t status) {
  switch (status) {
    case OPEN_NO_SELECTION:
    case OPEN_NOTHING_TO_LOAD:
      return "no camera description was chosen; name the camera with --camera MODEL "
             "or choose it with --select";
    default:
      return "the camera could not be opened";
  }
}

}  // namespace

Session::Session(const Options& options)
    : options_(options), output_(options.json), progress_(platform::IsStderrTerminal()) {
  if (!options_.visibility.empty()) VisibilityLevelName(options_.visibility);
  if (!options_.baud.empty()) CheckCommand({"baud", options_.baud});
  try {
    backend_ = MakeBackend(options_);
    const std::string cameraText = options_.cameraText.value_or(backend_->defaultCameraText());
    const std::string modulePath =
        options_.modulePath.empty() ? DefaultModulePath() : options_.modulePath;
    host_ = std::make_unique<ModuleHost>(modulePath, *backend_, cameraText);
  } catch (const ConnectionError& e) {
    throw UsageError(e.what());
  }
  connect();
}

Session::~Session() {
  if (host_) host_->close();
}

void Session::connect() {
  auto& events = host_->events();
  events.message = [this](std::uint32_t level, const std::string& text) {
    progress_.clearLine();
    std::fprintf(stderr, "vqcam [%s] %s\n", LevelName(level), text.c_str());
    std::fflush(stderr);
  };
  events.featureChanged = [this](std::uint32_t index) { notices_.push_back(index); };
  events.traffic = [this] { progress_.update(host_->bytesMoved()); };
  events.selectorState = [this](std::uint32_t state) {
    progress_.restartClock();
    if (options_.verbose)
      std::fprintf(stderr, "vqcam: selector check box %s\n", state ? "on" : "off");
  };

  progress_.begin("opening " + backend_->describe());
  const std::uint32_t status = host_->open(options_.alwaysShowSelector);
  progress_.end(host_->bytesMoved(), status == OPEN_CONNECTED ? "open" : "not opened");
  if (status != OPEN_CONNECTED) {
    std::string why = OpenFailureText(status);
    if (status == OPEN_FAILED && !host_->cameraAnswering()) {
      why = "no camera answers on " + backend_->describe() +
            "; check the cable, the power and the baud rate";
    } else if (status == OPEN_FAILED && !host_->lastMessage().empty()) {
      why += " (" + host_->lastMessage() + ")";
    }
    throw UsageError(why + (status == OPEN_FAILED ? "; check the connection and --camera" : ""));
  }
  if (options_.verbose) {
    std::fprintf(stderr, "vqcam: opened %s, %s moved\n", backend_->describe().c_str(),
                 FormatBytes(host_->bytesMoved()).c_str());
  }
  descriptionNames_ = DescriptionNames::FromXml(backend_->knownDescription());
  catalogue_ = std::make_unique<Catalogue>(host_->extension());
  names_ = std::make_unique<FeatureNames>(*catalogue_, descriptionNames_);
  if (!options_.visibility.empty()) setVisibilityLevel(options_.visibility);
  catalogue_->reload();
  if (!options_.baud.empty()) run({"baud", options_.baud});
  takeNotices();
}

void Session::run(const std::vector<std::string>& words) {
  if (words.empty()) return;
  RunCommand(*this, words);
  printNotices();
}

std::vector<std::uint32_t> Session::takeNotices() {
  std::vector<std::uint32_t> unique;
  for (std::uint32_t index : notices_) {
    if (std::find(unique.begin(), unique.end(), index) == unique.end()) unique.push_back(index);
  }
  notices_.clear();
  return unique;
}

void Session::printNotices() {
  const auto notices = takeNotices();
  if (!watching_) return;
  for (std::uint32_t index : notices) {
    const Feature* feature = catalogue_->byIndex(index);
    if (feature == nullptr) continue;  // hidden at this level
    const auto text = catalogue_->valueText(index).value_or("");
    nlohmann::json notice = {{"notice", "changed"},
                             {"index", index},
                             {"name", feature->name},
                             {"value", JsonValue(*feature, text)}};
    output_.emit(notice, "changed: " + feature->name + " = " + UserValue(*feature, text) + "\n");
  }
}

Failure Session::refusal(const std::string& what) const {
  if (!host_->cameraAnswering()) {
    return UsageError("the camera stopped answering on " + backend_->describe() +
                      "; check the cable and the power, then run vqcam again");
  }
  const std::string& said = host_->lastMessage();
  return Refused(what + (said.empty() ? "" : ": " + said));
}

std::string Session::readValue(const Feature& feature) {
  const auto text = catalogue_->valueText(feature.index);
  if (!host_->cameraAnswering()) throw refusal("reading " + feature.name + " failed");
  return text.value_or("");
}

void Session::writeValue(const Feature& feature, const std::string& moduleText,
                         const std::string& shownValue) {
  if (!feature.writable) {
    throw Refused("'" + feature.name +
                  "' is read-only; 'vqcam list' shows which features can be set (access rw)");
  }
  host_->clearLastMessage();
  if (extension().SetParameterValue(feature.index, moduleText.c_str()) != 1) {
    throw refusal("the camera refused " + feature.name + " = " + shownValue);
  }
}

std::string Session::visibilityLevel() {
  char level[VISIBILITY_LEVEL_DATA_SIZE] = {};
  if (extension().QueryCommand(CMD_VISIBILITY_LEVEL, level, sizeof(level)) != 1) return "";
  level[sizeof(level) - 1] = '\0';
  return level;
}

std::string VisibilityLevelName(const std::string& name) {
  static const char* const kLevels[] = {"Beginner", "Expert", "Guru", "Invisible"};
  const auto known = std::find_if(std::begin(kLevels), std::end(kLevels),
                                  [&](const char* level) { return Lower(level) == Lower(name); });
  if (known == std::end(kLevels)) {
    throw UsageError("unknown visibility level '" + name +
                     "'; use beginner, expert, guru or invisible");
  }
  return *known;
}

void Session::setVisibilityLevel(const std::string& name) {
  char level[VISIBILITY_LEVEL_DATA_SIZE] = {};
  std::snprintf(level, sizeof(level), "%s", VisibilityLevelName(name).c_str());
  if (extension().ExecuteCommand(CMD_VISIBILITY_LEVEL, level, sizeof(level)) != 1) {
    throw Refused("the camera module did not accept the visibility level " + name);
  }
  if (catalogue_) catalogue_->reload();
}

std::uint32_t Session::currentBaudBit() {
  std::uint32_t bit = 0;
  extension().QueryCommand(CMD_CURRENT_BAUD_RATE, &bit, sizeof(bit));
  return bit;
}

std::uint32_t Session::maxBaudBit() {
  std::uint32_t bit = 0;
  extension().QueryCommand(CMD_MAX_BAUD_RATE, &bit, sizeof(bit));
  return bit;
}

void Session::setBaudBit(std::uint32_t bit) {
  host_->clearLastMessage();
  if (extension().ExecuteCommand(CMD_SET_BAUD_RATE, &bit, sizeof(bit)) != 1) {
    throw refusal("the camera did not switch to " + std::to_string(BaudRateOfBit(bit)) + " baud");
  }
  takeNotices();
}

}  // namespace vq::host
