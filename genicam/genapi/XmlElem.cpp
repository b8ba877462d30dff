// Element ids and the parsers for the element texts.
#include "XmlElem.h"

#include <GenICam.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <pugixml.hpp>

#include "Arena.h"
#include "ElemTable.h"
#include "NameTable.h"

namespace GenApi {
namespace impl {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSpace(s.back())) s.remove_suffix(1);
  return s;
}

int Digit(char c, int base) {
  int d = 99;
  if (c >= '0' && c <= '9')
    d = c - '0';
  else if (c >= 'a' && c <= 'f')
    d = c - 'a' + 10;
  else if (c >= 'A' && c <= 'F')
    d = c - 'A' + 10;
  return d < base ? d : -1;
}

bool Is(const XmlElem& e, std::string_view text) { return e.Is(text); }

}  // namespace

Elem ElemOfPrefixed(const char* name, size_t size) {
  const std::string_view written(name, size);
  const size_t colon = written.rfind(':');
  if (colon == std::string_view::npos) return Elem::Unknown;
  return kElemTable.Find(written.substr(colon + 1));
}

const char* XmlElem::Attr(const char* attributeName) const {
  if (*attrName != '\0' && std::strcmp(attrName, attributeName) == 0) return attr;
  if (xml == nullptr) return nullptr;
  const pugi::xml_attribute a = pugi::xml_node(xml).attribute(attributeName);
  if (a.empty()) return nullptr;
  return arena != nullptr ? arena->Copy(a.value()) : nullptr;
}

bool TryParseInt(std::string_view text, int64_t& value) {
  std::string_view s = Trim(text);
  if (s.empty()) return false;
  bool negative = false;
  if (s.front() == '-' || s.front() == '+') {
    negative = s.front() == '-';
    s.remove_prefix(1);
  }
  int base = 10;
  if (s.size() >= 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
    base = 16;
    s.remove_prefix(2);
  }
  if (s.empty()) return false;
  uint64_t raw = 0;
  const uint64_t limit = UINT64_MAX / uint64_t(base);
  for (char c : s) {
    const int d = Digit(c, base);
    if (d < 0 || raw > limit) return false;
    const uint64_t next = raw * uint64_t(base) + uint64_t(d);
    if (next < raw * uint64_t(base)) return false;
    raw = next;
  }
  if (base == 10 && !negative && raw > static_cast<uint64_t>(INT64_MAX)) return false;
  if (negative) {
    if (raw > static_cast<uint64_t>(INT64_MAX) + 1ULL) return false;
    value = static_cast<int64_t>(0ULL - raw);
  } else {
    value = static_cast<int64_t>(raw);  // hex bit patterns above INT64_MAX wrap on purpose
  }
  return true;
}

bool TryParseDouble(std::string_view text, double& value) {
  std::string_view s = Trim(text);
  if (s.find_first_of("xX") != std::string_view::npos) {
    int64_t asInt = 0;
    if (!TryParseInt(s, asInt)) return false;
    value = static_cast<double>(asInt);
    return true;
  }
  if (!s.empty() && s.front() == '+') {
    s.remove_prefix(1);
    if (!s.empty() && s.front() == '-') return false;
  }
  if (s.empty()) return false;
  double v = 0;
  const auto result = std::from_chars(s.data(), s.data() + s.size(), v);
  if (result.ec != std::errc() || result.ptr != s.data() + s.size() || std::isnan(v)) return false;
  value = v;
  return true;
}

int64_t ParseInt(const char* node, const char* element, std::string_view text) {
  int64_t v = 0;
  if (!TryParseInt(text, v))
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' has an invalid integer '%.*s'", node,
                             element, static_cast<int>(text.size()), text.data());
  return v;
}

double ParseDouble(const char* node, const char* element, std::string_view text) {
  double v = 0;
  if (!TryParseDouble(text, v))
    throw PROPERTY_EXCEPTION("Node '%s' : element '%s' has an invalid number '%.*s'", node, element,
                             static_cast<int>(text.size()), text.data());
  return v;
}

double ParseDouble(const char* node, const XmlElem& e) {
  return ParseDouble(node, e.name, e.Text());
}

bool ParseYesNo(const XmlElem& e) {
  return Is(e, "Yes") || Is(e, "yes") || Is(e, "true") || Is(e, "1");
}

EAccessMode ParseAccessMode(const XmlElem& e, EAccessMode fallback) {
  static const std::pair<std::string_view, EAccessMode> modes[] = {
      {"RO", RO}, {"WO", WO}, {"RW", RW}, {"NA", NA}, {"NI", NI}};
  for (const auto& m : modes)
    if (Is(e, m.first)) return m.second;
  return fallback;
}

EVisibility ParseVisibility(const XmlElem& e) {
  if (Is(e, "Expert")) return Expert;
  if (Is(e, "Guru")) return Guru;
  if (Is(e, "Invisible")) return Invisible;
  return Beginner;
}

ECachingMode ParseCachingMode(const XmlElem& e) {
  if (Is(e, "NoCache") || Is(e, "No")) return NoCache;
  if (Is(e, "WriteAround")) return WriteAround;
  return WriteThrough;
}

ERepresentation ParseRepresentation(const XmlElem& e) {
  static const std::string_view names[] = {"Linear",    "Logarithmic", "Boolean",   "PureNumber",
                                           "HexNumber", "IPV4Address", "MACAddress"};
  for (int i = 0; i < 7; ++i)
    if (Is(e, names[i])) return static_cast<ERepresentation>(i);
  return PureNumber;
}

EDisplayNotation ParseDisplayNotation(const XmlElem& e) {
  if (Is(e, "Fixed")) return fnFixed;
  if (Is(e, "Scientific")) return fnScientific;
  return fnAutomatic;
}

ESlope ParseSlope(const XmlElem& e) {
  if (Is(e, "Increasing")) return Increasing;
  if (Is(e, "Decreasing")) return Decreasing;
  if (Is(e, "Varying")) return Varying;
  return Automatic;
}

}  // namespace impl
}  // namespace GenApi
