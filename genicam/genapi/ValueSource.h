// Where an Integer, Float, Boolean, String or Enumeration takes its value
// from: a constant, pValue (with copies), or pIndex + ValueIndexed entries.
#pragma once

#include <vector>

#include "NameTable.h"
#include "Node.h"

namespace GenApi {
namespace impl {

class ValueSource {
 public:
  struct Indexed {
    int64_t index;
    Ref ref;           // pValueIndexed
    const char* text;  // ValueIndexed
  };

  // Takes Value/pValue/pValueCopy/pIndex/ValueIndexed/pValueIndexed/ValueDefault/pValueDefault.
  bool Parse(const XmlElem& e, NodeImpl* owner, NameTable& names, Arena& arena);
  // kinds: the node kinds the value pointers may name.
  void CollectLinks(NodeImpl* owner, LinkSink& sink, uint16_t kinds);

  bool HasPointer() const { return pValue.Given(); }
  bool IsIndexed() const { return pIndex.Given(); }
  bool HasConstant() const { return hasValue; }
  // The node that currently provides the value (pValue or the selected indexed
  // pointer), or null when the value is a constant: then *constant is the
  // selected ValueIndexed/ValueDefault text, or null for the node's own value.
  NodeImpl* Current(const NodeImpl* owner, bool ignoreCache, const char** constant);
  // Writes value to the node Current() names and returns true; returns false, writing nothing,
  // when the value is a constant text.
  bool WriteInt(const NodeImpl* owner, int64_t value, bool verify);
  // Access mode of the source.
  EAccessMode Mode(const NodeImpl* owner);

  const char* valueText = "";  // the Value element
  bool hasValue = false;
  bool hasDefault = false;
  Ref pValue;
  ArenaVec<Ref> copies;
  Ref pIndex;
  ArenaVec<Indexed> indexed;
  Ref pDefault;
  const char* defaultText = "";
};

}  // namespace impl
}  // namespace GenApi
