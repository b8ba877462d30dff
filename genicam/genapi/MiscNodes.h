// Category, the plain Node, Register and the IEEE 1212 configuration ROM nodes.
#pragma once

#include "IntegerBase.h"
#include "RegisterMixin.h"
#include "StringNodes.h"

namespace GenApi {
namespace impl {

class CategoryNode : public NodeImpl, public virtual ICategory {
 public:
  CategoryNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Category) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override { return true; }
  void GetFeatures(FeatureList_t& Features) const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICategory; }
  EAccessMode NaturalAccessMode() const override;

 private:
  ArenaVec<Ref> features_;
};

// The "Node" element: a node that only carries presentation and links.
class PlainNode : public NodeImpl, public virtual IValue {
 public:
  PlainNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Node) {}
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool, bool) override { return ""; }
  void FromString(const GenICam::gcstring&, bool) override { ThrowNotWritable("FromString"); }
  bool IsValueCacheValid() const override { return true; }
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIValue; }
};

class RegisterNode : public RegisterBacked<NodeImpl> {
 public:
  RegisterNode(NodeMap* map, const char* name, Elem kind = Elem::Register)
      : RegisterBacked(map, name, kind) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }
  // Raw image for the IEEE 1212 key nodes.
  std::vector<uint8_t> Image(bool ignoreCache) { return core_.Read(this, ignoreCache); }
};

// IntKey / TextDesc: a key of the configuration ROM named by p1212Parser.
class IntKeyNode : public IntegerBase {
 public:
  IntKeyNode(NodeMap* map, const char* name) : IntegerBase(map, name, Elem::IntKey) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  int64_t GetInt(bool verify, bool ignoreCache) override;
  EAccessMode NaturalAccessMode() const override;

 private:
  Ref parser_;
  int64_t key_ = 0;
};

class TextDescNode : public StringBase {
 public:
  TextDescNode(NodeMap* map, const char* name) : StringBase(map, name, Elem::TextDesc) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  std::string GetStr(bool verify, bool ignoreCache) override;
  int64_t MaxLength() override { return 256; }
  EAccessMode NaturalAccessMode() const override;

 private:
  Ref parser_;
  int64_t key_ = 0;
};

}  // namespace impl
}  // namespace GenApi
