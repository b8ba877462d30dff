// String and StringReg nodes.
#include "StringNodes.h"

namespace GenApi {
namespace impl {

void StringBase::SetValue(const GenICam::gcstring& value, bool verify) {
  map_->RunWrite(this, [&] {
    if (verify) CheckWritable("SetValue");
    SetStr(std::string(value.c_str()), verify);
    if (verify) CheckError("SetValue");
  });
}

GenICam::gcstring StringBase::GetValue(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  CheckReadable("GetValue");
  return GetStr(verify, ignoreCache || verify).c_str();
}

int64_t StringBase::GetMaxLength() {
  AutoLock guard(map_->GetLock());
  return MaxLength();
}

GenICam::gcstring StringBase::ToString(bool verify, bool ignoreCache) {
  return GetValue(verify, ignoreCache);
}

void StringBase::FromString(const GenICam::gcstring& valueStr, bool verify) {
  SetValue(valueStr, verify);
}

bool StringBase::IsValueCacheValid() const {
  return ChildrenCacheValid();
}

// ---- String ----

bool StringNode::ParseSpecific(const XmlElem& e) {
  return source_.Parse(e, this, map_->Names(), Memory());
}

void StringNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kStringLike);
}

std::string StringNode::GetStr(bool verify, bool ignoreCache) {
  if (source_.pValue.node()) {
    CallGuard guard(this);
    return source_.pValue.node()->GetStr(verify, ignoreCache);
  }
  return isWritten_ ? written_ : std::string(source_.valueText);
}

void StringNode::SetStr(const std::string& value, bool verify) {
  if (source_.pValue.node()) {
    CallGuard guard(this);
    map_->NoteWritten(source_.pValue.node());
    source_.pValue.node()->SetStr(value, verify);
    return;
  }
  written_ = value;
  isWritten_ = true;
}

int64_t StringNode::MaxLength() {
  if (source_.pValue.node()) {
    CallGuard guard(this);
    if (auto* s = dynamic_cast<StringBase*>(source_.pValue.node())) return s->MaxLength();
  }
  return INT64_MAX;
}

EAccessMode StringNode::NaturalAccessMode() const {
  return const_cast<ValueSource&>(source_).Mode(this);
}

// ---- StringReg ----

bool StringRegNode::ParseSpecific(const XmlElem& e) { return ParseRegister(e); }

void StringRegNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  core_.CollectLinks(this, sink);
}

std::string StringRegNode::GetStr(bool, bool ignoreCache) {
  const std::vector<uint8_t> bytes = core_.Read(this, ignoreCache);
  size_t n = 0;
  while (n < bytes.size() && bytes[n] != 0) ++n;
  return std::string(reinterpret_cast<const char*>(bytes.data()), n);
}

void StringRegNode::SetStr(const std::string& value, bool) {
  const int64_t len = core_.Length(this, false);
  if (static_cast<int64_t>(value.size()) > len)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "SetValue")(
        "Node '%s' : string of %zu characters exceeds the register length %lld", name_,
        value.size(), static_cast<long long>(len));
  std::vector<uint8_t> bytes(static_cast<size_t>(len), 0);
  std::copy(value.begin(), value.end(), bytes.begin());
  core_.Write(this, bytes);
}

}  // namespace impl
}  // namespace GenApi
