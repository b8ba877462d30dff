#include <CLProtocol/DeviceID.h>

#include <vq/platform/environment.h>

#include <string>
#include <vector>

namespace CLProtocol {

using GenICam::gcstring;

namespace {

constexpr size_t kFullTokens = 7;
constexpr size_t kShortTokens = 5;
constexpr size_t kDriverTokens = 2;

bool isIdentifierChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isIdentifierText(const std::string& text) {
  for (char c : text) {
    if (!isIdentifierChar(c)) return false;
  }
  return true;
}

// The rule for device-ID tokens: C identifiers, so not empty and not starting with a digit.
bool isCIdentifier(const std::string& text) {
  return !text.empty() && !(text[0] >= '0' && text[0] <= '9') && isIdentifierText(text);
}

std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> tokens;
  size_t start = 0;
  while (true) {
    const size_t hash = text.find('#', start);
    tokens.push_back(text.substr(start, hash == std::string::npos ? std::string::npos : hash - start));
    if (hash == std::string::npos) return tokens;
    start = hash + 1;
  }
}

// Driver fields are a path and a file name, never plain identifiers.
bool namesDriver(const std::vector<std::string>& tokens) {
  return tokens.size() > kDriverTokens && (!isIdentifierText(tokens[0]) || !isIdentifierText(tokens[1]));
}

bool validShortPart(const std::vector<std::string>& tokens, size_t first) {
  if (tokens.size() <= first || tokens.size() - first > kShortTokens) return false;
  if (tokens[first].empty()) return false;
  for (size_t i = first; i < tokens.size(); ++i) {
    if (!isIdentifierText(tokens[i])) return false;
  }
  return true;
}

}  // namespace

gcstring ReplaceEnvironmentVariables(const gcstring& text) {
  const std::string input(text.c_str(), text.size());
  std::string output;
  size_t pos = 0;
  while (pos < input.size()) {
    const size_t open = input.find("$(", pos);
    const size_t close = open == std::string::npos ? open : input.find(')', open + 2);
    if (close == std::string::npos) {
      output += input.substr(pos);
      break;
    }
    output += input.substr(pos, open - pos);
    const auto value = vq::platform::GetEnv(input.substr(open + 2, close - open - 2));
    if (value) output += *value;
    pos = close + 1;
  }
  return gcstring(output);
}

CDeviceID::CDeviceID() : m_DeviceIDTokens(kFullTokens), m_NumTokens(0), m_HasDriver(false) {}
CDeviceID::CDeviceID(const CDeviceID& other) = default;
CDeviceID& CDeviceID::operator=(const CDeviceID& other) = default;
CDeviceID::~CDeviceID() = default;

bool CDeviceID::FromString(const gcstring& DeviceID) {
  m_DeviceIDTokens = GenICam::gcstring_vector(kFullTokens);
  m_NumTokens = 0;
  m_HasDriver = false;
  const std::string text(DeviceID.c_str(), DeviceID.size());
  if (text.empty() || text.find('\0') != std::string::npos) return false;
  const std::vector<std::string> tokens = split(text);
  if (tokens.size() > kFullTokens) return false;
  const bool full = namesDriver(tokens);
  const size_t first = full ? kDriverTokens : 0;
  if (full && tokens[1].empty()) return false;
  if (!validShortPart(tokens, first)) return false;
  for (size_t i = 0; i < tokens.size(); ++i) {
    m_DeviceIDTokens[full ? i : i + kDriverTokens] = gcstring(tokens[i]);
  }
  m_NumTokens = full ? tokens.size() : tokens.size() + kDriverTokens;
  m_HasDriver = full;
  return true;
}

gcstring CDeviceID::Token(EDeviceIDIndex index) const { return m_DeviceIDTokens[index]; }

gcstring CDeviceID::GetShortDeviceID() const {
  gcstring result;
  for (size_t i = kDriverTokens; i < m_NumTokens; ++i) {
    if (i > kDriverTokens) result += GetTokenSeparator();
    result += m_DeviceIDTokens[i];
  }
  return result;
}

gcstring CDeviceID::GetDeviceID(bool ReplaceEnvironmentVariables) const {
  if (!m_HasDriver) return GetShortDeviceID();
  return GetDriverDirectory(ReplaceEnvironmentVariables) + GetTokenSeparator() +
         GetDriverFileName() + GetTokenSeparator() + GetShortDeviceID();
}

gcstring CDeviceID::GetDriverPath(bool ReplaceEnvironmentVariables) const {
  // Without a directory there is no path: a bare file name would let the loader pick any
  // library of that name from its search path.
  const gcstring directory = GetDriverDirectory(ReplaceEnvironmentVariables);
  if (!m_HasDriver || directory.empty()) return gcstring();
  return directory + "/" + GetDriverFileName();
}

gcstring CDeviceID::GetDriverDirectory(bool ReplaceEnvironmentVariables) const {
  const gcstring directory = Token(didDriverDirectory);
  return ReplaceEnvironmentVariables ? CLProtocol::ReplaceEnvironmentVariables(directory) : directory;
}

gcstring CDeviceID::GetDriverFileName() const { return Token(didDriverFileName); }
gcstring CDeviceID::GetCameraManufacturer() const { return Token(didCameraManufacturer); }
gcstring CDeviceID::GetCameraFamily() const { return Token(didCameraFamily); }
gcstring CDeviceID::GetCameraModel() const { return Token(didCameraModel); }
gcstring CDeviceID::GetCameraVersion() const { return Token(didCameraVersion); }
gcstring CDeviceID::GetCameraSerialNumber() const { return Token(didCameraSerialNumber); }
bool CDeviceID::HasDriver() const { return m_HasDriver; }

bool CDeviceID::HasIdentifierTokens() const {
  if (m_NumTokens <= kDriverTokens) return false;
  for (size_t i = kDriverTokens; i < m_NumTokens; ++i) {
    if (!isCIdentifier(m_DeviceIDTokens[i].c_str())) return false;
  }
  return true;
}
size_t CDeviceID::GetNumShortTokens() const {
  return m_NumTokens > kDriverTokens ? m_NumTokens - kDriverTokens : 0;
}
const char* CDeviceID::GetTokenSeparator() { return "#"; }

}  // namespace CLProtocol
