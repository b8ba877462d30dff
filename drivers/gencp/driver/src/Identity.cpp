#include "Identity.h"

namespace vq::gencpdrv {

namespace {

bool isIdentifierChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr std::size_t kMaxTokens = 5;

void appendUtf8(std::string& text, uint32_t code) {
  if (code < 0x80) {
    text.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    text.push_back(static_cast<char>(0xC0 | code >> 6));
    text.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    text.push_back(static_cast<char>(0xE0 | code >> 12));
    text.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    text.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    text.push_back(static_cast<char>(0xF0 | code >> 18));
    text.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    text.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    text.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

std::string utf16String(const uint8_t* data, std::size_t size) {
  std::size_t at = 0;
  bool bigEndian = true;
  if (size >= 2 && ((data[0] == 0xFE && data[1] == 0xFF) || (data[0] == 0xFF && data[1] == 0xFE))) {
    bigEndian = data[0] == 0xFE;
    at = 2;
  } else if (size >= 2 && data[0] != 0 && data[1] == 0) {
    bigEndian = false;  // "K\0O\0...": little-endian text without a mark
  }
  auto unitAt = [&](std::size_t i) {
    return bigEndian ? static_cast<uint32_t>(data[i] << 8 | data[i + 1])
                     : static_cast<uint32_t>(data[i + 1] << 8 | data[i]);
  };
  std::string text;
  for (; at + 1 < size; at += 2) {
    uint32_t code = unitAt(at);
    if (code == 0) break;
    if (code >= 0xD800 && code < 0xDC00 && at + 3 < size) {
      const uint32_t low = unitAt(at + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    appendUtf8(text, code);
  }
  return text;
}

}  // namespace

std::string DeviceIdentity::shortDeviceId() const {
  return modelTemplate() + "#" + version + "#" + serialNumber;
}

std::string DeviceIdentity::modelTemplate() const {
  return manufacturer + "#" + family + "#" + model;
}

std::string registerString(const uint8_t* data, std::size_t size, uint32_t encoding) {
  if (encoding == kEncodingUtf16) return utf16String(data, size);
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
  if (token.empty() || isDigit(token[0])) token.insert(token.begin(), '_');
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

bool isIdentifier(const std::string& token) {
  if (token.empty() || isDigit(token[0])) return false;
  for (char c : token) {
    if (!isIdentifierChar(c)) return false;
  }
  return true;
}

bool isValidShortTemplate(const std::string& text) {
  const auto tokens = splitTokens(text);
  if (tokens.empty() || tokens.size() > kMaxTokens) return false;
  for (const auto& token : tokens) {
    if (!isIdentifier(token)) return false;
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
