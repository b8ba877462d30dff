// Float and FloatReg nodes.
#include "FloatNodes.h"

#include <cstring>

namespace GenApi {
namespace impl {

bool FloatNode::ParseSpecific(const XmlElem& e) {
  if (source_.Parse(e, this, map_->Names(), Memory())) return true;
  switch (e.id) {
    case Elem::Min: min_ = ParseDouble(name_, e); hasMin_ = true; return true;
    case Elem::Max: max_ = ParseDouble(name_, e); hasMax_ = true; return true;
    case Elem::Inc: inc_ = ParseDouble(name_, e); hasInc_ = true; return true;
    case Elem::pMin: SetRef(pMin_, e); return true;
    case Elem::pMax: SetRef(pMax_, e); return true;
    case Elem::pInc: SetRef(pInc_, e); return true;
    default: return FloatBase::ParseSpecific(e);
  }
}

void FloatNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kPolyFloat);
  sink.Link(this, pMin_, LinkClass::Reading, Elem::pMin, kPolyFloat);
  sink.Link(this, pMax_, LinkClass::Reading, Elem::pMax, kPolyFloat);
  sink.Link(this, pInc_, LinkClass::Reading, Elem::pInc, kPolyFloat);
}

void FloatNode::FinishLoad() {
  if (source_.hasValue) value_ = ParseDouble(name_, "Value", source_.valueText);
  for (auto& i : source_.indexed)
    if (!i.ref.Given()) ParseDouble(name_, "ValueIndexed", i.text);
  if (source_.hasDefault) ParseDouble(name_, "ValueDefault", source_.defaultText);
}

double FloatNode::GetFloat(bool, bool ignoreCache) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, ignoreCache, &constant);
  if (n) return ReadFloat(this, n, ignoreCache);
  if (!constant) return value_;
  double v = 0;
  TryParseDouble(constant, v);
  return v;
}

void FloatNode::SetFloat(double value, bool verify) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, false, &constant);
  if (n) {
    CallGuard guard(this);
    map_->NoteWritten(n);
    n->SetFloat(value, verify);
    for (Ref& copy : source_.copies) {
      map_->NoteWritten(copy.node());
      copy.node()->SetFloat(value, verify);
    }
    return;
  }
  if (constant) ThrowNotWritable("SetValue");
  value_ = value;
}

double FloatNode::FloatMin() {
  if (pMin_.node()) return ReadFloat(this, pMin_.node(), false);
  if (hasMin_) return min_;
  if (source_.pValue.node()) {
    CallGuard guard(this);
    return source_.pValue.node()->FloatMin();
  }
  return -DBL_MAX;
}

double FloatNode::FloatMax() {
  if (pMax_.node()) return ReadFloat(this, pMax_.node(), false);
  if (hasMax_) return max_;
  if (source_.pValue.node()) {
    CallGuard guard(this);
    return source_.pValue.node()->FloatMax();
  }
  return DBL_MAX;
}

bool FloatNode::FloatInc(double& inc) {
  if (pInc_.node()) {
    inc = ReadFloat(this, pInc_.node(), false);
    return true;
  }
  if (hasInc_) inc = inc_;
  return hasInc_;
}

ERepresentation FloatNode::DefaultRepresentation() {
  if (source_.pValue.node()) {
    CallGuard guard(this);
    const ERepresentation r = source_.pValue.node()->Representation();
    if (r == Linear || r == Logarithmic || r == PureNumber) return r;
  }
  return PureNumber;
}

std::string FloatNode::Unit() {
  if (*unit_ != '\0' || !source_.pValue.node()) return unit_;
  CallGuard guard(this);
  return source_.pValue.node()->Unit();
}

EAccessMode FloatNode::NaturalAccessMode() const {
  return const_cast<ValueSource&>(source_).Mode(this);
}

// ---- FloatReg ----

bool FloatRegNode::ParseSpecific(const XmlElem& e) {
  if (ParseRegister(e)) return true;
  if (e.id == Elem::Sign) return true;
  return FloatBase::ParseSpecific(e);
}

void FloatRegNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  core_.CollectLinks(this, sink);
}

size_t FloatRegNode::CheckedLength() {
  const int64_t len = core_.Length(this, false);
  if (len != 4 && len != 8)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "GetValue")(
        "Node '%s' : float register length %lld is neither 4 nor 8", name_,
        static_cast<long long>(len));
  return static_cast<size_t>(len);
}

double FloatRegNode::GetFloat(bool, bool ignoreCache) {
  const size_t len = CheckedLength();
  const std::vector<uint8_t> bytes = core_.Read(this, ignoreCache);
  const uint64_t raw = BytesToUnsigned(bytes.data(), len, core_.endianess);
  if (len == 4) {
    const uint32_t bits = static_cast<uint32_t>(raw);
    float f = 0;
    std::memcpy(&f, &bits, 4);
    return f;
  }
  double d = 0;
  std::memcpy(&d, &raw, 8);
  return d;
}

void FloatRegNode::SetFloat(double value, bool) {
  const size_t len = CheckedLength();
  uint64_t raw = 0;
  if (len == 4) {
    const float f = static_cast<float>(value);
    uint32_t bits = 0;
    std::memcpy(&bits, &f, 4);
    raw = bits;
  } else {
    std::memcpy(&raw, &value, 8);
  }
  std::vector<uint8_t> bytes(len);
  UnsignedToBytes(raw, bytes.data(), len, core_.endianess);
  core_.Write(this, bytes);
}

}  // namespace impl
}  // namespace GenApi
