#include "vq/sim/Profile.h"

#include <filesystem>
#include <fstream>
#include <map>

#include "TextUtil.h"

namespace vq::sim {

namespace {

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ProfileError("cannot read " + path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string joinPath(const std::string& directory, const std::string& file) {
  if (directory.empty() || (!file.empty() && file[0] == '/')) return file;
  return (std::filesystem::path(directory) / file).string();
}

uint32_t toU32(const std::string& key, const std::string& value) {
  const auto number = parseInteger(value);
  if (!number || *number < 0 || *number > 0xFFFFFFFFll) {
    throw ProfileError("profile key '" + key + "' needs a number, got '" + value + "'");
  }
  return static_cast<uint32_t>(*number);
}

uint32_t encodingCode(const std::string& name) {
  if (name.empty() || name == "ascii") return 0;
  if (name == "utf8") return 1;
  if (name == "utf16") return 2;
  throw ProfileError("profile key 'string_encoding' must be ascii, utf8 or utf16, got '" + name +
                     "'");
}

std::map<std::string, std::string> parseIni(const std::string& text) {
  std::map<std::string, std::string> entries;
  forEachContentLine(text, [&](const std::string& line, int lineNumber) {
    const auto eq = line.find('=');
    if (eq == std::string::npos) {
      throw ProfileError("profile.ini line " + std::to_string(lineNumber) +
                         ": expected key = value");
    }
    entries[trim(line.substr(0, eq))] = trim(line.substr(eq + 1));
  });
  return entries;
}

}  // namespace

Profile parseProfile(const std::string& iniText, const std::string& directory) {
  auto ini = parseIni(iniText);
  auto take = [&ini](const char* key) {
    auto it = ini.find(key);
    return it == ini.end() ? std::string() : it->second;
  };
  Profile profile;
  profile.manufacturer = take("manufacturer");
  profile.family = take("family");
  profile.model = take("model");
  profile.version = take("version");
  profile.serialNumber = take("serial_number");
  profile.manufacturerInfo = take("manufacturer_info");
  profile.userName = take("user_name");
  if (profile.manufacturer.empty() || profile.model.empty()) {
    throw ProfileError("profile needs 'manufacturer' and 'model'");
  }
  profile.descriptionFileName = take("description");
  if (profile.descriptionFileName.empty()) throw ProfileError("profile needs 'description'");
  profile.descriptionText = readFile(joinPath(directory, profile.descriptionFileName));
  profile.descriptionFileName =
      std::filesystem::path(profile.descriptionFileName).filename().string();
  const std::string compression = take("compression");
  if (compression == "zip" || compression.empty()) {
    profile.zipDescription = true;
  } else if (compression == "none") {
    profile.zipDescription = false;
  } else {
    throw ProfileError("profile key 'compression' must be zip or none, got '" + compression + "'");
  }
  const std::string values = take("values");
  if (!values.empty()) profile.valuesText = readFile(joinPath(directory, values));
  if (!take("baud_rates").empty())
    profile.supportedBaudRates = toU32("baud_rates", take("baud_rates"));
  if ((profile.supportedBaudRates & 1u) == 0 || (profile.supportedBaudRates & ~0xFFu) != 0) {
    throw ProfileError(
        "profile key 'baud_rates' must include 9600 (bit 0x01) and only bits 0x01..0x80");
  }
  struct NumberKey {
    const char* key;
    uint32_t* target;
  };
  for (const NumberKey& number : {NumberKey{"max_response_time_ms", &profile.maxResponseTimeMs},
                                  NumberKey{"command_delay_ms", &profile.commandDelayMs},
                                  NumberKey{"save_time_ms", &profile.saveTimeMs},
                                  NumberKey{"gencp_version", &profile.gencpVersion},
                                  NumberKey{"heartbeat_timeout_ms", &profile.heartbeatTimeoutMs},
                                  NumberKey{"baud_switch_ms", &profile.baudSwitchMs}}) {
    const std::string value = take(number.key);
    if (!value.empty()) *number.target = toU32(number.key, value);
  }
  profile.stringEncoding = encodingCode(take("string_encoding"));
  profile.saveCommand = take("save_command");
  return profile;
}

Profile loadProfile(const std::string& directory, const std::string& overrides) {
  return parseProfile(readFile(joinPath(directory, "profile.ini")) + "\n" + overrides, directory);
}

std::string findDefaultProfile(const std::string& programPath) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (!programPath.empty()) {
    const fs::path installed =
        fs::path(programPath).parent_path() / ".." / "share" / "vqcam" / "examples" / "korva-area";
    if (fs::exists(installed / "profile.ini", ec)) return installed.lexically_normal().string();
  }
#ifdef VQ_SIM_SOURCE_PROFILE_DIR
  const fs::path source(VQ_SIM_SOURCE_PROFILE_DIR);
  if (fs::exists(source / "profile.ini", ec)) return source.string();
#endif
  return std::string();
}

}  // namespace vq::sim
