#include "Text.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace vq::host {

std::string Lower(const std::string& text) {
  std::string out = text;
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return std::string();
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

std::string Normalise(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return out;
}

bool EqualsIgnoreCase(const std::string& a, const std::string& b) { return Lower(a) == Lower(b); }

namespace {

bool GlobAt(const char* pattern, const char* text) {
  for (; *pattern != '\0'; ++pattern, ++text) {
    if (*pattern == '*') {
      for (const char* rest = text;; ++rest) {
        if (GlobAt(pattern + 1, rest)) return true;
        if (*rest == '\0') return false;
      }
    }
    if (*text == '\0' || (*pattern != '?' && *pattern != *text)) return false;
  }
  return *text == '\0';
}

}  // namespace

bool PatternMatches(const std::string& pattern, const std::string& text) {
  const std::string p = Lower(pattern);
  const std::string t = Lower(text);
  if (p.find_first_of("*?") == std::string::npos) return t.find(p) != std::string::npos;
  return GlobAt(p.c_str(), t.c_str());
}

bool SplitWords(const std::string& line, std::vector<std::string>& words, std::string& error) {
  words.clear();
  std::string word;
  bool inWord = false;
  char quote = '\0';
  for (char c : line) {
    if (quote != '\0') {
      if (c == quote) {
        quote = '\0';
      } else {
        word += c;
      }
    } else if (c == '"' || c == '\'') {
      quote = c;
      inWord = true;
    } else if (c == '#' && !inWord) {
      break;
    } else if (std::isspace(static_cast<unsigned char>(c))) {
      if (inWord) words.push_back(word);
      word.clear();
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (quote != '\0') {
    error = "a quote is not closed";
    return false;
  }
  if (inWord) words.push_back(word);
  return true;
}

bool ParseNumber(const std::string& text, double& value) {
  const std::string t = Trim(text);
  if (t.empty()) return false;
  char* end = nullptr;
  const bool hex = t.size() > 2 && t[0] == '0' && (t[1] == 'x' || t[1] == 'X');
  if (hex) {
    value = static_cast<double>(std::strtoull(t.c_str() + 2, &end, 16));
  } else {
    value = std::strtod(t.c_str(), &end);
  }
  return end != nullptr && *end == '\0' && std::isfinite(value);
}

std::string FormatNumber(double value) {
  char text[64];
  for (int precision = 6; precision <= 17; ++precision) {
    std::snprintf(text, sizeof(text), "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

}  // namespace vq::host
