#include "TextUtil.h"

#include <cctype>
#include <limits>
#include <sstream>

namespace vq::sim {

std::string trim(const std::string& text) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
  while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
  return text.substr(begin, end - begin);
}

std::string stripComment(const std::string& line) {
  const auto hash = line.find('#');
  return hash == std::string::npos ? line : line.substr(0, hash);
}

std::optional<int64_t> parseInteger(const std::string& raw) {
  const std::string text = trim(raw);
  if (text.empty()) return std::nullopt;
  std::size_t i = 0;
  bool negative = false;
  if (text[0] == '-') {
    negative = true;
    i = 1;
  }
  unsigned base = 10;
  if (text.size() > i + 1 && text[i] == '0' && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
    base = 16;
    i += 2;
  }
  if (i >= text.size()) return std::nullopt;
  uint64_t value = 0;
  for (; i < text.size(); ++i) {
    const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
    unsigned digit;
    if (c >= '0' && c <= '9') {
      digit = static_cast<unsigned>(c - '0');
    } else if (base == 16 && c >= 'a' && c <= 'f') {
      digit = static_cast<unsigned>(c - 'a' + 10);
    } else {
      return std::nullopt;
    }
    if (value > (std::numeric_limits<uint64_t>::max() - digit) / base) return std::nullopt;
    value = value * base + digit;
  }
  if (negative) {
    if (value > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + 1) return std::nullopt;
    return static_cast<int64_t>(0 - value);
  }
  // Hexadecimal values up to 64 bits keep their bit pattern.
  if (base == 10 && value > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
    return std::nullopt;
  }
  return static_cast<int64_t>(value);
}

void forEachContentLine(const std::string& text,
                        const std::function<void(const std::string&, int)>& visit) {
  std::istringstream in(text);
  std::string line;
  int lineNumber = 0;
  while (std::getline(in, line)) {
    ++lineNumber;
    line = trim(stripComment(line));
    if (!line.empty()) visit(line, lineNumber);
  }
}

}  // namespace vq::sim
