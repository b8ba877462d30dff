// Formula nodes: knives compute, converters translate both ways.
#include "FormulaNodes.h"

#include <algorithm>

#include "NodeMap.h"

namespace GenApi {
namespace impl {

// ---- IntSwissKnife / SwissKnife ----

bool IntSwissKnifeNode::ParseSpecific(const XmlElem& e) {
  if (vars_.Parse(e, this, map_->Names(), Memory())) return true;
  if (e.id == Elem::Formula) {
    text_ = e.text;
    return true;
  }
  return IntegerBase::ParseSpecific(e);
}

void IntSwissKnifeNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  vars_.CollectLinks(this, sink);
}

void IntSwissKnifeNode::FinishLoad() { program_.Compile(this, "Formula", text_, vars_, nullptr, true); }

int64_t IntSwissKnifeNode::GetInt(bool, bool ignoreCache) {
  return program_.EvaluateInt(this, vars_, ignoreCache);
}

bool SwissKnifeNode::ParseSpecific(const XmlElem& e) {
  if (vars_.Parse(e, this, map_->Names(), Memory())) return true;
  if (e.id == Elem::Formula) {
    text_ = e.text;
    return true;
  }
  return FloatBase::ParseSpecific(e);
}

void SwissKnifeNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  vars_.CollectLinks(this, sink);
}

void SwissKnifeNode::FinishLoad() { program_.Compile(this, "Formula", text_, vars_, nullptr, false); }

double SwissKnifeNode::GetFloat(bool, bool ignoreCache) {
  return program_.EvaluateFloat(this, vars_, ignoreCache);
}

// ---- converter parts ----

bool ConverterParts::Parse(const XmlElem& e, NodeImpl* owner) {
  NodeMap* map = owner->Map();
  if (vars.Parse(e, owner, map->Names(), map->Memory())) return true;
  switch (e.id) {
    case Elem::FormulaTo: toText = e.text; return true;
    case Elem::FormulaFrom: fromText = e.text; return true;
    case Elem::pValue: pValue.SetName(map->Names().Intern(e.Text())); return true;
    case Elem::Slope: slope = ParseSlope(e); return true;
    case Elem::IsLinear: return true;
    default: return false;
  }
}

void ConverterParts::CollectLinks(NodeImpl* owner, LinkSink& sink, uint16_t kinds) {
  sink.Link(owner, pValue, LinkClass::Writing, Elem::pValue, kinds);
  vars.CollectLinks(owner, sink);
}

// A converter without pValue is refused with its document: the schema requires it.
void ConverterParts::Compile(const NodeImpl* owner, bool integer) {
  if (!pValue.node())
    throw PROPERTY_EXCEPTION("Node '%s' : element 'pValue' is missing", owner->Name());
  to.Compile(owner, "FormulaTo", toText, vars, "FROM", integer);
  from.Compile(owner, "FormulaFrom", fromText, vars, "TO", integer);
}

EAccessMode ConverterParts::Mode() const {
  EAccessMode mode = pValue.node() ? pValue.node()->AccessModeLocked() : NA;
  const EAccessMode v = vars.Mode();
  if (v == NI) return NI;
  if (v == NA) return Combine(mode, NA);
  return mode;
}

// ---- Converter ----

bool ConverterNode::ParseSpecific(const XmlElem& e) {
  return parts_.Parse(e, this) || FloatBase::ParseSpecific(e);
}

void ConverterNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  parts_.CollectLinks(this, sink, kPolyFloat);
}

double ConverterNode::GetFloat(bool, bool ignoreCache) {
  const double raw = ReadFloat(this, parts_.pValue.node(), ignoreCache);
  return parts_.from.EvaluateFloat(this, parts_.vars, ignoreCache, raw);
}

void ConverterNode::SetFloat(double value, bool verify) {
  const double raw = parts_.to.EvaluateFloat(this, parts_.vars, false, value);
  CallGuard guard(this);
  map_->NoteWritten(parts_.pValue.node());
  parts_.pValue.node()->SetFloat(raw, verify);
}

void ConverterNode::Bounds(double& lo, double& hi) {
  lo = -DBL_MAX;
  hi = DBL_MAX;
  if (parts_.slope == Varying) return;
  CallGuard guard(this);
  const double a = parts_.from.EvaluateFloat(this, parts_.vars, false,
                                             parts_.pValue.node()->FloatMin());
  const double b = parts_.from.EvaluateFloat(this, parts_.vars, false,
                                             parts_.pValue.node()->FloatMax());
  if (parts_.slope == Increasing) { lo = a; hi = b; }
  else if (parts_.slope == Decreasing) { lo = b; hi = a; }
  else { lo = std::min(a, b); hi = std::max(a, b); }
}

double ConverterNode::FloatMin() {
  double lo = 0, hi = 0;
  Bounds(lo, hi);
  return lo;
}

double ConverterNode::FloatMax() {
  double lo = 0, hi = 0;
  Bounds(lo, hi);
  return hi;
}

std::string ConverterNode::Unit() {
  if (*unit_ != '\0') return unit_;
  CallGuard guard(this);
  return parts_.pValue.node()->Unit();
}

// ---- IntConverter ----

bool IntConverterNode::ParseSpecific(const XmlElem& e) {
  return parts_.Parse(e, this) || IntegerBase::ParseSpecific(e);
}

void IntConverterNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  parts_.CollectLinks(this, sink, kPolyInteger);
}

int64_t IntConverterNode::GetInt(bool, bool ignoreCache) {
  const int64_t raw = ReadInt(this, parts_.pValue.node(), ignoreCache);
  return parts_.from.EvaluateInt(this, parts_.vars, ignoreCache, static_cast<double>(raw));
}

void IntConverterNode::SetInt(int64_t value, bool verify) {
  const int64_t raw =
      parts_.to.EvaluateInt(this, parts_.vars, false, static_cast<double>(value));
  CallGuard guard(this);
  map_->NoteWritten(parts_.pValue.node());
  parts_.pValue.node()->SetInt(raw, verify);
}

void IntConverterNode::Bounds(int64_t& lo, int64_t& hi) {
  lo = INT64_MIN;
  hi = INT64_MAX;
  if (parts_.slope == Varying) return;
  CallGuard guard(this);
  const int64_t a = parts_.from.EvaluateInt(this, parts_.vars, false,
                                            static_cast<double>(parts_.pValue.node()->IntMin()));
  const int64_t b = parts_.from.EvaluateInt(this, parts_.vars, false,
                                            static_cast<double>(parts_.pValue.node()->IntMax()));
  if (parts_.slope == Increasing) { lo = a; hi = b; }
  else if (parts_.slope == Decreasing) { lo = b; hi = a; }
  else { lo = std::min(a, b); hi = std::max(a, b); }
}

int64_t IntConverterNode::IntMin() {
  int64_t lo = 0, hi = 0;
  Bounds(lo, hi);
  return lo;
}

int64_t IntConverterNode::IntMax() {
  int64_t lo = 0, hi = 0;
  Bounds(lo, hi);
  return hi;
}

std::string IntConverterNode::Unit() {
  if (*unit_ != '\0') return unit_;
  CallGuard guard(this);
  return parts_.pValue.node()->Unit();
}

}  // namespace impl
}  // namespace GenApi
