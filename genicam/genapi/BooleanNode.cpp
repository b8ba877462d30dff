// Boolean node.
#include "BooleanNode.h"

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool BooleanNode::ParseSpecific(const XmlElem& e) {
  if (source_.Parse(e, this, map_->Names(), Memory())) return true;
  switch (e.id) {
    case Elem::OnValue: on_ = ParseInt(name_, e); return true;
    case Elem::OffValue: off_ = ParseInt(name_, e); return true;
    default: return false;
  }
}

void BooleanNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kPolyInteger);
}

void BooleanNode::FinishLoad() {
  if (!source_.hasValue) return;
  const std::string_view t = source_.valueText;
  if (t == "true" || t == "True" || t == "Yes") value_ = on_;
  else if (t == "false" || t == "False" || t == "No") value_ = off_;
  else value_ = ParseInt(name_, "Value", t) != 0 ? on_ : off_;
}

bool BooleanNode::ReadBool(bool verify, bool ignoreCache) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, ignoreCache, &constant);
  const int64_t raw = n ? ReadInt(this, n, ignoreCache) : value_;
  if (raw == on_) return true;
  if (verify && raw != off_)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "GetValue")(
        "Node '%s' : value %lld is neither OnValue nor OffValue", name_,
        static_cast<long long>(raw));
  return false;
}

int64_t BooleanNode::GetInt(bool verify, bool ignoreCache) {
  return ReadBool(verify, ignoreCache) ? 1 : 0;
}

void BooleanNode::SetInt(int64_t value, bool verify) {
  const int64_t raw = value != 0 ? on_ : off_;
  if (!source_.WriteInt(this, raw, verify)) value_ = raw;
}

EAccessMode BooleanNode::NaturalAccessMode() const {
  return const_cast<ValueSource&>(source_).Mode(this);
}

void BooleanNode::SetValue(bool value, bool verify) {
  map_->RunWrite(this, [&] {
    if (verify) CheckWritable("SetValue");
    SetInt(value ? 1 : 0, verify);
    if (verify) CheckError("SetValue");
  });
}

bool BooleanNode::GetValue(bool verify, bool ignoreCache) const {
  AutoLock guard(map_->GetLock());
  CheckReadable("GetValue");
  return const_cast<BooleanNode*>(this)->ReadBool(verify, ignoreCache || verify);
}

GenICam::gcstring BooleanNode::ToString(bool verify, bool ignoreCache) {
  return GetValue(verify, ignoreCache) ? "true" : "false";
}

void BooleanNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  const std::string s(valueStr.c_str());
  if (s == "true" || s == "True" || s == "TRUE" || s == "1") SetValue(true, verify);
  else if (s == "false" || s == "False" || s == "FALSE" || s == "0") SetValue(false, verify);
  else
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
        "Node '%s' : cannot convert string '%s' to bool.", name_, valueStr.c_str());
}

bool BooleanNode::IsValueCacheValid() const {
  return ChildrenCacheValid();
}

}  // namespace impl
}  // namespace GenApi
