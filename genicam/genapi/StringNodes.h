// String, StringReg and the shared IString behaviour.
#pragma once

#include "Node.h"
#include "RegisterMixin.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class StringBase : public NodeImpl, public virtual IString {
 public:
  StringBase(NodeMap* map, const char* name, Elem kind) : NodeImpl(map, name, kind) {}

  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override;
  void SetValue(const GenICam::gcstring& Value, bool Verify = true) override;
  GenICam::gcstring GetValue(bool Verify = false, bool IgnoreCache = false) override;
  int64_t GetMaxLength() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }

  virtual int64_t MaxLength() = 0;
};

class StringNode : public StringBase {
 public:
  StringNode(NodeMap* map, const char* name) : StringBase(map, name, Elem::String) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  std::string GetStr(bool verify, bool ignoreCache) override;
  void SetStr(const std::string& value, bool verify) override;
  int64_t MaxLength() override;
  EAccessMode NaturalAccessMode() const override;

 private:
  ValueSource source_;
  std::string written_;  // the value once a client set it
  bool isWritten_ = false;
};

class StringRegNode : public RegisterBacked<StringBase> {
 public:
  StringRegNode(NodeMap* map, const char* name) : RegisterBacked(map, name, Elem::StringReg) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  std::string GetStr(bool verify, bool ignoreCache) override;
  void SetStr(const std::string& value, bool verify) override;
  int64_t MaxLength() override { return core_.Length(this, false); }
};

}  // namespace impl
}  // namespace GenApi
