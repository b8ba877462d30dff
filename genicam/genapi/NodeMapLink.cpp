// Second loading pass: resolve every pointer by name, record the links in
// their classes, and reject cycles through value pointers.
#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "NodeMap.h"

namespace GenApi {
namespace impl {

namespace {

void AddUnique(std::vector<NodeImpl*>& list, NodeImpl* n) {
  for (NodeImpl* x : list)
    if (x == n) return;
  list.push_back(n);
}

// Pointer elements whose evaluation reads the target's value.
bool IsValueEdge(const char* element) {
  static const char* const names[] = {"pValue",        "pValueCopy", "pValueIndexed",
                                      "pValueDefault", "pVariable",  "pAddress",
                                      "pLength",       "pIndex",     "pOffset",
                                      "pCommandValue", "p1212Parser"};
  for (const char* n : names)
    if (std::strcmp(n, element) == 0) return true;
  return false;
}

// Adds the current owner to a target's reverse list. Links are collected one
// owner at a time, so an owner already listed is the list's last element;
// this keeps nodes with thousands of users (ports) linear to build.
void AddOwner(std::vector<NodeImpl*>& list, NodeImpl* owner) {
  if (list.empty() || list.back() != owner) list.push_back(owner);
}

struct Edge {
  NodeImpl* to;
  const char* element;
};

class Linker : public LinkSink {
 public:
  explicit Linker(NodeMap& map) : map_(map) {}

  void Link(NodeImpl* owner, Ref& ref, LinkClass cls, const char* element) override {
    if (!ref.Given()) return;
    NodeImpl* target = Resolve(ref.name);
    if (!target)
      throw RUNTIME_EXCEPTION("Node '%s' : element '%s' points to the unknown node '%s'",
                              owner->Name().c_str(), element, ref.name.c_str());
    ref.node = target;
    if (IsValueEdge(element)) edges_[owner].push_back(Edge{target, element});
    const bool orphan = std::strcmp(element, "pInvalidator") == 0;
    switch (cls) {
      case LinkClass::Writing:
        AddUnique(owner->writingChildren, target);
        [[fallthrough]];
      case LinkClass::Reading:
        AddUnique(owner->readingChildren, target);
        [[fallthrough]];
      case LinkClass::Invalidating:
        AddUnique(owner->invalidatingChildren, target);
        AddOwner(target->invalidatedBy, owner);
        if (!orphan) AddOwner(target->parents, owner);
        break;
      case LinkClass::None:
        if (std::strcmp(element, "pSelected") == 0 && target != owner) {
          // The selected node is invalidated whenever its selector changes.
          AddOwner(target->selecting, owner);
          AddUnique(target->invalidatingChildren, owner);
          AddUnique(owner->invalidatedBy, target);
        }
        break;
    }
  }

  void CheckCycles(const std::vector<NodeImpl*>& nodes) const {
    // Iterative depth-first search with colours; grey means "on the stack".
    std::unordered_map<const NodeImpl*, int> colour;
    struct Frame {
      NodeImpl* node;
      size_t next;
    };
    static const std::vector<Edge> kNone;
    for (NodeImpl* start : nodes) {
      if (colour[start] != 0) continue;
      std::vector<Frame> stack{{start, 0}};
      colour[start] = 1;
      while (!stack.empty()) {
        Frame& f = stack.back();
        auto it = edges_.find(f.node);
        const std::vector<Edge>& out = it == edges_.end() ? kNone : it->second;
        if (f.next >= out.size()) {
          colour[f.node] = 2;
          stack.pop_back();
          continue;
        }
        const Edge& e = out[f.next++];
        int& c = colour[e.to];
        if (c == 1)
          throw RUNTIME_EXCEPTION("Node '%s' : element '%s' closes a cycle through '%s'",
                                  f.node->Name().c_str(), e.element, e.to->Name().c_str());
        if (c == 0) {
          c = 1;
          stack.push_back(Frame{e.to, 0});
        }
      }
    }
  }

 private:
  NodeImpl* Resolve(const std::string& name) const {
    if (NodeImpl* n = map_.Find(name)) return n;
    for (const char* prefix : {"Std::", "Cust::"}) {
      const size_t len = std::strlen(prefix);
      if (name.compare(0, len, prefix) == 0) return map_.Find(name.substr(len));
    }
    return nullptr;
  }

  NodeMap& map_;
  std::unordered_map<const NodeImpl*, std::vector<Edge>> edges_;
};

}  // namespace

void NodeMap::Link() {
  Linker linker(*this);
  std::vector<NodeImpl*> all;
  all.reserve(nodes_.size());
  for (const auto& n : nodes_) all.push_back(n.get());
  for (NodeImpl* n : all) n->CollectLinks(linker);
  // Children a node writes to (its value source) come first in its lists.
  for (NodeImpl* n : all) {
    auto writes = [n](NodeImpl* c) {
      return std::find(n->writingChildren.begin(), n->writingChildren.end(), c) !=
             n->writingChildren.end();
    };
    std::stable_partition(n->readingChildren.begin(), n->readingChildren.end(), writes);
    std::stable_partition(n->invalidatingChildren.begin(), n->invalidatingChildren.end(), writes);
  }
  linker.CheckCycles(all);
  for (NodeImpl* n : all) n->FinishLoad();
}

}  // namespace impl
}  // namespace GenApi
