// IFloat on top of the internal value protocol.
#include "FloatBase.h"

#include <algorithm>
#include <cmath>

#include "NodeMap.h"
#include "ValueFormat.h"

namespace GenApi {
namespace impl {

int64_t RoundToInt64(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 9.2233720368547758e18) return INT64_MAX;
  if (value <= -9.2233720368547758e18) return INT64_MIN;
  return static_cast<int64_t>(std::llround(value));
}

bool FloatBase::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::Representation: representation_ = ParseRepresentation(e); return true;
    case Elem::Unit: unit_ = e.text; return true;
    case Elem::DisplayNotation: notation_ = ParseDisplayNotation(e); return true;
    case Elem::DisplayPrecision: precision_ = ParseInt(name_, e); return true;
    default: return false;
  }
}

ERepresentation FloatBase::Representation() {
  return representation_ != _UndefinedRepresentation ? representation_ : DefaultRepresentation();
}

bool FloatBase::FloatInc(double&) { return false; }

void FloatBase::CheckRange(double value, const char* method) {
  const double min = std::max(FloatMin(), imposedMin_);
  const double max = std::min(FloatMax(), imposedMax_);
  if (value < min)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
        "Value %f must be greater than or equal %f.", value, min);
  if (value > max)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, method)(
        "Value %f must be smaller than or equal %f.", value, max);
}

void FloatBase::SetValue(double value, bool verify) { CheckedSet(value, verify); }

double FloatBase::GetValue(bool verify, bool ignoreCache) { return CheckedGet(verify, ignoreCache); }

double FloatBase::GetMin() {
  AutoLock guard(map_->GetLock());
  return std::max(FloatMin(), imposedMin_);
}

double FloatBase::GetMax() {
  AutoLock guard(map_->GetLock());
  return std::min(FloatMax(), imposedMax_);
}

bool FloatBase::HasInc() {
  AutoLock guard(map_->GetLock());
  double inc = 0;
  return FloatInc(inc);
}

EIncMode FloatBase::GetIncMode() { return HasInc() ? fixedIncrement : noIncrement; }

double FloatBase::GetInc() {
  AutoLock guard(map_->GetLock());
  double inc = 0;
  if (!FloatInc(inc))
    throw RUNTIME_EXCEPTION_NODE(name_, "GetInc")("node does not have an increment.");
  return inc;
}

double_autovector_t FloatBase::GetListOfValidValues(bool) { return double_autovector_t(); }

ERepresentation FloatBase::GetRepresentation() {
  AutoLock guard(map_->GetLock());
  return Representation();
}

GenICam::gcstring FloatBase::GetUnit() const {
  AutoLock guard(map_->GetLock());
  return const_cast<FloatBase*>(this)->Unit().c_str();
}

void FloatBase::ImposeMin(double value) {
  imposedMin_ = value;
  InvalidateNode();
}

void FloatBase::ImposeMax(double value) {
  imposedMax_ = value;
  InvalidateNode();
}

GenICam::gcstring FloatBase::ToString(bool verify, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  return FormatFloat(GetValue(verify, ignoreCache), notation_, precision_).c_str();
}

void FloatBase::FromString(const GenICam::gcstring& valueStr, bool verify) {
  double value = 0;
  if (!TryParseDouble(std::string_view(valueStr.c_str(), valueStr.size()), value))
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
        "Node '%s' : cannot convert string '%s' to double.", name_, valueStr.c_str());
  SetValue(value, verify);
}

bool FloatBase::IsValueCacheValid() const {
  return ChildrenCacheValid();
}

int64_t FloatBase::GetInt(bool verify, bool ignoreCache) {
  return RoundToInt64(GetFloat(verify, ignoreCache));
}

void FloatBase::SetInt(int64_t value, bool verify) {
  SetFloat(static_cast<double>(value), verify);
}

int64_t FloatBase::IntMin() { return RoundToInt64(FloatMin()); }
int64_t FloatBase::IntMax() { return RoundToInt64(FloatMax()); }

}  // namespace impl
}  // namespace GenApi
