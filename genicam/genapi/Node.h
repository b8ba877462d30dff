// NodeImpl: what every node of the map shares (names, presentation, links,
// access mode, callbacks) and the internal value protocol that pointers use.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <GenApi/GenApi.h>

#include "Arena.h"
#include "XmlElem.h"

namespace GenApi {
namespace impl {

class NodeMap;
class NodeImpl;

// How a pointer element ties two nodes together (writing ⊂ reading ⊂ invalidating).
enum class LinkClass { Writing, Reading, Invalidating, None };

// Node kinds as pointers see them: each pointer element may only name the
// kinds the schema's key references allow for it.
enum KindBit : uint16_t {
  kIntegerLike = 1 << 0,
  kFloatLike = 1 << 1,
  kEnumerationKind = 1 << 2,
  kBooleanKind = 1 << 3,
  kStringLike = 1 << 4,
  kPortKind = 1 << 5,
  kEnumEntryKind = 1 << 6,
  kConfRomKind = 1 << 7,
  kOtherKind = 1 << 8,
};
// Anything readable as an integer / as a float; any node at all.
constexpr uint16_t kPolyInteger = kIntegerLike | kFloatLike | kEnumerationKind | kBooleanKind;
constexpr uint16_t kPolyFloat = kIntegerLike | kFloatLike | kEnumerationKind;
constexpr uint16_t kAnyKind = 0xFFFF;

// The elements every node kind takes (NodeImpl::ParseCommon).
constexpr bool IsCommonElement(Elem id) {
  switch (id) {
    case Elem::Visibility: case Elem::IsDeprecated: case Elem::pIsImplemented:
    case Elem::pIsAvailable: case Elem::pIsLocked: case Elem::pBlockPolling:
    case Elem::ImposedAccessMode: case Elem::pError: case Elem::pAlias: case Elem::pCastAlias:
    case Elem::pInvalidator: case Elem::pSelected: case Elem::Streamable: case Elem::PollingTime:
      return true;
    default:
      return false;
  }
}

// The kind bits of a node element and a readable name for a set of them.
inline uint16_t KindBitsOf(Elem kind) {
  switch (kind) {
    case Elem::Integer: case Elem::IntReg: case Elem::MaskedIntReg: case Elem::IntSwissKnife:
    case Elem::IntConverter: case Elem::IntKey: case Elem::AdvFeatureLock:
    case Elem::SmartFeature: case Elem::StructEntry:
      return kIntegerLike;
    case Elem::Float: case Elem::FloatReg: case Elem::SwissKnife: case Elem::Converter:
      return kFloatLike;
    case Elem::Enumeration: return kEnumerationKind;
    case Elem::Boolean: return kBooleanKind;
    case Elem::String: case Elem::StringReg: case Elem::TextDesc: return kStringLike;
    case Elem::Port: return kPortKind;
    case Elem::EnumEntry: return kEnumEntryKind;
    case Elem::ConfRom: return kConfRomKind;
    default: return kOtherKind;
  }
}
const char* KindsText(uint16_t kinds);

// A pointer element: the interned target name (marked by the low bit; nodes
// are aligned) until the map links it, then the node.
class Ref {
 public:
  void SetName(uint32_t nameId) { bits_ = (uintptr_t(nameId) << 1) | 1u; }
  bool Given() const { return bits_ != 0; }
  bool Named() const { return (bits_ & 1u) != 0; }
  uint32_t NameId() const { return static_cast<uint32_t>(bits_ >> 1); }
  void Resolve(NodeImpl* node) { bits_ = reinterpret_cast<uintptr_t>(node); }
  NodeImpl* node() const { return Named() ? nullptr : reinterpret_cast<NodeImpl*>(bits_); }

 private:
  uintptr_t bits_ = 0;
};

// Receives every pointer of a node while the map resolves and links them.
class LinkSink {
 public:
  virtual ~LinkSink() = default;
  // kinds: the node kinds the pointer may name. Pointers the description did
  // not give (most of a node's) are passed over here.
  void Link(NodeImpl* owner, Ref& ref, LinkClass cls, Elem element, uint16_t kinds) {
    if (ref.Named()) LinkNamed(owner, ref, cls, element, kinds);
  }

 protected:
  virtual void LinkNamed(NodeImpl* owner, Ref& ref, LinkClass cls, Elem element,
                         uint16_t kinds) = 0;
};

// One element of the node as the description gave it, for GetProperty. The
// attribute text follows the value's terminating NUL.
struct Property {
  const char* name;
  const char* value;
  const char* Attribute() const { return value + std::char_traits<char>::length(value) + 1; }
};

// A node's links, laid out by the map once every pointer is resolved.
struct NodeLinks {
  NodeImpl** children = nullptr;  // writing children, then reading-only, then invalidating-only
  uint32_t writing = 0, reading = 0, invalidating = 0;
  Span<NodeImpl*> parents;
  Span<NodeImpl*> invalidatedBy;  // nodes that hold this one as invalidating child
  Span<NodeImpl*> selecting;      // synthesised inverse of pSelected
};

class NodeImpl : public virtual INode, public virtual ISelector {
 public:
  // Inline, so that building a node of a known kind needs no look-ups of
  // virtual base offsets.
  NodeImpl(NodeMap* map, const char* name, Elem kind) : map_(map), name_(name), kind_(kind) {}
  ~NodeImpl() override;
  NodeImpl(const NodeImpl&) = delete;
  NodeImpl& operator=(const NodeImpl&) = delete;

  // ---- loading ----
  // No node kind parses the elements every node shares, so those are taken
  // first; unknown elements are kept as properties only.
  void Parse(const XmlElem& e) {
    if (IsCommonElement(e.id))
      ParseCommon(e);
    else if (e.id != Elem::Extension)
      ParseSpecific(e);
  }
  virtual bool ParseSpecific(const XmlElem&) { return false; }
  virtual void CollectLinks(LinkSink& sink);
  virtual void FinishLoad() {}
  const char* TypeName() const { return ElemName(kind_); }
  uint16_t KindBits() const { return KindBitsOf(kind_); }
  const char* Name() const { return name_; }
  void SetNameSpace(ENameSpace ns) { nameSpace_ = static_cast<uint8_t>(ns); }
  void SetProperties(Span<Property> properties) { properties_ = properties; }
  uint32_t Index() const { return index_; }
  void SetIndex(uint32_t index) { index_ = index; }

  // ---- links (laid out by the map after resolving) ----
  NodeLinks links;
  Span<NodeImpl*> WritingChildren() const { return {links.children, links.writing}; }
  Span<NodeImpl*> ReadingChildren() const { return {links.children, links.reading}; }
  Span<NodeImpl*> InvalidatingChildren() const { return {links.children, links.invalidating}; }
  Span<NodeImpl*> DependingNodes();
  Span<NodeImpl*> TerminalNodes();

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
  ENameSpace GetNameSpace() const override { return static_cast<ENameSpace>(nameSpace_); }
  EVisibility GetVisibility() const override;
  void InvalidateNode() override;
  bool IsCachable() const override { return GetCachingMode() != NoCache; }
  EYesNo IsAccessModeCacheable() const override;
  ECachingMode GetCachingMode() const override;
  int64_t GetPollingTime() const override { return pollingTime_; }
  GenICam::gcstring GetToolTip() const override { return Text(Elem::ToolTip); }
  GenICam::gcstring GetDescription() const override;
  GenICam::gcstring GetDisplayName() const override;
  GenICam::gcstring GetDeviceName() const override;
  void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const override;
  void GetParents(NodeList_t& Parents) const override;
  CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
  bool DeregisterCallback(CallbackHandleType hCallback) override;
  INodeMap* GetNodeMap() const override;
  GenICam::gcstring GetEventID() const override { return Text(Elem::EventID); }
  bool IsStreamable() const override { return streamable_; }
  void GetPropertyNames(GenICam::gcstring_vector& PropertyNames) const override;
  bool GetProperty(const GenICam::gcstring& PropertyName, GenICam::gcstring& ValueStr,
                   GenICam::gcstring& AttributeStr) override;
  void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
  void ImposeVisibility(EVisibility ImposedVisibility) override;
  INode* GetAlias() const override;
  INode* GetCastAlias() const override;
  GenICam::gcstring GetDocuURL() const override { return Text(Elem::DocuURL); }
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
  // The last text the description gave for a presentation element, or "".
  const char* Text(Elem element) const;
  // Records a pointer element's target name.
  void SetRef(Ref& ref, const XmlElem& e);
  void AddRef(ArenaVec<Ref>& list, const XmlElem& e);
  Arena& Memory() const;

  NodeMap* map_;
  const char* name_;
  Elem kind_;
  uint8_t nameSpace_ = Custom;
  uint8_t visibility_ = Beginner;
  uint8_t imposedVisibility_ = _UndefinedVisibility;
  uint8_t imposedElement_ = RW;
  uint8_t imposedByUser_ = RW;
  bool deprecated_ = false;
  bool streamable_ = false;
  int64_t pollingTime_ = -1;
  Ref pIsImplemented_, pIsAvailable_, pIsLocked_, pBlockPolling_, pError_, pAlias_, pCastAlias_;
  ArenaVec<Ref> invalidators_;
  ArenaVec<Ref> selected_;
  Span<Property> properties_;

 private:
  EAccessMode ComputeAccessMode() const;
  bool ParseCommon(const XmlElem& element);

  std::vector<CNodeCallback*> callbacks_;
  uint32_t index_ = 0;
  mutable uint8_t accessCache_ = _UndefinedAccesMode;
  mutable bool accessCacheValid_ = false;
  mutable bool computingAccess_ = false;
  mutable int8_t cachingModeState_ = -1;  // -1 unknown, -2 computing, else ECachingMode
  mutable int8_t accessCacheableState_ = -1;
  bool dependingKnown_ = false, terminalKnown_ = false;
  Span<NodeImpl*> depending_, terminal_;
  int64_t pollElapsed_ = 0;
};

// Value helpers that follow a pointer with a recursion guard.
int64_t ReadInt(const NodeImpl* owner, NodeImpl* target, bool ignoreCache);
double ReadFloat(const NodeImpl* owner, NodeImpl* target, bool ignoreCache);
// Guard value read for pIsImplemented/pIsAvailable/pIsLocked/pBlockPolling;
// errors while reading reach the caller.
bool ReadGuard(const NodeImpl* owner, NodeImpl* target, bool& readable);

}  // namespace impl
}  // namespace GenApi
