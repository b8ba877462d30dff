// Free operators of gcstring: concatenation, comparison and streaming.
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

#include "GenICam/GCString.h"

namespace GenICam {

namespace {
std::string_view View(const gcstring& text) { return std::string_view(text.data(), text.size()); }
const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }
}  // namespace

gcstring operator+(const gcstring& left, const gcstring& right) {
  gcstring result(left);
  return result.append(right);
}
gcstring operator+(const gcstring& left, const char* right) {
  gcstring result(left);
  return result.append(right);
}
gcstring operator+(const char* left, const gcstring& right) {
  gcstring result(left);
  return result.append(right);
}
gcstring operator+(const gcstring& left, const std::string& right) {
  gcstring result(left);
  return result += right;
}
gcstring operator+(const std::string& left, const gcstring& right) {
  gcstring result(left);
  return result.append(right);
}
gcstring operator+(const gcstring& left, char right) {
  gcstring result(left);
  return result.append(1, right);
}
gcstring operator+(char left, const gcstring& right) {
  gcstring result(1, left);
  return result.append(right);
}

bool operator==(const gcstring& left, const gcstring& right) { return left.compare(right) == 0; }
bool operator==(const gcstring& left, const char* right) { return left.compare(right) == 0; }
bool operator==(const char* left, const gcstring& right) { return right.compare(left) == 0; }
bool operator==(const gcstring& left, const std::string& right) { return View(left) == right; }
bool operator==(const std::string& left, const gcstring& right) { return left == View(right); }
bool operator!=(const gcstring& left, const gcstring& right) { return !(left == right); }
bool operator!=(const gcstring& left, const char* right) { return !(left == right); }
bool operator!=(const char* left, const gcstring& right) { return !(left == right); }
bool operator!=(const gcstring& left, const std::string& right) { return !(left == right); }
bool operator!=(const std::string& left, const gcstring& right) { return !(left == right); }
bool operator<(const gcstring& left, const gcstring& right) { return left.compare(right) < 0; }
bool operator<(const gcstring& left, const char* right) { return left.compare(right) < 0; }
bool operator<(const char* left, const gcstring& right) {
  return gcstring(OrEmpty(left)).compare(right) < 0;
}
bool operator>(const gcstring& left, const gcstring& right) { return right < left; }
bool operator<=(const gcstring& left, const gcstring& right) { return !(right < left); }
bool operator>=(const gcstring& left, const gcstring& right) { return !(left < right); }

std::ostream& operator<<(std::ostream& stream, const gcstring& text) {
  return stream << View(text);
}

std::istream& operator>>(std::istream& stream, gcstring& text) {
  std::string word;
  if (stream >> word) text = word;
  return stream;
}

}  // namespace GenICam
