// Out-of-line destructors (they anchor each interface's type information in
// this library), the Combine rules and the free callback helpers.
#include <mutex>
#include <unordered_map>

#include <GenApi/GenApi.h>

#include "CallbackRegistry.h"

namespace GenApi {

IBase::~IBase() = default;
INode::~INode() = default;
IValue::~IValue() = default;
IInteger::~IInteger() = default;
IFloat::~IFloat() = default;
IBoolean::~IBoolean() = default;
IString::~IString() = default;
ICommand::~ICommand() = default;
IEnumEntry::~IEnumEntry() = default;
IEnumeration::~IEnumeration() = default;
IRegister::~IRegister() = default;
ICategory::~ICategory() = default;
IPort::~IPort() = default;
ISelector::~ISelector() = default;
INodeMap::~INodeMap() = default;
INodeMapDyn::~INodeMapDyn() = default;
IDestroy::~IDestroy() = default;
IDeviceInfo::~IDeviceInfo() = default;
CNodeCallback::~CNodeCallback() = default;

EAccessMode Combine(EAccessMode Peter, EAccessMode Paul) {
  if (Peter == NI || Paul == NI) return NI;
  if (Peter == NA || Paul == NA) return NA;
  if ((Peter == RO && Paul == WO) || (Peter == WO && Paul == RO)) return NA;
  if (Peter == WO || Paul == WO) return WO;
  if (Peter == RO || Paul == RO) return RO;
  return RW;
}

EVisibility Combine(EVisibility Peter, EVisibility Paul) {
  if (Peter == _UndefinedVisibility) return Paul;
  if (Paul == _UndefinedVisibility) return Peter;
  return Peter > Paul ? Peter : Paul;
}

ECachingMode Combine(ECachingMode Peter, ECachingMode Paul) {
  if (Peter == NoCache || Paul == NoCache) return NoCache;
  if (Peter == WriteAround || Paul == WriteAround) return WriteAround;
  if (Peter == _UndefinedCachingMode) return Paul;
  if (Paul == _UndefinedCachingMode) return Peter;
  return WriteThrough;
}

namespace impl {
namespace {
std::mutex& RegistryMutex() {
  static std::mutex m;
  return m;
}
std::unordered_map<CallbackHandleType, INode*>& Registry() {
  static std::unordered_map<CallbackHandleType, INode*> r;
  return r;
}
}  // namespace

void RememberCallback(CallbackHandleType handle, INode* node) {
  std::lock_guard<std::mutex> g(RegistryMutex());
  Registry()[handle] = node;
}

void ForgetCallback(CallbackHandleType handle) {
  std::lock_guard<std::mutex> g(RegistryMutex());
  Registry().erase(handle);
}

INode* NodeOfCallback(CallbackHandleType handle) {
  std::lock_guard<std::mutex> g(RegistryMutex());
  auto it = Registry().find(handle);
  return it == Registry().end() ? nullptr : it->second;
}
}  // namespace impl

bool Deregister(CallbackHandleType hCallback) {
  INode* node = impl::NodeOfCallback(hCallback);
  return node != nullptr && node->DeregisterCallback(hCallback);
}

}  // namespace GenApi
