// Enumeration and EnumEntry.
#pragma once

#include "Node.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class EnumEntryNode : public NodeImpl, public virtual IEnumEntry {
 public:
  EnumEntryNode(NodeMap* map, const char* name, const char* entryName)
      : NodeImpl(map, name, Elem::EnumEntry), entryName_(entryName), symbolic_(entryName) {}

  bool ParseSpecific(const XmlElem& e) override;
  void FinishLoad() override;
  const char* EntryName() const { return entryName_; }

  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override { return true; }
  int64_t GetValue() override { return value_; }
  GenICam::gcstring GetSymbolic() const override { return symbolic_; }
  const char* Symbolic() const { return symbolic_; }
  double GetNumericValue() override { return hasNumeric_ ? numeric_ : double(value_); }
  bool IsSelfClearing() override { return selfClearing_; }
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }

  int64_t GetInt(bool, bool) override { return value_; }
  double GetFloat(bool, bool) override { return GetNumericValue(); }
  EAccessMode NaturalAccessMode() const override { return RO; }

 private:
  const char* entryName_;
  const char* symbolic_;
  const char* valueText_ = nullptr;
  int64_t value_ = 0;
  double numeric_ = 0;
  bool hasNumeric_ = false, selfClearing_ = false;
};

class EnumerationNode : public NodeImpl, public virtual IEnumeration {
 public:
  EnumerationNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Enumeration) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;
  void AddEntry(uint32_t nodeNameId) {
    Ref ref;
    ref.SetName(nodeNameId);
    entries_.push_back(Memory(), ref);
  }
  EnumEntryNode* EntryByXmlName(std::string_view name) const;

  // IValue
  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override;

  // IEnumeration
  void GetSymbolics(StringList_t& Symbolics) override;
  void GetEntries(NodeList_t& Entries) override;
  void SetIntValue(int64_t Value, bool Verify = true) override;
  int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) override;
  IEnumEntry* GetEntryByName(const GenICam::gcstring& Symbolic) override;
  IEnumEntry* GetEntry(const int64_t IntValue) override;
  IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }

  // Internal protocol: the integer is the entry value, the float its NumericValue.
  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  double GetFloat(bool verify, bool ignoreCache) override;
  void SetFloat(double value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;
  double FloatMin() override;
  double FloatMax() override;
  EAccessMode NaturalAccessMode() const override;
  // A self-clearing entry is polled until the device moves on.
  bool PollActive() override;

 private:
  EnumEntryNode* FindEntry(int64_t value) const;
  void CheckEntryWritable(EnumEntryNode* entry, const char* method) const;

  ValueSource source_;
  int64_t value_ = 0;
  ArenaVec<Ref> entries_;
};

}  // namespace impl
}  // namespace GenApi
