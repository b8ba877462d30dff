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

NodeMap::~NodeMap() = default;

void NodeMap::Destroy() { delete this; }

void NodeMap::GetNodes(NodeList_t& nodes) const {
  AutoLock guard(lock_);
  nodes.clear();
  nodes.reserve(nodes_.size());
  for (const auto& n : nodes_) nodes.push_back(n.get());
}

NodeImpl* NodeMap::Find(const std::string& name) const {
  auto it = byName_.find(name);
  return it == byName_.end() ? nullptr : it->second;
}

INode* NodeMap::GetNode(const GenICam::gcstring& name) const {
  AutoLock guard(lock_);
  std::string key(name.c_str());
  if (NodeImpl* n = Find(key)) return n;
  // Qualified names: "Std::X" for standard nodes, "Cust::X" for custom ones.
  for (const char* prefix : {"Std::", "Cust::"}) {
    const std::string p(prefix);
    if (key.compare(0, p.size(), p) != 0) continue;
    NodeImpl* n = Find(key.substr(p.size()));
    if (n && (n->GetNameSpace() == Standard) == (p == "Std::")) return n;
  }
  return nullptr;
}

void NodeMap::AddNode(std::unique_ptr<NodeImpl> node) {
  const std::string& name = node->Name();
  if (!byName_.emplace(name, node.get()).second)
    throw RUNTIME_EXCEPTION("Node '%s' : duplicate node name (element %s)", name.c_str(),
                            node->TypeName());
  nodes_.push_back(std::move(node));
}

void NodeMap::ClearAllNodes() {
  AutoLock guard(lock_);
  byName_.clear();
  nodes_.clear();
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
  PortNode* port = dynamic_cast<PortNode*>(Find(std::string(portName.c_str())));
  if (!port) return false;
  port->Attach(pPort);
  for (const auto& n : nodes_) n->ClearCaches();
  return true;
}

bool NodeMap::Connect(IPort* pPort) const { return Connect(pPort, "Device"); }

void NodeMap::InvalidateNodes() const {
  std::vector<NodeImpl*> toFire;
  {
    AutoLock guard(lock_);
    for (const auto& n : nodes_) {
      n->ClearCaches();
      if (n->HasCallbacks()) toFire.push_back(n.get());
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
    for (const auto& n : nodes_) {
      if (!n->Poll(elapsedTime)) continue;
      // The polled value lives in the node's terminal registers: drop those
      // caches too, then everything that depends on them.
      std::vector<NodeImpl*> sources{n.get()};
      for (NodeImpl* t : n->TerminalNodes())
        if (t != n.get()) sources.push_back(t);
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
    throw RUNTIME_EXCEPTION_NODE(node->Name().c_str(), "GetValue")(
        "Node '%s' : pointer chain deeper than %d nodes", node->Name().c_str(), kMaxCallDepth);
  }
}

}  // namespace impl
}  // namespace GenApi
