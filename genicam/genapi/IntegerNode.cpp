// Integer node.
#include "IntegerNode.h"

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool IntegerNode::ParseSpecific(const XmlElem& e) {
  if (source_.Parse(e, this, map_->Names(), Memory())) return true;
  switch (e.id) {
    case Elem::Min: min_ = ParseInt(name_, e); hasMin_ = true; return true;
    case Elem::Max: max_ = ParseInt(name_, e); hasMax_ = true; return true;
    case Elem::Inc: inc_ = ParseInt(name_, e); hasInc_ = true; return true;
    case Elem::pMin: SetRef(pMin_, e); return true;
    case Elem::pMax: SetRef(pMax_, e); return true;
    case Elem::pInc: SetRef(pInc_, e); return true;
    default: return IntegerBase::ParseSpecific(e);
  }
}

void IntegerNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kPolyInteger);
  sink.Link(this, pMin_, LinkClass::Reading, Elem::pMin, kPolyInteger);
  sink.Link(this, pMax_, LinkClass::Reading, Elem::pMax, kPolyInteger);
  sink.Link(this, pInc_, LinkClass::Reading, Elem::pInc, kPolyInteger);
}

void IntegerNode::FinishLoad() {
  if (source_.hasValue) value_ = ParseInt(name_, "Value", source_.valueText);
  for (auto& i : source_.indexed)
    if (!i.ref.Given()) ParseInt(name_, "ValueIndexed", i.text);
  if (source_.hasDefault) ParseInt(name_, "ValueDefault", source_.defaultText);
}

int64_t IntegerNode::GetInt(bool, bool ignoreCache) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, ignoreCache, &constant);
  if (n) return ReadInt(this, n, ignoreCache);
  if (!constant) return value_;
  int64_t v = 0;
  TryParseInt(constant, v);
  return v;
}

void IntegerNode::SetInt(int64_t value, bool verify) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, false, &constant);
  if (n) {
    CallGuard guard(this);
    map_->NoteWritten(n);
    n->SetInt(value, verify);
    for (Ref& copy : source_.copies) {
      map_->NoteWritten(copy.node());
      copy.node()->SetInt(value, verify);
    }
    return;
  }
  if (constant) ThrowNotWritable("SetValue");
  value_ = value;
}

int64_t IntegerNode::IntMin() {
  if (pMin_.node()) return ReadInt(this, pMin_.node(), false);
  if (hasMin_) return min_;
  if (source_.pValue.node()) {
    CallGuard guard(this);
    return source_.pValue.node()->IntMin();
  }
  return INT64_MIN;
}

int64_t IntegerNode::IntMax() {
  if (pMax_.node()) return ReadInt(this, pMax_.node(), false);
  if (hasMax_) return max_;
  if (source_.pValue.node()) {
    CallGuard guard(this);
    return source_.pValue.node()->IntMax();
  }
  return INT64_MAX;
}

int64_t IntegerNode::IntInc() {
  if (pInc_.node()) return ReadInt(this, pInc_.node(), false);
  if (hasInc_) return inc_;
  if (source_.pValue.node() && !source_.pValue.node()->IsFloatLike()) {
    CallGuard guard(this);
    return source_.pValue.node()->IntInc();
  }
  return 1;
}

ERepresentation IntegerNode::DefaultRepresentation() {
  if (source_.pValue.node()) {
    CallGuard guard(this);
    const ERepresentation r = source_.pValue.node()->Representation();
    if (r != _UndefinedRepresentation) return r;
  }
  return PureNumber;
}

std::string IntegerNode::Unit() {
  if (*unit_ != '\0' || !source_.pValue.node()) return unit_;
  CallGuard guard(this);
  return source_.pValue.node()->Unit();
}

EAccessMode IntegerNode::NaturalAccessMode() const {
  return const_cast<ValueSource&>(source_).Mode(this);
}

}  // namespace impl
}  // namespace GenApi
