// Enumeration and EnumEntry nodes.
#include "EnumerationNodes.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "NodeMap.h"

namespace GenApi {
namespace impl {

// ---- EnumEntry ----

bool EnumEntryNode::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::Value: valueText_ = e.text; return true;
    case Elem::NumericValue:
      numeric_ = ParseDouble(name_, e);
      hasNumeric_ = true;
      return true;
    case Elem::Symbolic: symbolic_ = e.text; return true;
    case Elem::IsSelfClearing: selfClearing_ = ParseYesNo(e); return true;
    default: return false;
  }
}

void EnumEntryNode::FinishLoad() {
  if (valueText_ == nullptr || *valueText_ == '\0')
    throw PROPERTY_EXCEPTION("Node '%s' : element 'Value' is missing", name_);
  value_ = ParseInt(name_, "Value", valueText_);
}

GenICam::gcstring EnumEntryNode::ToString(bool, bool) { return symbolic_; }

void EnumEntryNode::FromString(const GenICam::gcstring&, bool) { ThrowNotWritable("FromString"); }

// ---- Enumeration ----

bool EnumerationNode::ParseSpecific(const XmlElem& e) {
  if (source_.Parse(e, this, map_->Names(), Memory())) return true;
  if (e.id == Elem::pEnumEntry) {
    AddEntry(map_->Names().Intern(e.Text()));
    return true;
  }
  return false;
}

void EnumerationNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kPolyInteger);
  for (Ref& r : entries_)
    sink.Link(this, r, LinkClass::Invalidating, Elem::pEnumEntry, kEnumEntryKind);
}

void EnumerationNode::FinishLoad() {
  if (source_.hasValue) value_ = ParseInt(name_, "Value", source_.valueText);
}

EnumEntryNode* EnumerationNode::FindEntry(int64_t value) const {
  for (const Ref& r : entries_) {
    auto* entry = static_cast<EnumEntryNode*>(r.node());
    if (entry->GetValue() == value) return entry;
  }
  return nullptr;
}

EnumEntryNode* EnumerationNode::EntryByXmlName(std::string_view name) const {
  for (const Ref& r : entries_) {
    auto* entry = static_cast<EnumEntryNode*>(r.node());
    if (entry->EntryName() == name) return entry;
  }
  for (const Ref& r : entries_) {
    auto* entry = static_cast<EnumEntryNode*>(r.node());
    if (entry->Symbolic() == name) return entry;
  }
  return nullptr;
}

EAccessMode EnumerationNode::NaturalAccessMode() const {
  EAccessMode mode = const_cast<ValueSource&>(source_).Mode(this);
  if (entries_.empty()) return mode;
  bool allNI = true, allUnavailable = true;
  for (const Ref& r : entries_) {
    const EAccessMode m = r.node()->AccessModeLocked();
    if (m != NI) allNI = false;
    if (IsAvailable(m)) allUnavailable = false;
  }
  if (allNI) return NI;
  if (allUnavailable) return Combine(mode, NA);
  return mode;
}

void EnumerationNode::CheckEntryWritable(EnumEntryNode* entry, const char* method) const {
  if (!IsAvailable(entry->AccessModeLocked()))
    throw ACCESS_EXCEPTION_NODE(name_, method)(
        "Enum entry is not writable (entry '%s')", entry->GetSymbolic().c_str());
}

int64_t EnumerationNode::GetInt(bool, bool ignoreCache) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, ignoreCache, &constant);
  if (!n) return value_;
  const int64_t value = ReadInt(this, n, ignoreCache);
  // While a self-clearing entry is current the device may change it at any time.
  EnumEntryNode* entry = ignoreCache ? nullptr : FindEntry(value);
  return entry && entry->IsSelfClearing() ? ReadInt(this, n, true) : value;
}

void EnumerationNode::SetInt(int64_t value, bool verify) {
  EnumEntryNode* entry = FindEntry(value);
  if (!entry)
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "SetIntValue")(
        "Feature '%s' : no entry with the value %lld", name_,
        static_cast<long long>(value));
  if (verify) CheckEntryWritable(entry, "SetIntValue");
  if (!source_.WriteInt(this, value, verify)) value_ = value;
}

double EnumerationNode::GetFloat(bool verify, bool ignoreCache) {
  const int64_t v = GetInt(verify, ignoreCache);
  EnumEntryNode* entry = FindEntry(v);
  return entry ? entry->GetNumericValue() : static_cast<double>(v);
}

void EnumerationNode::SetFloat(double value, bool verify) {
  EnumEntryNode* best = nullptr;
  double bestDistance = 0;
  for (const Ref& r : entries_) {
    auto* entry = static_cast<EnumEntryNode*>(r.node());
    if (!IsAvailable(entry->AccessModeLocked())) continue;
    const double d = std::fabs(entry->GetNumericValue() - value);
    if (!best || d < bestDistance) {
      best = entry;
      bestDistance = d;
    }
  }
  if (!best)
    throw ACCESS_EXCEPTION_NODE(name_, "SetValue")("Enum entry is not writable");
  SetInt(best->GetValue(), verify);
}

int64_t EnumerationNode::IntMin() {
  int64_t m = INT64_MAX;
  for (const Ref& r : entries_) m = std::min(m, static_cast<EnumEntryNode*>(r.node())->GetValue());
  return entries_.empty() ? INT64_MIN : m;
}

int64_t EnumerationNode::IntMax() {
  int64_t m = INT64_MIN;
  for (const Ref& r : entries_) m = std::max(m, static_cast<EnumEntryNode*>(r.node())->GetValue());
  return entries_.empty() ? INT64_MAX : m;
}

double EnumerationNode::FloatMin() {
  double m = DBL_MAX;
  for (const Ref& r : entries_)
    m = std::min(m, static_cast<EnumEntryNode*>(r.node())->GetNumericValue());
  return entries_.empty() ? -DBL_MAX : m;
}

double EnumerationNode::FloatMax() {
  double m = -DBL_MAX;
  for (const Ref& r : entries_)
    m = std::max(m, static_cast<EnumEntryNode*>(r.node())->GetNumericValue());
  return entries_.empty() ? DBL_MAX : m;
}

bool EnumerationNode::PollActive() {
  try {
    EnumEntryNode* entry = FindEntry(GetInt(false, false));
    return entry && entry->IsSelfClearing();
  } catch (const GenICam::GenericException&) {
    return false;
  }
}

void EnumerationNode::GetSymbolics(StringList_t& symbolics) {
  AutoLock guard(map_->GetLock());
  symbolics.clear();
  for (const Ref& r : entries_)
    if (IsAvailable(r.node()->AccessModeLocked()))
      symbolics.push_back(static_cast<EnumEntryNode*>(r.node())->GetSymbolic());
}

void EnumerationNode::GetEntries(NodeList_t& list) {
  AutoLock guard(map_->GetLock());
  list.clear();
  for (const Ref& r : entries_) list.push_back(r.node());
}

void EnumerationNode::SetIntValue(int64_t value, bool verify) {
  map_->RunWrite(this, [&] {
    if (verify) CheckWritable("SetIntValue");
    SetInt(value, verify);
    if (verify) CheckError("SetIntValue");
  });
}

int64_t EnumerationNode::GetIntValue(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  CheckReadable("GetIntValue");
  const int64_t value = GetInt(verify, ignoreCache || verify);
  if (verify) {
    EnumEntryNode* entry = FindEntry(value);
    if (!entry)
      throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "GetIntValue")(
          "Feature '%s' : the value %lld has no entry", name_,
          static_cast<long long>(value));
    if (!IsAvailable(entry->AccessModeLocked()))
      throw ACCESS_EXCEPTION_NODE(name_, "GetIntValue")(
          "Feature '%s' : the current entry '%s' is not available", name_,
          entry->GetSymbolic().c_str());
  }
  return value;
}

IEnumEntry* EnumerationNode::GetEntryByName(const GenICam::gcstring& symbolic) {
  AutoLock guard(map_->GetLock());
  for (const Ref& r : entries_) {
    auto* entry = static_cast<EnumEntryNode*>(r.node());
    if (entry->GetSymbolic() == symbolic) return entry;
  }
  return nullptr;
}

IEnumEntry* EnumerationNode::GetEntry(const int64_t value) {
  AutoLock guard(map_->GetLock());
  return FindEntry(value);
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  return FindEntry(GetIntValue(verify, ignoreCache));
}

GenICam::gcstring EnumerationNode::ToString(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  const int64_t value = GetIntValue(verify, ignoreCache);
  EnumEntryNode* entry = FindEntry(value);
  if (!entry)
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "ToString")(
        "Feature '%s' : the value %lld has no entry", name_,
        static_cast<long long>(value));
  return entry->GetSymbolic();
}

void EnumerationNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  IEnumEntry* entry = GetEntryByName(valueStr);
  if (!entry)
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
        "Feature '%s' : cannot convert value '%s', the value is invalid.", name_,
        valueStr.c_str());
  SetIntValue(entry->GetValue(), verify);
}

bool EnumerationNode::IsValueCacheValid() const {
  return ChildrenCacheValid();
}

}  // namespace impl
}  // namespace GenApi
