// NodeImpl: common elements, presentation, properties and callbacks.
#include "Node.h"

#include <algorithm>
#include <cstring>

#include "CallbackRegistry.h"
#include "NodeMap.h"

namespace GenApi {
namespace impl {

NodeImpl::~NodeImpl() {
  for (CNodeCallback* cb : callbacks_) {
    ForgetCallback(reinterpret_cast<CallbackHandleType>(cb));
    cb->Destroy();
  }
}

const char* KindsText(uint16_t kinds) {
  switch (kinds) {
    case kPolyInteger: return "an integer, float, boolean or enumeration";
    case kPolyFloat: return "an integer, float or enumeration";
    case kIntegerLike: return "an integer";
    case kIntegerLike | kEnumerationKind: return "an integer or enumeration";
    case kStringLike: return "a string";
    case kPortKind: return "a port";
    case kEnumerationKind: return "an enumeration";
    case kEnumEntryKind: return "an enumeration entry";
    case kConfRomKind: return "a configuration ROM";
    default: return "a node of another kind";
  }
}

Arena& NodeImpl::Memory() const { return map_->Memory(); }

void NodeImpl::SetRef(Ref& ref, const XmlElem& e) { ref.SetName(e.Target(map_->Names())); }

void NodeImpl::AddRef(ArenaVec<Ref>& list, const XmlElem& e) {
  Ref ref;
  SetRef(ref, e);
  list.push_back(Memory(), ref);
}

bool NodeImpl::ParseCommon(const XmlElem& e) {
  switch (e.id) {
    case Elem::Visibility: visibility_ = static_cast<uint8_t>(ParseVisibility(e)); break;
    case Elem::IsDeprecated: deprecated_ = ParseYesNo(e); break;
    case Elem::pIsImplemented: SetRef(pIsImplemented_, e); break;
    case Elem::pIsAvailable: SetRef(pIsAvailable_, e); break;
    case Elem::pIsLocked: SetRef(pIsLocked_, e); break;
    case Elem::pBlockPolling: SetRef(pBlockPolling_, e); break;
    case Elem::ImposedAccessMode:
      imposedElement_ = static_cast<uint8_t>(ParseAccessMode(e, RW));
      break;
    case Elem::pError: SetRef(pError_, e); break;
    case Elem::pAlias: SetRef(pAlias_, e); break;
    case Elem::pCastAlias: SetRef(pCastAlias_, e); break;
    case Elem::pInvalidator: AddRef(invalidators_, e); break;
    case Elem::pSelected: AddRef(selected_, e); break;
    case Elem::Streamable: streamable_ = ParseYesNo(e); break;
    case Elem::PollingTime: pollingTime_ = ParseInt(name_, e); break;
    default: return false;  // keep IsCommonElement in step with these cases
  }
  return true;
}

const char* NodeImpl::Text(Elem element) const {
  const char* name = ElemName(element);
  for (size_t i = properties_.size(); i-- > 0;)
    if (properties_[i].name == name) return properties_[i].value;
  return "";
}

void NodeImpl::CollectLinks(LinkSink& sink) {
  sink.Link(this, pIsImplemented_, LinkClass::Reading, Elem::pIsImplemented, kPolyInteger);
  sink.Link(this, pIsAvailable_, LinkClass::Reading, Elem::pIsAvailable, kPolyInteger);
  sink.Link(this, pIsLocked_, LinkClass::Reading, Elem::pIsLocked, kPolyInteger);
  sink.Link(this, pBlockPolling_, LinkClass::Reading, Elem::pBlockPolling, kPolyInteger);
  sink.Link(this, pError_, LinkClass::Reading, Elem::pError, kEnumerationKind);
  sink.Link(this, pAlias_, LinkClass::None, Elem::pAlias, kAnyKind);
  sink.Link(this, pCastAlias_, LinkClass::None, Elem::pCastAlias, kAnyKind);
  for (Ref& r : invalidators_)
    sink.Link(this, r, LinkClass::Invalidating, Elem::pInvalidator, kAnyKind);
  for (Ref& r : selected_) sink.Link(this, r, LinkClass::None, Elem::pSelected, kAnyKind);
}

GenICam::gcstring NodeImpl::GetName(bool FullQualified) const {
  if (!FullQualified) return name_;
  return (std::string(nameSpace_ == Standard ? "Std::" : "Cust::") + name_).c_str();
}

EVisibility NodeImpl::GetVisibility() const {
  return Combine(static_cast<EVisibility>(visibility_),
                 static_cast<EVisibility>(imposedVisibility_));
}

GenICam::gcstring NodeImpl::GetDescription() const {
  const char* description = Text(Elem::Description);
  return *description != '\0' ? description : Text(Elem::ToolTip);
}

GenICam::gcstring NodeImpl::GetDisplayName() const {
  const char* displayName = Text(Elem::DisplayName);
  return *displayName != '\0' ? displayName : name_;
}

GenICam::gcstring NodeImpl::GetDeviceName() const { return map_->GetDeviceName(); }

INodeMap* NodeImpl::GetNodeMap() const { return map_; }

INode* NodeImpl::GetAlias() const { return pAlias_.node(); }
INode* NodeImpl::GetCastAlias() const { return pCastAlias_.node(); }

bool NodeImpl::IsFeature() const {
  return dynamic_cast<const IValue*>(this) != nullptr ||
         dynamic_cast<const ICategory*>(this) != nullptr;
}

void NodeImpl::InvalidateNode() { map_->InvalidateFrom(this); }

void NodeImpl::ImposeAccessMode(EAccessMode mode) {
  imposedByUser_ = static_cast<uint8_t>(mode);
  map_->InvalidateFrom(this);
}

void NodeImpl::ImposeVisibility(EVisibility v) { imposedVisibility_ = static_cast<uint8_t>(v); }

void NodeImpl::GetSelectedFeatures(FeatureList_t& features) const {
  features.clear();
  for (const Ref& r : selected_)
    if (IValue* v = dynamic_cast<IValue*>(r.node())) features.push_back(v);
}

void NodeImpl::GetSelectingFeatures(FeatureList_t& features) const {
  features.clear();
  for (NodeImpl* n : links.selecting)
    if (IValue* v = dynamic_cast<IValue*>(n)) features.push_back(v);
}

// ---- properties ----

void NodeImpl::GetPropertyNames(GenICam::gcstring_vector& names) const {
  names.clear();
  std::vector<const char*> seen{"Name", "NameSpace", "DeviceName"};
  for (const Property& p : properties_) {
    auto same = [&p](const char* s) { return std::strcmp(s, p.name) == 0; };
    if (std::find_if(seen.begin(), seen.end(), same) == seen.end()) seen.push_back(p.name);
  }
  for (const char* s : seen) names.push_back(s);
}

namespace {
std::string JoinNames(Span<NodeImpl*> nodes, bool reversed) {
  std::string out;
  std::vector<NodeImpl*> list(nodes.begin(), nodes.end());
  if (reversed) std::reverse(list.begin(), list.end());
  for (NodeImpl* n : list) {
    if (!out.empty()) out += '\t';
    out += n->Name();
  }
  return out;
}
}  // namespace

bool NodeImpl::GetProperty(const GenICam::gcstring& propertyName, GenICam::gcstring& valueStr,
                           GenICam::gcstring& attributeStr) {
  AutoLock guard(map_->GetLock());
  const std::string key(propertyName.c_str());
  valueStr = "";
  attributeStr = "";
  if (key == "Name") {
    valueStr = name_;
    return true;
  }
  if (key == "NameSpace") {
    valueStr = nameSpace_ == Standard ? "Standard" : "Custom";
    return true;
  }
  if (key == "DeviceName") {
    valueStr = map_->GetDeviceName();
    return true;
  }
  if (key == "pDependent") {
    valueStr = JoinNames(DependingNodes(), true).c_str();
    return !DependingNodes().empty();
  }
  if (key == "pTerminal") {
    valueStr = JoinNames(TerminalNodes(), false).c_str();
    return true;
  }
  std::string value, attribute;
  bool found = false;
  for (const Property& p : properties_) {
    if (key != p.name) continue;
    if (found) {
      value += '\t';
      attribute += '\t';
    }
    value += p.value;
    attribute += p.Attribute();
    found = true;
  }
  valueStr = value.c_str();
  attributeStr = attribute.c_str();
  return found;
}

// ---- callbacks ----

CallbackHandleType NodeImpl::RegisterCallback(CNodeCallback* pCallback) {
  if (!pCallback) throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "RegisterCallback")(
      "Null callback");
  AutoLock guard(map_->GetLock());
  callbacks_.push_back(pCallback);
  const CallbackHandleType handle = reinterpret_cast<CallbackHandleType>(pCallback);
  RememberCallback(handle, this);
  return handle;
}

bool NodeImpl::DeregisterCallback(CallbackHandleType hCallback) {
  AutoLock guard(map_->GetLock());
  auto it = std::find(callbacks_.begin(), callbacks_.end(),
                      reinterpret_cast<CNodeCallback*>(hCallback));
  if (it == callbacks_.end()) return false;
  CNodeCallback* cb = *it;
  callbacks_.erase(it);
  ForgetCallback(hCallback);
  cb->Destroy();
  return true;
}

void NodeImpl::FireCallbacks(ECallbackType phase) {
  const std::vector<CNodeCallback*> snapshot(callbacks_);
  for (CNodeCallback* cb : snapshot) {
    if (std::find(callbacks_.begin(), callbacks_.end(), cb) == callbacks_.end()) continue;
    // Like the reference, a client's exception reaches the caller of the
    // write; the map has finished its own bookkeeping before any callback.
    (*cb)(phase);
  }
}

bool NodeImpl::Poll(int64_t elapsed) {
  if (pollingTime_ <= 0 || !PollActive()) return false;
  pollElapsed_ += elapsed;
  if (pollElapsed_ < pollingTime_) return false;
  pollElapsed_ = 0;
  if (pBlockPolling_.node()) {
    bool readable = false;
    try {
      if (ReadGuard(this, pBlockPolling_.node(), readable) && readable) return false;
    } catch (const GenICam::GenericException&) {
      // A guard that cannot be read does not block polling.
    }
  }
  return true;
}

// ---- throwing helpers ----

void NodeImpl::ThrowNotReadable(const char* method) const {
  throw ACCESS_EXCEPTION_NODE(name_, method)("Node is not readable.");
}

void NodeImpl::ThrowNotWritable(const char* method) const {
  throw ACCESS_EXCEPTION_NODE(name_, method)("Node is not writable.");
}

void NodeImpl::CheckReadable(const char* method) const {
  if (!IsReadable(AccessModeLocked())) ThrowNotReadable(method);
}

void NodeImpl::CheckWritable(const char* method) const {
  if (!IsWritable(AccessModeLocked())) ThrowNotWritable(method);
}

void NodeImpl::ThrowUnsupported(const char* what) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(name_, what)(
      "Node '%s' of type %s cannot be used as %s", name_, TypeName(), what);
}

bool NodeImpl::ChildrenCacheValid() const {
  AutoLock guard(map_->GetLock());
  if (GetCachingMode() == NoCache) return false;
  // Pointer nodes depend on their value source, formulas on their variables.
  for (NodeImpl* child : links.writing == 0 ? ReadingChildren() : WritingChildren()) {
    const IValue* v = dynamic_cast<const IValue*>(child);
    if (v && !v->IsValueCacheValid()) return false;
  }
  return true;
}

void NodeImpl::CheckError(const char* method) {
  if (!pError_.node()) return;
  const int64_t code = ReadInt(this, pError_.node(), true);
  if (code == 0) return;
  std::string text = "error " + std::to_string(code);
  if (auto* e = dynamic_cast<IEnumeration*>(pError_.node())) {
    if (IEnumEntry* entry = e->GetEntry(code)) {
      INode* n = entry->GetNode();
      text = std::string(n->GetDisplayName().c_str());
      const std::string tip = n->GetToolTip().c_str();
      if (!tip.empty()) text += " : " + tip;
    }
  }
  throw RUNTIME_EXCEPTION_NODE(name_, method)("%s", text.c_str());
}

// ---- default value protocol: conversions between the numeric kinds ----

int64_t NodeImpl::GetInt(bool, bool) { ThrowUnsupported("integer"); }
void NodeImpl::SetInt(int64_t, bool) { ThrowUnsupported("integer"); }
double NodeImpl::GetFloat(bool verify, bool ignoreCache) {
  return static_cast<double>(GetInt(verify, ignoreCache));
}
void NodeImpl::SetFloat(double value, bool verify) {
  const double r = value < 0 ? value - 0.5 : value + 0.5;
  if (!(r > -9.2e18 && r < 9.2e18))
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "SetValue")(
        "Value %f does not fit an integer", value);
  SetInt(static_cast<int64_t>(r), verify);
}
int64_t NodeImpl::IntMin() { return INT64_MIN; }
int64_t NodeImpl::IntMax() { return INT64_MAX; }
int64_t NodeImpl::IntInc() { return 1; }
double NodeImpl::FloatMin() { return static_cast<double>(IntMin()); }
double NodeImpl::FloatMax() { return static_cast<double>(IntMax()); }
std::string NodeImpl::GetStr(bool, bool) { ThrowUnsupported("string"); }
void NodeImpl::SetStr(const std::string&, bool) { ThrowUnsupported("string"); }

// ---- pointer helpers ----

int64_t ReadInt(const NodeImpl* owner, NodeImpl* target, bool ignoreCache) {
  CallGuard guard(owner);
  return target->GetInt(false, ignoreCache);
}

double ReadFloat(const NodeImpl* owner, NodeImpl* target, bool ignoreCache) {
  CallGuard guard(owner);
  return target->GetFloat(false, ignoreCache);
}

bool ReadGuard(const NodeImpl* owner, NodeImpl* target, bool& readable) {
  readable = false;
  CallGuard guard(owner);
  if (!IsReadable(target->AccessModeLocked())) return false;
  const bool value = target->GetInt(false, false) != 0;
  readable = true;
  return value;
}

}  // namespace impl
}  // namespace GenApi
