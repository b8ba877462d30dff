// NodeImpl: what every node of the map shares (names, presentation, links,
// access mode, callbacks) and the internal value protocol that pointers use.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <GenApi/GenApi.h>

#include "XmlElem.h"

namespace GenApi {
namespace impl {

class NodeMap;
class NodeImpl;

// How a pointer element ties two nodes together (writing ⊂ reading ⊂ invalidating).
enum class LinkClass { Writing, Reading, Invalidating, None };

// A pointer element: the target's name until the map resolves it.
struct Ref {
  std::string name;
  NodeImpl* node = nullptr;
  bool Given() const { return !name.empty(); }
};

// Receives every pointer of a node while the map resolves and links them.
class LinkSink {
 public:
  virtual ~LinkSink() = default;
  virtual void Link(NodeImpl* owner, Ref& ref, LinkClass cls, const char* element) = 0;
};

struct Property {
  std::string name;
  std::string value;
  std::string attribute;
};

class NodeImpl : public virtual INode, public virtual ISelector {
 public:
  NodeImpl(NodeMap* map, const std::string& name, const char* typeName);
  ~NodeImpl() override;
  NodeImpl(const NodeImpl&) = delete;
  NodeImpl& operator=(const NodeImpl&) = delete;

  // ---- loading ----
  void Parse(const XmlElem& element);
  virtual bool ParseSpecific(const XmlElem&) { return false; }
  virtual void CollectLinks(LinkSink& sink);
  virtual void FinishLoad() {}
  const char* TypeName() const { return typeName_; }
  const std::string& Name() const { return name_; }
  void SetNameSpace(ENameSpace ns) { nameSpace_ = ns; }
  void AddProperty(const std::string& name, const std::string& value, const std::string& attr);

  // ---- links (filled by the map after resolving) ----
  std::vector<NodeImpl*> readingChildren, writingChildren, invalidatingChildren, parents;
  std::vector<NodeImpl*> invalidatedBy;  // nodes that hold this one as invalidating child
  std::vector<NodeImpl*> selecting;      // synthesised inverse of pSelected
  const std::vector<NodeImpl*>& DependingNodes();
  const std::vector<NodeImpl*>& TerminalNodes();

  // ---- internal value protocol (no access checks, no callbacks) ----
  virtual int64_t GetInt(bool verify, bool ignoreCache);
  virtual void SetInt(int64_t value, bool verify);
  virtual double GetFloat(bool verify, bool ignoreCache);
  virtual void SetFloat(double value, bool verify);
  virtual int64_t IntMin();
  virtual int64_t IntMax();
  virtual int64_t IntInc();
  virtual double FloatMin();
  virtual double FloatMax();
  virtual std::string GetStr(bool verify, bool ignoreCache);
  virtual void SetStr(const std::string& value, bool verify);
  virtual ERepresentation Representation() { return _UndefinedRepresentation; }
  virtual std::string Unit() { return std::string(); }
  virtual bool IsFloatLike() const { return false; }

  // Static caching mode before combining with children.
  virtual ECachingMode OwnCachingMode() const { return WriteThrough; }
  // Drops every cached value (value and access mode) of this node.
  virtual void ClearValueCache() {}
  void ClearAccessCache() { accessCacheValid_ = false; }
  void ClearCaches() {
    ClearValueCache();
    ClearAccessCache();
  }
  bool HasCallbacks() const { return !callbacks_.empty(); }
  void FireCallbacks(ECallbackType phase);
  // Polling support: returns true when the node's polling time expired.
  bool Poll(int64_t elapsed);
  // Whether polling applies right now (a command polls only while busy).
  virtual bool PollActive() { return true; }
  NodeMap* Map() const { return map_; }

  // ---- INode ----
  EAccessMode GetAccessMode() const override;
  GenICam::gcstring GetName(bool FullQualified = false) const override;
  ENameSpace GetNameSpace() const override { return nameSpace_; }
  EVisibility GetVisibility() const override;
  void InvalidateNode() override;
  bool IsCachable() const override { return GetCachingMode() != NoCache; }
  EYesNo IsAccessModeCacheable() const override;
  ECachingMode GetCachingMode() const override;
  int64_t GetPollingTime() const override { return pollingTime_; }
  GenICam::gcstring GetToolTip() const override { return toolTip_.c_str(); }
  GenICam::gcstring GetDescription() const override;
  GenICam::gcstring GetDisplayName() const override;
  GenICam::gcstring GetDeviceName() const override;
  void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const override;
  void GetParents(NodeList_t& Parents) const override;
  CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
  bool DeregisterCallback(CallbackHandleType hCallback) override;
  INodeMap* GetNodeMap() const override;
  GenICam::gcstring GetEventID() const override { return eventId_.c_str(); }
  bool IsStreamable() const override { return streamable_; }
  void GetPropertyNames(GenICam::gcstring_vector& PropertyNames) const override;
  bool GetProperty(const GenICam::gcstring& PropertyName, GenICam::gcstring& ValueStr,
                   GenICam::gcstring& AttributeStr) override;
  void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
  void ImposeVisibility(EVisibility ImposedVisibility) override;
  INode* GetAlias() const override;
  INode* GetCastAlias() const override;
  GenICam::gcstring GetDocuURL() const override { return docuUrl_.c_str(); }
  bool IsDeprecated() const override { return deprecated_; }
  EInterfaceType GetPrincipalInterfaceType() const override = 0;
  bool IsFeature() const override;

  // ---- ISelector ----
  bool IsSelector() const override { return !selected_.empty(); }
  void GetSelectedFeatures(FeatureList_t& Features) const override;
  void GetSelectingFeatures(FeatureList_t& Features) const override;

  // Mode of the node before guards and imposed modes are applied.
  virtual EAccessMode NaturalAccessMode() const { return RW; }
  // Access mode without the map lock (callers hold it).
  EAccessMode AccessModeLocked() const;

 protected:
  // Throwing helpers that name this node.
  [[noreturn]] void ThrowNotReadable(const char* method) const;
  [[noreturn]] void ThrowNotWritable(const char* method) const;
  void CheckReadable(const char* method) const;
  void CheckWritable(const char* method) const;
  [[noreturn]] void ThrowUnsupported(const char* what) const;
  // Value-cache validity of a node without a cache of its own: its value
  // sources must all be cached.
  bool ChildrenCacheValid() const;
  // Throws when the node's pError enumeration reports an error (value not 0).
  void CheckError(const char* method);

  NodeMap* map_;
  std::string name_;
  const char* typeName_;
  ENameSpace nameSpace_ = Custom;
  std::string toolTip_, description_, displayName_, docuUrl_, eventId_;
  EVisibility visibility_ = Beginner;
  EVisibility imposedVisibility_ = _UndefinedVisibility;
  bool deprecated_ = false;
  bool streamable_ = false;
  int64_t pollingTime_ = -1;
  EAccessMode imposedElement_ = RW;
  EAccessMode imposedByUser_ = RW;
  Ref pIsImplemented_, pIsAvailable_, pIsLocked_, pBlockPolling_, pError_, pAlias_, pCastAlias_;
  std::vector<Ref> invalidators_;
  std::vector<Ref> selected_;
  std::vector<Property> properties_;

 private:
  EAccessMode ComputeAccessMode() const;
  bool ParseCommon(const XmlElem& element);

  std::vector<CNodeCallback*> callbacks_;
  mutable EAccessMode accessCache_ = _UndefinedAccesMode;
  mutable bool accessCacheValid_ = false;
  mutable bool computingAccess_ = false;
  mutable int cachingModeState_ = -1;  // -1 unknown, -2 computing, else ECachingMode
  mutable int accessCacheableState_ = -1;
  std::vector<NodeImpl*> depending_, terminal_;
  bool dependingKnown_ = false, terminalKnown_ = false;
  int64_t pollElapsed_ = 0;
};

// Value helpers that follow a pointer with a recursion guard.
int64_t ReadInt(const NodeImpl* owner, NodeImpl* target, bool ignoreCache);
double ReadFloat(const NodeImpl* owner, NodeImpl* target, bool ignoreCache);
// Guard value read for pIsImplemented/pIsAvailable/pIsLocked/pBlockPolling.
bool ReadGuard(const NodeImpl* owner, NodeImpl* target, bool& readable);

}  // namespace impl
}  // namespace GenApi
