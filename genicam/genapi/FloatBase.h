// FloatBase: the IFloat interface shared by every float-like node.
#pragma once

#include <cfloat>

#include "NumberBase.h"

namespace GenApi {
namespace impl {

class FloatBase : public NumberBase<double>, public virtual IFloat {
 public:
  FloatBase(NodeMap* map, const char* name, Elem kind) : NumberBase(map, name, kind) {}

  bool ParseSpecific(const XmlElem& e) override;

  // IValue
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override;

  // IFloat
  void SetValue(double Value, bool Verify = true) override;
  double GetValue(bool Verify = false, bool IgnoreCache = false) override;
  double GetMin() override;
  double GetMax() override;
  bool HasInc() override;
  EIncMode GetIncMode() override;
  double GetInc() override;
  double_autovector_t GetListOfValidValues(bool bounded = true) override;
  ERepresentation GetRepresentation() override;
  GenICam::gcstring GetUnit() const override;
  EDisplayNotation GetDisplayNotation() const override { return notation_; }
  int64_t GetDisplayPrecision() const override { return precision_; }
  void ImposeMin(double Value) override;
  void ImposeMax(double Value) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }

  // Internal protocol: integers view the float rounded.
  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;
  double FloatMin() override { return -DBL_MAX; }
  double FloatMax() override { return DBL_MAX; }
  bool IsFloatLike() const override { return true; }
  ERepresentation Representation() override;
  std::string Unit() override { return unit_; }

 protected:
  virtual ERepresentation DefaultRepresentation() { return PureNumber; }
  // Float increment, if the node has one.
  virtual bool FloatInc(double& inc);
  void CheckRange(double value, const char* method) override;

  ERepresentation representation_ = _UndefinedRepresentation;
  EDisplayNotation notation_ = fnAutomatic;
  const char* unit_ = "";
  int64_t precision_ = 6;
  double imposedMin_ = -DBL_MAX;
  double imposedMax_ = DBL_MAX;
};

// Rounds a double to the nearest int64, saturating.
int64_t RoundToInt64(double value);

}  // namespace impl
}  // namespace GenApi
