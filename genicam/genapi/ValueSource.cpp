// ValueSource: constant, pointer or indexed value origin.
#include "ValueSource.h"

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool ValueSource::Parse(const XmlElem& e, const std::string& node) {
  if (e.name == "Value") {
    valueText = e.text;
    hasValue = true;
  } else if (e.name == "pValue") {
    pValue.name = e.text;
  } else if (e.name == "pValueCopy") {
    copies.push_back(Ref{e.text, nullptr});
  } else if (e.name == "pIndex") {
    pIndex.name = e.text;
  } else if (e.name == "ValueIndexed" || e.name == "pValueIndexed") {
    const std::string* idx = e.Attr("Index");
    if (!idx)
      throw PROPERTY_EXCEPTION("Node '%s' : element '%s' lacks its Index attribute", node.c_str(),
                               e.name.c_str());
    XmlElem indexElem{e.name, *idx, {}};
    Indexed entry{ParseInt(node, indexElem), Ref{}, std::string()};
    if (e.name == "pValueIndexed") entry.ref.name = e.text;
    else entry.text = e.text;
    indexed.push_back(entry);
  } else if (e.name == "ValueDefault") {
    defaultText = e.text;
    hasDefault = true;
  } else if (e.name == "pValueDefault") {
    pDefault.name = e.text;
  } else {
    return false;
  }
  return true;
}

void ValueSource::CollectLinks(NodeImpl* owner, LinkSink& sink) {
  sink.Link(owner, pValue, LinkClass::Writing, "pValue");
  for (Ref& r : copies) sink.Link(owner, r, LinkClass::Writing, "pValueCopy");
  sink.Link(owner, pIndex, LinkClass::Reading, "pIndex");
  for (Indexed& i : indexed) sink.Link(owner, i.ref, LinkClass::Writing, "pValueIndexed");
  sink.Link(owner, pDefault, LinkClass::Writing, "pValueDefault");
}

bool ValueSource::WriteInt(const NodeImpl* owner, int64_t value, bool verify) {
  const std::string* constant = nullptr;
  NodeImpl* n = Current(owner, false, &constant);
  if (!n) return false;
  CallGuard guard(owner);
  owner->Map()->NoteWritten(n);
  n->SetInt(value, verify);
  return true;
}

NodeImpl* ValueSource::Current(const NodeImpl* owner, bool ignoreCache,
                               const std::string** constant) {
  *constant = nullptr;
  if (pValue.node) return pValue.node;
  if (pIndex.node) {
    const int64_t index = ReadInt(owner, pIndex.node, ignoreCache);
    for (Indexed& i : indexed) {
      if (i.index != index) continue;
      if (i.ref.node) return i.ref.node;
      *constant = &i.text;
      return nullptr;
    }
    if (pDefault.node) return pDefault.node;
    if (hasDefault) {
      *constant = &defaultText;
      return nullptr;
    }
    throw RUNTIME_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
        "Node '%s' : no value for index %lld", owner->Name().c_str(),
        static_cast<long long>(index));
  }
  *constant = &valueText;
  return nullptr;
}

EAccessMode ValueSource::Mode(const NodeImpl* owner) {
  if (pValue.node) {
    EAccessMode mode = pValue.node->AccessModeLocked();
    for (Ref& r : copies) mode = Combine(mode, r.node->AccessModeLocked());
    return mode;
  }
  if (pIndex.node) {
    const std::string* constant = nullptr;
    NodeImpl* n = Current(owner, false, &constant);
    return n ? n->AccessModeLocked() : RO;
  }
  return RW;
}

}  // namespace impl
}  // namespace GenApi
