// IntReg and MaskedIntReg (and the IIDC register kinds built on them).
#pragma once

#include "IntegerBase.h"
#include "RegisterMixin.h"

namespace GenApi {
namespace impl {

class IntRegNode : public RegisterBacked<IntegerBase> {
 public:
  IntRegNode(NodeMap* map, const char* name, Elem kind = Elem::IntReg)
      : RegisterBacked(map, name, kind) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;

  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;

 protected:
  size_t CheckedLength();
  bool signed_ = false;
};

class MaskedIntRegNode : public IntRegNode {
 public:
  MaskedIntRegNode(NodeMap* map, const char* name) : IntRegNode(map, name, Elem::MaskedIntReg) {}

  bool ParseSpecific(const XmlElem& e) override;
  void FinishLoad() override;
  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;

 private:
  // Field position in little-endian numbering (bit 0 = least significant).
  void Field(unsigned& lsb, unsigned& width);
  int64_t lsbText_ = -1, msbText_ = -1;
};

}  // namespace impl
}  // namespace GenApi
