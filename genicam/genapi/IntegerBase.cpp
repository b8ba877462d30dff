// IInteger on top of the internal value protocol: access and range checks,
// text forms, imposed bounds.
#include "IntegerBase.h"

#include <algorithm>
#include <string_view>

#include "NodeMap.h"
#include "ValueFormat.h"

namespace GenApi {
namespace impl {

bool IntegerBase::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::Representation: representation_ = ParseRepresentation(e); return true;
    case Elem::Unit: unit_ = e.text; return true;
    case Elem::ValidValueSet: {
      std::string_view rest(e.text);
      while (!rest.empty()) {
        const size_t end = std::min(rest.find(';'), rest.size());
        int64_t v = 0;
        if (end != 0 && TryParseInt(rest.substr(0, end), v)) validValues_.push_back(Memory(), v);
        rest.remove_prefix(std::min(end + 1, rest.size()));
      }
      return true;
    }
    default: return false;
  }
}

ERepresentation IntegerBase::Representation() {
  return representation_ != _UndefinedRepresentation ? representation_ : DefaultRepresentation();
}

int64_t IntegerBase::MinLocked() { return std::max(IntMin(), imposedMin_); }
int64_t IntegerBase::MaxLocked() { return std::min(IntMax(), imposedMax_); }

void IntegerBase::CheckRange(int64_t value, const char* method) {
  const int64_t min = MinLocked();
  const int64_t max = MaxLocked();
  if (value < min)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
        "Value = %lld must be equal or greater than Min = %lld.", static_cast<long long>(value),
        static_cast<long long>(min));
  if (value > max)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
        "Value = %lld must be equal or smaller than Max = %lld.", static_cast<long long>(value),
        static_cast<long long>(max));
  if (!validValues_.empty()) {
    if (std::find(validValues_.begin(), validValues_.end(), value) == validValues_.end())
      throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
          "Value = %lld is not in the set of valid values.", static_cast<long long>(value));
    return;
  }
  const int64_t inc = IntInc();
  if (inc <= 0)
    throw LOGICAL_ERROR_EXCEPTION_NODE(name_, method)("Increment must be larger than 0.");
  const uint64_t diff = static_cast<uint64_t>(value) - static_cast<uint64_t>(min);
  if (inc > 1 && diff % static_cast<uint64_t>(inc) != 0)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
        "The difference between Value = %lld and Min = %lld must be dividable without rest by "
        "Inc = %lld.",
        static_cast<long long>(value), static_cast<long long>(min), static_cast<long long>(inc));
}

void IntegerBase::SetValue(int64_t value, bool verify) { CheckedSet(value, verify); }

int64_t IntegerBase::GetValue(bool verify, bool ignoreCache) { return CheckedGet(verify, ignoreCache); }

int64_t IntegerBase::GetMin() {
  AutoLock guard(map_->GetLock());
  return MinLocked();
}

int64_t IntegerBase::GetMax() {
  AutoLock guard(map_->GetLock());
  return MaxLocked();
}

EIncMode IntegerBase::GetIncMode() { return validValues_.empty() ? fixedIncrement : listIncrement; }

int64_t IntegerBase::GetInc() {
  AutoLock guard(map_->GetLock());
  return IntInc();
}

int64_autovector_t IntegerBase::GetListOfValidValues(bool bounded) {
  AutoLock guard(map_->GetLock());
  if (!bounded) return int64_autovector_t(validValues_.begin(), validValues_.end());
  int64_autovector_t list;
  const int64_t min = MinLocked(), max = MaxLocked();
  for (int64_t v : validValues_)
    if (v >= min && v <= max) list.push_back(v);
  return list;
}

ERepresentation IntegerBase::GetRepresentation() {
  AutoLock guard(map_->GetLock());
  return Representation();
}

GenICam::gcstring IntegerBase::GetUnit() {
  AutoLock guard(map_->GetLock());
  return Unit().c_str();
}

void IntegerBase::ImposeMin(int64_t value) {
  imposedMin_ = value;
  InvalidateNode();
}

void IntegerBase::ImposeMax(int64_t value) {
  imposedMax_ = value;
  InvalidateNode();
}

GenICam::gcstring IntegerBase::ToString(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  const int64_t value = GetValue(verify, ignoreCache);
  return FormatInteger(value, Representation()).c_str();
}

void IntegerBase::FromString(const GenICam::gcstring& valueStr, bool verify) {
  int64_t value = 0;
  if (!ParseIntegerText(std::string(valueStr.c_str()), value))
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
        "Node '%s' : cannot convert string '%s' to int.", name_, valueStr.c_str());
  SetValue(value, verify);
}

bool IntegerBase::IsValueCacheValid() const {
  return ChildrenCacheValid();
}

}  // namespace impl
}  // namespace GenApi
