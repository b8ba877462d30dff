// Parsers for the texts of description elements.
#include "XmlElem.h"

#include <cerrno>
#include <cmath>
#include <clocale>
#include <cstdlib>
#include <sstream>

#include <GenICam.h>

namespace GenApi {
namespace impl {

bool TryParseInt(const std::string& text, int64_t& value) {
  const char* s = text.c_str();
  while (*s == ' ' || *s == '\t' || *s == '\n' || *s == '\r') ++s;
  if (*s == '\0') return false;
  bool negative = false;
  if (*s == '-' || *s == '+') {
    negative = (*s == '-');
    ++s;
  }
  int base = 10;
  if (s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
    base = 16;
    s += 2;
  }
  if (*s == '\0' || *s == '-' || *s == '+' || *s == ' ') return false;
  errno = 0;
  char* end = nullptr;
  const unsigned long long raw = std::strtoull(s, &end, base);
  if (errno == ERANGE || end == s) return false;
  while (*end == ' ' || *end == '\t' || *end == '\n' || *end == '\r') ++end;
  if (*end != '\0') return false;
  if (base == 10 && !negative && raw > static_cast<unsigned long long>(INT64_MAX)) return false;
  if (negative) {
    if (raw > static_cast<unsigned long long>(INT64_MAX) + 1ULL) return false;
    value = static_cast<int64_t>(0ULL - raw);
  } else {
    value = static_cast<int64_t>(raw);  // hex bit patterns above INT64_MAX wrap on purpose
  }
  return true;
}

bool TryParseDouble(const std::string& text, double& value) {
  int64_t asInt = 0;
  if (text.find_first_of("xX") != std::string::npos) {
    if (!TryParseInt(text, asInt)) return false;
    value = static_cast<double>(asInt);
    return true;
  }
  // Locale-independent parse.
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  double v = 0;
  in >> v;
  if (in.fail()) {
    if (text == "INF" || text == "inf" || text == "+INF") {
      value = HUGE_VAL;
      return true;
    }
    if (text == "-INF" || text == "-inf") {
      value = -HUGE_VAL;
      return true;
    }
    return false;
  }
  in >> std::ws;
  if (!in.eof()) return false;
  value = v;
  return true;
}

int64_t ParseInt(const std::string& node, const XmlElem& e) {
  int64_t v = 0;
  if (!TryParseInt(e.text, v))
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' has an invalid integer '%s'", node.c_str(),
                             e.name.c_str(), e.text.c_str());
  return v;
}

double ParseDouble(const std::string& node, const XmlElem& e) {
  double v = 0;
  if (!TryParseDouble(e.text, v))
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' has an invalid number '%s'", node.c_str(),
                             e.name.c_str(), e.text.c_str());
  return v;
}

bool ParseYesNo(const XmlElem& e) {
  return e.text == "Yes" || e.text == "yes" || e.text == "true" || e.text == "1";
}

EAccessMode ParseAccessMode(const XmlElem& e, EAccessMode fallback) {
  if (e.text == "RO") return RO;
  if (e.text == "WO") return WO;
  if (e.text == "RW") return RW;
  if (e.text == "NA") return NA;
  if (e.text == "NI") return NI;
  return fallback;
}

EVisibility ParseVisibility(const XmlElem& e) {
  if (e.text == "Expert") return Expert;
  if (e.text == "Guru") return Guru;
  if (e.text == "Invisible") return Invisible;
  return Beginner;
}

ECachingMode ParseCachingMode(const XmlElem& e) {
  if (e.text == "NoCache" || e.text == "No") return NoCache;
  if (e.text == "WriteAround") return WriteAround;
  return WriteThrough;
}

ERepresentation ParseRepresentation(const XmlElem& e) {
  static const char* const names[] = {"Linear",    "Logarithmic", "Boolean",   "PureNumber",
                                      "HexNumber", "IPV4Address", "MACAddress"};
  for (int i = 0; i < 7; ++i)
    if (e.text == names[i]) return static_cast<ERepresentation>(i);
  return PureNumber;
}

EDisplayNotation ParseDisplayNotation(const XmlElem& e) {
  if (e.text == "Fixed") return fnFixed;
  if (e.text == "Scientific") return fnScientific;
  return fnAutomatic;
}

ESlope ParseSlope(const XmlElem& e) {
  if (e.text == "Increasing") return Increasing;
  if (e.text == "Decreasing") return Decreasing;
  if (e.text == "Varying") return Varying;
  return Automatic;
}

}  // namespace impl
}  // namespace GenApi
