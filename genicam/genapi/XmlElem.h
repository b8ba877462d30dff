// One child element of a node description, detached from the XML parser, and
// the parsers for the element texts.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <GenApi/Types.h>

namespace GenApi {
namespace impl {

struct XmlElem {
  std::string name;  // local name, namespace prefix removed
  std::string text;  // trimmed text content
  std::vector<std::pair<std::string, std::string>> attrs;

  const std::string* Attr(const char* attrName) const {
    for (const auto& a : attrs)
      if (a.first == attrName) return &a.second;
    return nullptr;
  }
};

// Text parsers; each throws a PropertyException naming node and element on bad text.
int64_t ParseInt(const std::string& node, const XmlElem& e);
double ParseDouble(const std::string& node, const XmlElem& e);
bool ParseYesNo(const XmlElem& e);
EAccessMode ParseAccessMode(const XmlElem& e, EAccessMode fallback);
EVisibility ParseVisibility(const XmlElem& e);
ECachingMode ParseCachingMode(const XmlElem& e);
ERepresentation ParseRepresentation(const XmlElem& e);
EDisplayNotation ParseDisplayNotation(const XmlElem& e);
ESlope ParseSlope(const XmlElem& e);

// Text helpers without node context; return false when the text is not a number.
bool TryParseInt(const std::string& text, int64_t& value);
bool TryParseDouble(const std::string& text, double& value);

}  // namespace impl
}  // namespace GenApi
