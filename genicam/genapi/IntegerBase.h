// IntegerBase: the IInteger interface shared by every integer-like node,
// built on the internal value protocol (GetInt, SetInt, IntMin, ...).
#pragma once

#include "NumberBase.h"

namespace GenApi {
namespace impl {

class IntegerBase : public NumberBase<int64_t>, public virtual IInteger {
 public:
  IntegerBase(NodeMap* map, const char* name, Elem kind) : NumberBase(map, name, kind) {}

  bool ParseSpecific(const XmlElem& e) override;

  // IValue
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override;

  // IInteger
  void SetValue(int64_t Value, bool Verify = true) override;
  int64_t GetValue(bool Verify = false, bool IgnoreCache = false) override;
  int64_t GetMin() override;
  int64_t GetMax() override;
  EIncMode GetIncMode() override;
  int64_t GetInc() override;
  int64_autovector_t GetListOfValidValues(bool bounded = true) override;
  ERepresentation GetRepresentation() override;
  GenICam::gcstring GetUnit() override;
  void ImposeMin(int64_t Value) override;
  void ImposeMax(int64_t Value) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }

  ERepresentation Representation() override;
  std::string Unit() override { return unit_; }

 protected:
  // Representation when the node has no element of its own.
  virtual ERepresentation DefaultRepresentation() { return PureNumber; }
  void CheckRange(int64_t value, const char* method) override;
  int64_t MinLocked();
  int64_t MaxLocked();

  ERepresentation representation_ = _UndefinedRepresentation;
  const char* unit_ = "";
  ArenaVec<int64_t> validValues_;
  int64_t imposedMin_ = INT64_MIN;
  int64_t imposedMax_ = INT64_MAX;
};

}  // namespace impl
}  // namespace GenApi
