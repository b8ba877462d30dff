// Boolean: true when its value equals OnValue.
#pragma once

#include "Node.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class BooleanNode : public NodeImpl, public virtual IBoolean {
 public:
  BooleanNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Boolean) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;

  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override;
  void SetValue(bool Value, bool Verify = true) override;
  bool GetValue(bool Verify = false, bool IgnoreCache = false) const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }

  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override { return 0; }
  int64_t IntMax() override { return 1; }
  EAccessMode NaturalAccessMode() const override;

 private:
  bool ReadBool(bool verify, bool ignoreCache);

  ValueSource source_;
  int64_t value_ = 0;
  int64_t on_ = 1, off_ = 0;
};

}  // namespace impl
}  // namespace GenApi
