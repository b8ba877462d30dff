// NodeImpl: access mode, caching mode and the link queries.
#include <algorithm>
#include <unordered_set>

#include "Node.h"
#include "NodeMap.h"

namespace GenApi {
namespace impl {

EAccessMode NodeImpl::GetAccessMode() const {
  AutoLock guard(map_->GetLock());
  return AccessModeLocked();
}

// An error while computing the mode (a guard that cannot be read, a pointer
// chain too deep) reaches the caller, as in the reference; nothing is cached.
EAccessMode NodeImpl::AccessModeLocked() const {
  if (accessCacheValid_) return static_cast<EAccessMode>(accessCache_);
  if (computingAccess_) return RW;  // a cycle through guards: treat the node as RW
  computingAccess_ = true;
  EAccessMode mode = RW;
  try {
    CallGuard guard(this);  // bounds the recursion through long pointer chains
    mode = ComputeAccessMode();
  } catch (...) {
    computingAccess_ = false;
    throw;
  }
  computingAccess_ = false;
  if (IsAccessModeCacheable() == Yes) {
    accessCache_ = static_cast<uint8_t>(mode);
    accessCacheValid_ = true;
  }
  return mode;
}

EAccessMode NodeImpl::ComputeAccessMode() const {
  EAccessMode mode = NaturalAccessMode();
  bool readable = false;
  if (pIsImplemented_.node()) {
    const bool implemented = ReadGuard(this, pIsImplemented_.node(), readable);
    if (!readable) mode = Combine(mode, NA);
    else if (!implemented) mode = NI;
  }
  if (pIsAvailable_.node() && mode != NI) {
    const bool available = ReadGuard(this, pIsAvailable_.node(), readable);
    if (!readable || !available) mode = Combine(mode, NA);
  }
  if (pIsLocked_.node() && mode != NI && mode != NA) {
    const bool locked = ReadGuard(this, pIsLocked_.node(), readable);
    if (!readable) mode = NA;
    else if (locked) mode = (mode == RW) ? RO : (mode == WO ? NA : mode);
  }
  mode = Combine(mode, static_cast<EAccessMode>(imposedElement_));
  return Combine(mode, static_cast<EAccessMode>(imposedByUser_));
}

ECachingMode NodeImpl::GetCachingMode() const {
  AutoLock lock(map_->GetLock());
  if (cachingModeState_ >= 0) return static_cast<ECachingMode>(cachingModeState_);
  if (cachingModeState_ == -2) return WriteThrough;  // cycle: decided by the other members
  cachingModeState_ = -2;
  ECachingMode mode = OwnCachingMode();
  try {
    CallGuard guard(this);
    for (NodeImpl* child : ReadingChildren()) mode = Combine(mode, child->GetCachingMode());
  } catch (const GenICam::GenericException&) {
    mode = NoCache;  // too deep to tell: do not cache
  }
  cachingModeState_ = static_cast<int8_t>(mode);
  return mode;
}

EYesNo NodeImpl::IsAccessModeCacheable() const {
  AutoLock lock(map_->GetLock());
  if (accessCacheableState_ >= 0) return static_cast<EYesNo>(accessCacheableState_);
  if (accessCacheableState_ == -2) return Yes;
  accessCacheableState_ = -2;
  EYesNo result = Yes;
  try {
    CallGuard guard(this);
    for (NodeImpl* child : ReadingChildren()) {
      if (child->GetCachingMode() == NoCache || child->IsAccessModeCacheable() == No) {
        result = No;
        break;
      }
    }
  } catch (const GenICam::GenericException&) {
    result = No;
  }
  accessCacheableState_ = static_cast<int8_t>(result);
  return result;
}

namespace {
// Copies a list worked out at run time into the map's arena.
Span<NodeImpl*> Keep(Arena& arena, const std::vector<NodeImpl*>& list) {
  NodeImpl** data = arena.Array<NodeImpl*>(list.size());
  std::copy(list.begin(), list.end(), data);
  return Span<NodeImpl*>(data, static_cast<uint32_t>(list.size()));
}
}  // namespace

Span<NodeImpl*> NodeImpl::DependingNodes() {
  if (dependingKnown_) return depending_;
  std::vector<NodeImpl*> found;
  std::unordered_set<const NodeImpl*> seen{this};
  std::vector<NodeImpl*> stack(links.invalidatedBy.begin(), links.invalidatedBy.end());
  while (!stack.empty()) {
    NodeImpl* n = stack.back();
    stack.pop_back();
    if (!seen.insert(n).second) continue;
    found.push_back(n);
    for (NodeImpl* up : n->links.invalidatedBy)
      if (!seen.count(up)) stack.push_back(up);
  }
  depending_ = Keep(Memory(), found);
  dependingKnown_ = true;
  return depending_;
}

Span<NodeImpl*> NodeImpl::TerminalNodes() {
  if (terminalKnown_) return terminal_;
  std::vector<NodeImpl*> found;
  std::unordered_set<const NodeImpl*> seen;
  std::vector<NodeImpl*> stack{this};
  while (!stack.empty()) {
    NodeImpl* n = stack.back();
    stack.pop_back();
    if (!seen.insert(n).second) continue;
    if (n->links.writing == 0) {
      found.push_back(n);
      continue;
    }
    for (uint32_t i = n->links.writing; i-- > 0;) stack.push_back(n->links.children[i]);
  }
  terminal_ = Keep(Memory(), found);
  terminalKnown_ = true;
  return terminal_;
}

void NodeImpl::GetChildren(NodeList_t& children, ELinkType linkType) const {
  AutoLock guard(map_->GetLock());
  children.clear();
  NodeImpl* self = const_cast<NodeImpl*>(this);
  Span<NodeImpl*> list;
  switch (linkType) {
    case ctParentNodes: list = links.parents; break;
    case ctReadingChildren: list = ReadingChildren(); break;
    case ctWritingChildren: list = WritingChildren(); break;
    case ctInvalidatingChildren: list = InvalidatingChildren(); break;
    case ctDependingNodes: list = self->DependingNodes(); break;
    case ctTerminalNodes: list = self->TerminalNodes(); break;
  }
  for (NodeImpl* n : list) children.push_back(n);
}

void NodeImpl::GetParents(NodeList_t& result) const { GetChildren(result, ctParentNodes); }

}  // namespace impl
}  // namespace GenApi
