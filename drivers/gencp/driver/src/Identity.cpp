#include "Identity.h"

namespace vq::gencpdrv {

namespace {

bool isIdentifierChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

constexpr std::size_t kMaxTokens = 5;

}  // namespace

std::string DeviceIdentity::shortDeviceId() const {
  return modelTemplate() + "#" + version + "#" + serialNumber;
}

std::string DeviceIdentity::modelTemplate() const {
  return manufacturer + "#" + family + "#" + model;
}

std::string registerString(const unsigned char* data, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size && data[i] != 0; ++i) text.push_back(static_cast<char>(data[i]));
  return text;
}

std::string toIdentifierToken(const std::string& text) {
  std::string token;
  bool lastWasReplacement = true;  // drops leading replacements
  for (char c : text) {
    if (isIdentifierChar(c)) {
      token.push_back(c);
      lastWasReplacement = false;
    } else if (!lastWasReplacement) {
      token.push_back('_');
      lastWasReplacement = true;
    }
  }
  if (lastWasReplacement && !token.empty()) token.pop_back();  // a trailing replacement
  return token;
}

std::vector<std::string> splitTokens(const std::string& text) {
  std::vector<std::string> tokens;
  if (text.empty()) return tokens;
  std::size_t start = 0;
  while (true) {
    const std::size_t hash = text.find('#', start);
    tokens.push_back(text.substr(start, hash == std::string::npos ? std::string::npos : hash - start));
    if (hash == std::string::npos) break;
    start = hash + 1;
  }
  return tokens;
}

bool isValidShortTemplate(const std::string& text) {
  const auto tokens = splitTokens(text);
  if (tokens.empty() || tokens.size() > kMaxTokens || tokens.front().empty()) return false;
  for (const auto& token : tokens) {
    for (char c : token) {
      if (!isIdentifierChar(c)) return false;
    }
  }
  return true;
}

bool templateMatches(const std::string& shortTemplate, const std::string& shortDeviceId) {
  const auto wanted = splitTokens(shortTemplate);
  const auto actual = splitTokens(shortDeviceId);
  if (wanted.empty() || wanted.size() > actual.size()) return false;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] != actual[i]) return false;
  }
  return true;
}

}  // namespace vq::gencpdrv
