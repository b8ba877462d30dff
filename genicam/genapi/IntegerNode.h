// Integer: a value held in the description or reached through pointers.
#pragma once

#include "IntegerBase.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class IntegerNode : public IntegerBase {
 public:
  IntegerNode(NodeMap* map, const char* name) : IntegerBase(map, name, Elem::Integer) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;

  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;
  int64_t IntInc() override;
  std::string Unit() override;
  EAccessMode NaturalAccessMode() const override;

 protected:
  ERepresentation DefaultRepresentation() override;

 private:
  ValueSource source_;
  int64_t value_ = 0;
  bool hasMin_ = false, hasMax_ = false, hasInc_ = false;
  int64_t min_ = INT64_MIN, max_ = INT64_MAX, inc_ = 1;
  Ref pMin_, pMax_, pInc_;
};

}  // namespace impl
}  // namespace GenApi
