// NodeImpl: common elements, presentation, properties and callbacks.
#include "Node.h"

#include <algorithm>

#include "CallbackRegistry.h"
#include "NodeMap.h"

namespace GenApi {
namespace impl {

NodeImpl::NodeImpl(NodeMap* map, const std::string& name, const char* typeName)
    : map_(map), name_(name), typeName_(typeName) {}

NodeImpl::~NodeImpl() {
  for (CNodeCallback* cb : callbacks_) {
    ForgetCallback(reinterpret_cast<CallbackHandleType>(cb));
    cb->Destroy();
  }
}

void NodeImpl::Parse(const XmlElem& e) {
  AddProperty(e.name, e.text, e.attrs.empty() ? std::string() : e.attrs.front().second);
  if (e.name == "Extension") return;
  if (ParseSpecific(e)) return;
  ParseCommon(e);  // unknown elements are kept as properties only
}

bool NodeImpl::ParseCommon(const XmlElem& e) {
  const std::string& n = e.name;
  if (n == "ToolTip") toolTip_ = e.text;
  else if (n == "Description") description_ = e.text;
  else if (n == "DisplayName") displayName_ = e.text;
  else if (n == "Visibility") visibility_ = ParseVisibility(e);
  else if (n == "DocuURL") docuUrl_ = e.text;
  else if (n == "IsDeprecated") deprecated_ = ParseYesNo(e);
  else if (n == "EventID") eventId_ = e.text;
  else if (n == "pIsImplemented") pIsImplemented_.name = e.text;
  else if (n == "pIsAvailable") pIsAvailable_.name = e.text;
  else if (n == "pIsLocked") pIsLocked_.name = e.text;
  else if (n == "pBlockPolling") pBlockPolling_.name = e.text;
  else if (n == "ImposedAccessMode") imposedElement_ = ParseAccessMode(e, RW);
  else if (n == "pError") pError_.name = e.text;
  else if (n == "pAlias") pAlias_.name = e.text;
  else if (n == "pCastAlias") pCastAlias_.name = e.text;
  else if (n == "pInvalidator") invalidators_.push_back(Ref{e.text, nullptr});
  else if (n == "pSelected") selected_.push_back(Ref{e.text, nullptr});
  else if (n == "Streamable") streamable_ = ParseYesNo(e);
  else if (n == "PollingTime") pollingTime_ = ParseInt(name_, e);
  else return false;
  return true;
}

void NodeImpl::AddProperty(const std::string& name, const std::string& value,
                           const std::string& attr) {
  properties_.push_back(Property{name, value, attr});
}

void NodeImpl::CollectLinks(LinkSink& sink) {
  sink.Link(this, pIsImplemented_, LinkClass::Reading, "pIsImplemented");
  sink.Link(this, pIsAvailable_, LinkClass::Reading, "pIsAvailable");
  sink.Link(this, pIsLocked_, LinkClass::Reading, "pIsLocked");
  sink.Link(this, pBlockPolling_, LinkClass::Reading, "pBlockPolling");
  sink.Link(this, pError_, LinkClass::Reading, "pError");
  sink.Link(this, pAlias_, LinkClass::None, "pAlias");
  sink.Link(this, pCastAlias_, LinkClass::None, "pCastAlias");
  for (Ref& r : invalidators_) sink.Link(this, r, LinkClass::Invalidating, "pInvalidator");
  for (Ref& r : selected_) sink.Link(this, r, LinkClass::None, "pSelected");
}

GenICam::gcstring NodeImpl::GetName(bool FullQualified) const {
  if (!FullQualified) return name_.c_str();
  return ((nameSpace_ == Standard ? "Std::" : "Cust::") + name_).c_str();
}

EVisibility NodeImpl::GetVisibility() const { return Combine(visibility_, imposedVisibility_); }

GenICam::gcstring NodeImpl::GetDescription() const {
  return (description_.empty() ? toolTip_ : description_).c_str();
}

GenICam::gcstring NodeImpl::GetDisplayName() const {
  return (displayName_.empty() ? name_ : displayName_).c_str();
}

GenICam::gcstring NodeImpl::GetDeviceName() const { return map_->GetDeviceName(); }

INodeMap* NodeImpl::GetNodeMap() const { return map_; }

INode* NodeImpl::GetAlias() const { return pAlias_.node; }
INode* NodeImpl::GetCastAlias() const { return pCastAlias_.node; }

bool NodeImpl::IsFeature() const {
  return dynamic_cast<const IValue*>(this) != nullptr ||
         dynamic_cast<const ICategory*>(this) != nullptr;
}

void NodeImpl::InvalidateNode() { map_->InvalidateFrom(this); }

void NodeImpl::ImposeAccessMode(EAccessMode mode) {
  imposedByUser_ = mode;
  map_->InvalidateFrom(this);
}

void NodeImpl::ImposeVisibility(EVisibility v) { imposedVisibility_ = v; }

void NodeImpl::GetSelectedFeatures(FeatureList_t& features) const {
  features.clear();
  for (const Ref& r : selected_)
    if (IValue* v = dynamic_cast<IValue*>(r.node)) features.push_back(v);
}

void NodeImpl::GetSelectingFeatures(FeatureList_t& features) const {
  features.clear();
  for (NodeImpl* n : selecting)
    if (IValue* v = dynamic_cast<IValue*>(n)) features.push_back(v);
}

// ---- properties ----

void NodeImpl::GetPropertyNames(GenICam::gcstring_vector& names) const {
  names.clear();
  std::vector<std::string> seen{"Name", "NameSpace", "DeviceName"};
  for (const Property& p : properties_)
    if (std::find(seen.begin(), seen.end(), p.name) == seen.end()) seen.push_back(p.name);
  for (const std::string& s : seen) names.push_back(s.c_str());
}

namespace {
std::string JoinNames(const std::vector<NodeImpl*>& nodes, bool reversed) {
  std::string out;
  std::vector<NodeImpl*> list(nodes);
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
    valueStr = name_.c_str();
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
    if (p.name != key) continue;
    if (found) {
      value += '\t';
      attribute += '\t';
    }
    value += p.value;
    attribute += p.attribute;
    found = true;
  }
  valueStr = value.c_str();
  attributeStr = attribute.c_str();
  return found;
}

// ---- callbacks ----

CallbackHandleType NodeImpl::RegisterCallback(CNodeCallback* pCallback) {
  if (!pCallback) throw INVALID_ARGUMENT_EXCEPTION_NODE(name_.c_str(), "RegisterCallback")(
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
    try {
      (*cb)(phase);
    } catch (...) {
      // A failing client callback must not leave the map half-updated.
    }
  }
}

bool NodeImpl::Poll(int64_t elapsed) {
  if (pollingTime_ <= 0 || !PollActive()) return false;
  pollElapsed_ += elapsed;
  if (pollElapsed_ < pollingTime_) return false;
  pollElapsed_ = 0;
  if (pBlockPolling_.node) {
    bool readable = false;
    if (ReadGuard(this, pBlockPolling_.node, readable) && readable) return false;
  }
  return true;
}

// ---- throwing helpers ----

void NodeImpl::ThrowNotReadable(const char* method) const {
  throw ACCESS_EXCEPTION_NODE(name_.c_str(), method)("Node is not readable.");
}

void NodeImpl::ThrowNotWritable(const char* method) const {
  throw ACCESS_EXCEPTION_NODE(name_.c_str(), method)("Node is not writable.");
}

void NodeImpl::CheckReadable(const char* method) const {
  if (!IsReadable(AccessModeLocked())) ThrowNotReadable(method);
}

void NodeImpl::CheckWritable(const char* method) const {
  if (!IsWritable(AccessModeLocked())) ThrowNotWritable(method);
}

void NodeImpl::ThrowUnsupported(const char* what) const {
  throw LOGICAL_ERROR_EXCEPTION_NODE(name_.c_str(), what)(
      "Node '%s' of type %s cannot be used as %s", name_.c_str(), typeName_, what);
}

bool NodeImpl::ChildrenCacheValid() const {
  AutoLock guard(map_->GetLock());
  if (GetCachingMode() == NoCache) return false;
  // Pointer nodes depend on their value source, formulas on their variables.
  for (NodeImpl* child : writingChildren.empty() ? readingChildren : writingChildren) {
    const IValue* v = dynamic_cast<const IValue*>(child);
    if (v && !v->IsValueCacheValid()) return false;
  }
  return true;
}

void NodeImpl::CheckError(const char* method) {
  if (!pError_.node) return;
  const int64_t code = ReadInt(this, pError_.node, true);
  if (code == 0) return;
  std::string text = "error " + std::to_string(code);
  if (auto* e = dynamic_cast<IEnumeration*>(pError_.node)) {
    if (IEnumEntry* entry = e->GetEntry(code)) {
      INode* n = entry->GetNode();
      text = std::string(n->GetDisplayName().c_str());
      const std::string tip = n->GetToolTip().c_str();
      if (!tip.empty()) text += " : " + tip;
    }
  }
  throw RUNTIME_EXCEPTION_NODE(name_.c_str(), method)("%s", text.c_str());
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
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_.c_str(), "SetValue")(
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
  try {
    CallGuard guard(owner);
    if (!IsReadable(target->AccessModeLocked())) return false;
    const bool value = target->GetInt(false, false) != 0;
    readable = true;
    return value;
  } catch (const GenICam::GenericException&) {
    return false;
  }
}

}  // namespace impl
}  // namespace GenApi
