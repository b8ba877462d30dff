// Float and FloatReg.
#pragma once

#include "FloatBase.h"
#include "RegisterMixin.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class FloatNode : public FloatBase {
 public:
  FloatNode(NodeMap* map, const char* name) : FloatBase(map, name, Elem::Float) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;
  double GetFloat(bool verify, bool ignoreCache) override;
  void SetFloat(double value, bool verify) override;
  double FloatMin() override;
  double FloatMax() override;
  std::string Unit() override;
  EAccessMode NaturalAccessMode() const override;

 protected:
  ERepresentation DefaultRepresentation() override;
  bool FloatInc(double& inc) override;

 private:
  ValueSource source_;
  double value_ = 0;
  bool hasMin_ = false, hasMax_ = false, hasInc_ = false;
  double min_ = 0, max_ = 0, inc_ = 0;
  Ref pMin_, pMax_, pInc_;
};

class FloatRegNode : public RegisterBacked<FloatBase> {
 public:
  FloatRegNode(NodeMap* map, const char* name) : RegisterBacked(map, name, Elem::FloatReg) {
    core_.cachable = WriteAround;
  }

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  double GetFloat(bool verify, bool ignoreCache) override;
  void SetFloat(double value, bool verify) override;

 private:
  size_t CheckedLength();
};

}  // namespace impl
}  // namespace GenApi
