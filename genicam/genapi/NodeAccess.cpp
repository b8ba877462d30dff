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

EAccessMode NodeImpl::AccessModeLocked() const {
  if (accessCacheValid_) return accessCache_;
  if (computingAccess_) return RW;  // a cycle through guards: treat the node as RW
  computingAccess_ = true;
  EAccessMode mode = RW;
  try {
    CallGuard guard(this);  // bounds the recursion through long pointer chains
    mode = ComputeAccessMode();
  } catch (const GenICam::GenericException&) {
    mode = NA;
  } catch (...) {
    computingAccess_ = false;
    throw;
  }
  computingAccess_ = false;
  if (IsAccessModeCacheable() == Yes) {
    accessCache_ = mode;
    accessCacheValid_ = true;
  }
  return mode;
}

EAccessMode NodeImpl::ComputeAccessMode() const {
  EAccessMode mode = NaturalAccessMode();
  bool readable = false;
  if (pIsImplemented_.node) {
    const bool implemented = ReadGuard(this, pIsImplemented_.node, readable);
    if (!readable) mode = Combine(mode, NA);
    else if (!implemented) mode = NI;
  }
  if (pIsAvailable_.node && mode != NI) {
    const bool available = ReadGuard(this, pIsAvailable_.node, readable);
    if (!readable || !available) mode = Combine(mode, NA);
  }
  if (pIsLocked_.node && mode != NI && mode != NA) {
    const bool locked = ReadGuard(this, pIsLocked_.node, readable);
    if (!readable) mode = NA;
    else if (locked) mode = (mode == RW) ? RO : (mode == WO ? NA : mode);
  }
  mode = Combine(mode, imposedElement_);
  return Combine(mode, imposedByUser_);
}

ECachingMode NodeImpl::GetCachingMode() const {
  AutoLock lock(map_->GetLock());
  if (cachingModeState_ >= 0) return static_cast<ECachingMode>(cachingModeState_);
  if (cachingModeState_ == -2) return WriteThrough;  // cycle: decided by the other members
  cachingModeState_ = -2;
  ECachingMode mode = OwnCachingMode();
  try {
    CallGuard guard(this);
    for (NodeImpl* child : readingChildren) mode = Combine(mode, child->GetCachingMode());
  } catch (const GenICam::GenericException&) {
    mode = NoCache;  // too deep to tell: do not cache
  }
  cachingModeState_ = mode;
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
    for (NodeImpl* child : readingChildren) {
      if (child->GetCachingMode() == NoCache || child->IsAccessModeCacheable() == No) {
        result = No;
        break;
      }
    }
  } catch (const GenICam::GenericException&) {
    result = No;
  }
  accessCacheableState_ = result;
  return result;
}

const std::vector<NodeImpl*>& NodeImpl::DependingNodes() {
  if (dependingKnown_) return depending_;
  std::unordered_set<const NodeImpl*> seen{this};
  std::vector<NodeImpl*> stack(invalidatedBy.begin(), invalidatedBy.end());
  while (!stack.empty()) {
    NodeImpl* n = stack.back();
    stack.pop_back();
    if (!seen.insert(n).second) continue;
    depending_.push_back(n);
    for (NodeImpl* up : n->invalidatedBy)
      if (!seen.count(up)) stack.push_back(up);
  }
  dependingKnown_ = true;
  return depending_;
}

const std::vector<NodeImpl*>& NodeImpl::TerminalNodes() {
  if (terminalKnown_) return terminal_;
  std::unordered_set<const NodeImpl*> seen;
  std::vector<NodeImpl*> stack{this};
  while (!stack.empty()) {
    NodeImpl* n = stack.back();
    stack.pop_back();
    if (!seen.insert(n).second) continue;
    if (n->writingChildren.empty()) {
      terminal_.push_back(n);
      continue;
    }
    for (auto it = n->writingChildren.rbegin(); it != n->writingChildren.rend(); ++it)
      stack.push_back(*it);
  }
  terminalKnown_ = true;
  return terminal_;
}

void NodeImpl::GetChildren(NodeList_t& children, ELinkType linkType) const {
  AutoLock guard(map_->GetLock());
  children.clear();
  NodeImpl* self = const_cast<NodeImpl*>(this);
  const std::vector<NodeImpl*>* list = nullptr;
  switch (linkType) {
    case ctParentNodes: list = &parents; break;
    case ctReadingChildren: list = &readingChildren; break;
    case ctWritingChildren: list = &writingChildren; break;
    case ctInvalidatingChildren: list = &invalidatingChildren; break;
    case ctDependingNodes: list = &self->DependingNodes(); break;
    case ctTerminalNodes: list = &self->TerminalNodes(); break;
  }
  if (!list) return;
  for (NodeImpl* n : *list) children.push_back(n);
}

void NodeImpl::GetParents(NodeList_t& result) const { GetChildren(result, ctParentNodes); }

}  // namespace impl
}  // namespace GenApi
