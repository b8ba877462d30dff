// ValueSource: constant, pointer or indexed value origin.
#include "ValueSource.h"

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool ValueSource::Parse(const XmlElem& e, NodeImpl* owner, NameTable& names, Arena& arena) {
  switch (e.id) {
    case Elem::Value:
      valueText = e.text;
      hasValue = true;
      return true;
    case Elem::pValue: pValue.SetName(names.Intern(e.Text())); return true;
    case Elem::pValueCopy: {
      Ref ref;
      ref.SetName(names.Intern(e.Text()));
      copies.push_back(arena, ref);
      return true;
    }
    case Elem::pIndex: pIndex.SetName(names.Intern(e.Text())); return true;
    case Elem::ValueIndexed:
    case Elem::pValueIndexed: {
      const char* idx = e.Attr("Index");
      if (!idx)
        throw PROPERTY_EXCEPTION("Node '%s' : element '%s' lacks its Index attribute",
                                 owner->Name(), e.name);
      Indexed entry{ParseInt(owner->Name(), e.name, idx), Ref(), ""};
      if (e.id == Elem::pValueIndexed) entry.ref.SetName(names.Intern(e.Text()));
      else entry.text = e.text;
      indexed.push_back(arena, entry);
      return true;
    }
    case Elem::ValueDefault:
      defaultText = e.text;
      hasDefault = true;
      return true;
    case Elem::pValueDefault: pDefault.SetName(names.Intern(e.Text())); return true;
    default: return false;
  }
}

void ValueSource::CollectLinks(NodeImpl* owner, LinkSink& sink, uint16_t kinds) {
  sink.Link(owner, pValue, LinkClass::Writing, Elem::pValue, kinds);
  for (Ref& r : copies) sink.Link(owner, r, LinkClass::Writing, Elem::pValueCopy, kinds);
  sink.Link(owner, pIndex, LinkClass::Reading, Elem::pIndex, kPolyInteger);
  for (Indexed& i : indexed)
    sink.Link(owner, i.ref, LinkClass::Writing, Elem::pValueIndexed, kinds);
  sink.Link(owner, pDefault, LinkClass::Writing, Elem::pValueDefault, kinds);
}

bool ValueSource::WriteInt(const NodeImpl* owner, int64_t value, bool verify) {
  const char* constant = nullptr;
  NodeImpl* n = Current(owner, false, &constant);
  if (!n) return false;
  CallGuard guard(owner);
  owner->Map()->NoteWritten(n);
  n->SetInt(value, verify);
  return true;
}

NodeImpl* ValueSource::Current(const NodeImpl* owner, bool ignoreCache, const char** constant) {
  *constant = nullptr;
  if (pValue.node()) return pValue.node();
  if (pIndex.node()) {
    const int64_t index = ReadInt(owner, pIndex.node(), ignoreCache);
    for (Indexed& i : indexed) {
      if (i.index != index) continue;
      if (i.ref.node()) return i.ref.node();
      *constant = i.text;
      return nullptr;
    }
    if (pDefault.node()) return pDefault.node();
    if (hasDefault) {
      *constant = defaultText;
      return nullptr;
    }
    throw RUNTIME_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : no value for index %lld", owner->Name(),
        static_cast<long long>(index));
  }
  return nullptr;  // the Value element: the node's own value
}

EAccessMode ValueSource::Mode(const NodeImpl* owner) {
  if (pValue.node()) {
    EAccessMode mode = pValue.node()->AccessModeLocked();
    for (Ref& r : copies) mode = Combine(mode, r.node()->AccessModeLocked());
    return mode;
  }
  if (pIndex.node()) {
    const char* constant = nullptr;
    NodeImpl* n = Current(owner, false, &constant);
    return n ? n->AccessModeLocked() : RO;
  }
  return RW;
}

}  // namespace impl
}  // namespace GenApi
