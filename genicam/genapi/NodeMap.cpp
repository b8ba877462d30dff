// NodeMap: look-ups, ports, invalidation, polling and write transactions.
#include "NodeMap.h"

#include <algorithm>
#include <unordered_set>

#include "PortNode.h"

namespace GenApi {
namespace impl {

namespace {
// Deepest pointer chain followed while evaluating a value or an access mode.
constexpr int kMaxCallDepth = 200;
}  // namespace

NodeMap::NodeMap(const std::string& deviceName) : deviceName_(deviceName) {}

NodeMap::~NodeMap() { Clear(); }

void NodeMap::Clear() {
  for (NodeImpl* n : nodes_) n->~NodeImpl();
  nodes_.clear();
  nodes_.shrink_to_fit();
  names_.Clear();
  arena_.Release();
}

void NodeMap::Destroy() { delete this; }

void NodeMap::GetNodes(NodeList_t& nodes) const {
  AutoLock guard(lock_);
  nodes.clear();
  nodes.reserve(nodes_.size());
  for (NodeImpl* n : nodes_) nodes.push_back(n);
}

INode* NodeMap::GetNode(const GenICam::gcstring& name) const {
  AutoLock guard(lock_);
  const std::string_view key(name.c_str(), name.size());
  if (NodeImpl* n = Find(key)) return n;
  // Qualified names: "Std::X" for standard nodes, "Cust::X" for custom ones.
  for (const std::string_view prefix : {std::string_view("Std::"), std::string_view("Cust::")}) {
    if (key.substr(0, prefix.size()) != prefix) continue;
    NodeImpl* n = Find(key.substr(prefix.size()));
    if (n && (n->GetNameSpace() == Standard) == (prefix == "Std::")) return n;
  }
  return nullptr;
}

void NodeMap::AddNode(NodeImpl* node, uint32_t nameId) {
  if (names_.NodeOf(nameId) != nullptr) {
    const char* type = node->TypeName();
    node->~NodeImpl();
    throw RUNTIME_EXCEPTION("Node '%s' : duplicate node name (element %s)", names_.Text(nameId),
                            type);
  }
  names_.SetNode(nameId, node);
  node->SetIndex(static_cast<uint32_t>(nodes_.size()));
  nodes_.push_back(node);
}

void NodeMap::ClearAllNodes() {
  AutoLock guard(lock_);
  Clear();
}

void NodeMap::GetSupportedSchemaVersions(GenICam::gcstring_vector& versions) const {
  versions.clear();
  versions.push_back("1.0");
  versions.push_back("1.1");
}

void NodeMap::GetGenApiVersion(Version_t& version, uint16_t& build) {
  version = Version_t{2, 3, 0};
  build = 0;
}

bool NodeMap::Connect(IPort* pPort, const GenICam::gcstring& portName) const {
  AutoLock guard(lock_);
  PortNode* port = dynamic_cast<PortNode*>(Find(std::string_view(portName.c_str())));
  if (!port) return false;
  port->Attach(pPort);
  for (NodeImpl* n : nodes_) n->ClearCaches();
  return true;
}

bool NodeMap::Connect(IPort* pPort) const { return Connect(pPort, "Device"); }

void NodeMap::InvalidateNodes() const {
  std::vector<NodeImpl*> toFire;
  {
    AutoLock guard(lock_);
    for (NodeImpl* n : nodes_) {
      n->ClearCaches();
      if (n->HasCallbacks()) toFire.push_back(n);
    }
    Fire(toFire, cbPostInsideLock);
  }
  Fire(toFire, cbPostOutsideLock);
}

void NodeMap::InvalidateFrom(NodeImpl* node) {
  std::vector<NodeImpl*> toFire;
  {
    AutoLock guard(lock_);
    node->ClearCaches();
    toFire.push_back(node);
    for (NodeImpl* d : node->DependingNodes()) {
      d->ClearCaches();
      toFire.push_back(d);
    }
    Fire(toFire, cbPostInsideLock);
  }
  Fire(toFire, cbPostOutsideLock);
}

void NodeMap::Poll(int64_t elapsedTime) {
  std::vector<NodeImpl*> toFire;
  {
    AutoLock guard(lock_);
    std::unordered_set<NodeImpl*> seen;
    for (NodeImpl* n : nodes_) {
      if (!n->Poll(elapsedTime)) continue;
      // The polled value lives in the node's terminal registers: drop those
      // caches too, then everything that depends on them.
      std::vector<NodeImpl*> sources{n};
      for (NodeImpl* t : n->TerminalNodes())
        if (t != n) sources.push_back(t);
      for (NodeImpl* src : sources) {
        src->ClearCaches();
        if (seen.insert(src).second) toFire.push_back(src);
        for (NodeImpl* d : src->DependingNodes()) {
          d->ClearCaches();
          if (seen.insert(d).second) toFire.push_back(d);
        }
      }
    }
    Fire(toFire, cbPostInsideLock);
  }
  Fire(toFire, cbPostOutsideLock);
}

void NodeMap::BeginWrite() {
  if (writeDepth_ == 0) written_.clear();
  ++writeDepth_;
}

void NodeMap::NoteWritten(NodeImpl* node) {
  if (std::find(written_.begin(), written_.end(), node) == written_.end())
    written_.push_back(node);
}

void NodeMap::EndWrite(bool success, std::vector<NodeImpl*>& toFire) {
  if (--writeDepth_ > 0) return;
  std::vector<NodeImpl*> written;
  written.swap(written_);
  std::unordered_set<NodeImpl*> seen(written.begin(), written.end());
  // The written nodes keep the values they stored (write-through); they only
  // lose their access modes, which may depend on the new value.
  for (NodeImpl* n : written) {
    n->ClearAccessCache();
    if (!success) n->ClearValueCache();
  }
  std::vector<NodeImpl*> dependents;
  for (NodeImpl* n : written)
    for (NodeImpl* d : n->DependingNodes())
      if (seen.insert(d).second) dependents.push_back(d);
  for (NodeImpl* d : dependents) d->ClearCaches();
  if (!success) return;
  toFire = written;
  toFire.insert(toFire.end(), dependents.begin(), dependents.end());
}

void NodeMap::Fire(const std::vector<NodeImpl*>& nodes, ECallbackType phase) {
  for (NodeImpl* n : nodes)
    if (n->HasCallbacks()) n->FireCallbacks(phase);
}

void NodeMap::EnterCall(const NodeImpl* node) {
  if (++callDepth_ > kMaxCallDepth) {
    --callDepth_;
    throw RUNTIME_EXCEPTION_NODE(node->Name(), "GetValue")(
        "Node '%s' : pointer chain deeper than %d nodes", node->Name(), kMaxCallDepth);
  }
}

}  // namespace impl
}  // namespace GenApi
