// printf-style formatting into a std::string of any length.
#include <cstdio>
#include <vector>

#include "GenICam/GCException.h"

namespace GenICam {

std::string FormatStringV(const char* format, va_list arguments) {
  if (format == nullptr) return std::string();
  char small[256];
  va_list copy;
  va_copy(copy, arguments);
  const int needed = std::vsnprintf(small, sizeof small, format, copy);
  va_end(copy);
  if (needed < 0) return std::string(format);  // invalid conversion: keep the raw text
  if (static_cast<size_t>(needed) < sizeof small) return std::string(small, needed);
  std::vector<char> large(static_cast<size_t>(needed) + 1);
  va_copy(copy, arguments);
  std::vsnprintf(large.data(), large.size(), format, copy);
  va_end(copy);
  return std::string(large.data(), static_cast<size_t>(needed));
}

std::string FormatString(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = FormatStringV(format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace GenICam
