// Text forms of integer and float values.
#include "ValueFormat.h"

#include <cstdio>
#include <iomanip>
#include <locale>
#include <sstream>

#include "XmlElem.h"

namespace GenApi {
namespace impl {

std::string FormatInteger(int64_t value, ERepresentation representation) {
  char buf[64];
  const uint64_t u = static_cast<uint64_t>(value);
  switch (representation) {
    case HexNumber:
      std::snprintf(buf, sizeof buf, "0x%llx", static_cast<unsigned long long>(u));
      return buf;
    case IPV4Address:
      std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", unsigned((u >> 24) & 0xff),
                    unsigned((u >> 16) & 0xff), unsigned((u >> 8) & 0xff), unsigned(u & 0xff));
      return buf;
    case MACAddress:
      std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", unsigned((u >> 40) & 0xff),
                    unsigned((u >> 32) & 0xff), unsigned((u >> 24) & 0xff),
                    unsigned((u >> 16) & 0xff), unsigned((u >> 8) & 0xff), unsigned(u & 0xff));
      return buf;
    case Boolean:
      return value != 0 ? "true" : "false";
    default:
      std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(value));
      return buf;
  }
}

namespace {
// Parses "n.n.n.n" (base 10) or "h:h:h:h:h:h" (base 16) into one number.
bool ParseGroups(const std::string& text, char sep, int count, int base, unsigned maxPart,
                 int64_t& value) {
  uint64_t result = 0;
  size_t pos = 0;
  for (int i = 0; i < count; ++i) {
    const size_t end = (i == count - 1) ? text.size() : text.find(sep, pos);
    if (end == std::string::npos || end == pos || end - pos > 3) return false;
    unsigned part = 0;
    for (size_t k = pos; k < end; ++k) {
      const char c = text[k];
      int digit = -1;
      if (c >= '0' && c <= '9') digit = c - '0';
      else if (base == 16 && c >= 'a' && c <= 'f') digit = c - 'a' + 10;
      else if (base == 16 && c >= 'A' && c <= 'F') digit = c - 'A' + 10;
      if (digit < 0) return false;
      part = part * base + digit;
    }
    if (part > maxPart) return false;
    result = (result << 8) | part;
    pos = end + 1;
  }
  value = static_cast<int64_t>(result);
  return true;
}
}  // namespace

bool ParseIntegerText(const std::string& text, int64_t& value) {
  if (TryParseInt(text, value)) return true;
  if (text == "true") {
    value = 1;
    return true;
  }
  if (text == "false") {
    value = 0;
    return true;
  }
  if (text.find('.') != std::string::npos && ParseGroups(text, '.', 4, 10, 255, value))
    return true;
  if (text.find(':') != std::string::npos && ParseGroups(text, ':', 6, 16, 255, value))
    return true;
  return false;
}

std::string FormatFloat(double value, EDisplayNotation notation, int64_t precision) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  if (precision < 0 || precision > 40) precision = 6;
  if (notation == fnFixed) out << std::fixed;
  else if (notation == fnScientific) out << std::scientific;
  out << std::setprecision(static_cast<int>(precision)) << value;
  return out.str();
}

}  // namespace impl
}  // namespace GenApi
