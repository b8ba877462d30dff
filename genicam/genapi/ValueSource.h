// Where an Integer, Float, Boolean, String or Enumeration takes its value
// from: a constant, pValue (with copies), or pIndex + ValueIndexed entries.
#pragma once

#include <vector>

#include "Node.h"

namespace GenApi {
namespace impl {

class ValueSource {
 public:
  struct Indexed {
    int64_t index;
    Ref ref;           // pValueIndexed
    std::string text;  // ValueIndexed
  };

  // Takes Value/pValue/pValueCopy/pIndex/ValueIndexed/pValueIndexed/ValueDefault/pValueDefault.
  bool Parse(const XmlElem& e, const std::string& node);
  void CollectLinks(NodeImpl* owner, LinkSink& sink);

  bool HasPointer() const { return pValue.Given(); }
  bool IsIndexed() const { return pIndex.Given(); }
  bool HasConstant() const { return hasValue; }
  // The node that currently provides the value (pValue or the selected indexed
  // pointer), or null when the value is a constant text.
  NodeImpl* Current(const NodeImpl* owner, bool ignoreCache, const std::string** constant);
  // Writes value to the node Current() names and returns true; returns false, writing nothing,
  // when the value is a constant text.
  bool WriteInt(const NodeImpl* owner, int64_t value, bool verify);
  // Access mode of the source.
  EAccessMode Mode(const NodeImpl* owner);

  std::string valueText;  // the Value element
  bool hasValue = false;
  Ref pValue;
  std::vector<Ref> copies;
  Ref pIndex;
  std::vector<Indexed> indexed;
  Ref pDefault;
  std::string defaultText;
  bool hasDefault = false;
};

}  // namespace impl
}  // namespace GenApi
