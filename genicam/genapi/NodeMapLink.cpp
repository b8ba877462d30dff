// Second loading pass: resolve every pointer by its interned name, check the
// kind of node it names, lay the links out in the arena, and reject cycles
// through value pointers.
//
// Which defects reject the document and which only the node (terms of the
// GenApi reference summary, shared/reference/genapi.md):
// - A pointer naming no node, or a node of a kind its key reference does not
//   allow (pPort to an IntReg, pValue of an Integer to a String, pError to an
//   Integer): the whole document, as the reference's load does. §1.6 gives
//   the allowed kinds per pointer [S, xs:keyref]; the reference casts every
//   pointer to its interface while linking and fails the load on a mismatch
//   (LogicalErrorException "Unexpected type in dynamic cast", §2.12 [H]).
// - A cycle through value pointers, a missing Name, a duplicate name, a bad
//   number in an element, a missing required element: the whole document
//   (§1.3 [S], §2.12 "XML syntax/structure error", "bad/missing properties").
// - A formula that does not parse, or names an identifier no pVariable,
//   Constant or Expression declares: only that node. The reference reports
//   it when the node is evaluated, never at load (§2.12 formula row, §3.3,
//   take-away 4); we compile once here and throw the kept error on use.
#include <algorithm>
#include <cstring>

#include "FormulaSupport.h"
#include "NodeMap.h"

namespace GenApi {
namespace impl {

namespace {

// Pointer elements whose evaluation reads the target's value.
bool IsValueEdge(Elem element) {
  switch (element) {
    case Elem::pValue:
    case Elem::pValueCopy:
    case Elem::pValueIndexed:
    case Elem::pValueDefault:
    case Elem::pVariable:
    case Elem::pAddress:
    case Elem::pLength:
    case Elem::pIndex:
    case Elem::pOffset:
    case Elem::pCommandValue:
    case Elem::p1212Parser:
      return true;
    default:
      return false;
  }
}

struct Edge {
  uint32_t owner;
  uint32_t target;
  LinkClass cls;
  Elem element;
};

// A list of nodes per node, filled in two passes: count, then place.
class Buckets {
 public:
  explicit Buckets(size_t nodes) : start_(nodes + 1, 0) {}
  void Count(uint32_t bucket) { ++start_[bucket + 1]; }
  void Layout() {
    for (size_t i = 1; i < start_.size(); ++i) start_[i] += start_[i - 1];
    next_.assign(start_.begin(), start_.end() - 1);
    items_.resize(start_.back());
  }
  void Place(uint32_t bucket, NodeImpl* node) { items_[next_[bucket]++] = node; }
  NodeImpl** Begin(uint32_t bucket) { return items_.data() + start_[bucket]; }
  NodeImpl** End(uint32_t bucket) { return items_.data() + start_[bucket + 1]; }

 private:
  std::vector<uint32_t> start_, next_;
  std::vector<NodeImpl*> items_;
};

class Linker : public LinkSink {
 public:
  Linker(NodeMap& map, const std::vector<NodeImpl*>& nodes)
      : map_(map), nodes_(nodes), mark_(nodes.size(), UINT32_MAX) {}

  void Link(NodeImpl* owner, Ref& ref, LinkClass cls, Elem element, uint16_t kinds) override {
    if (!ref.Named()) return;
    NodeImpl* target = Resolve(ref.NameId());
    if (!target)
      throw RUNTIME_EXCEPTION("Node '%s' : element '%s' points to the unknown node '%s'",
                              owner->Name(), ElemName(element), map_.Names().Text(ref.NameId()));
    if ((target->KindBits() & kinds) == 0)
      throw LOGICAL_ERROR_EXCEPTION(
          "Node '%s' : element '%s' names '%s', a %s node, where %s is expected", owner->Name(),
          ElemName(element), target->Name(), target->TypeName(), KindsText(kinds));
    ref.Resolve(target);
    edges_.push_back(Edge{owner->Index(), target->Index(), cls, element});
  }

  void Collect() {
    for (NodeImpl* n : nodes_) n->CollectLinks(*this);
  }

  // Children of each owner: writing ones first, then the other reading ones,
  // then the other invalidating ones (selectors of the node last).
  void LayOutChildren() {
    Buckets selectors(nodes_.size());  // per selected node, the nodes selecting it
    ForEachSelection([&](uint32_t, uint32_t selected) { selectors.Count(selected); });
    selectors.Layout();
    ForEachSelection(
        [&](uint32_t selector, uint32_t selected) { selectors.Place(selected, nodes_[selector]); });
    std::vector<NodeImpl*> list;
    size_t at = 0;
    for (uint32_t owner = 0; owner < nodes_.size(); ++owner) {
      const size_t begin = at;
      while (at < edges_.size() && edges_[at].owner == owner) ++at;
      list.clear();
      NodeLinks& links = nodes_[owner]->links;
      for (LinkClass cls : {LinkClass::Writing, LinkClass::Reading, LinkClass::Invalidating}) {
        for (size_t i = begin; i < at; ++i)
          if (edges_[i].cls == cls) AddOnce(list, owner, edges_[i].target);
        const uint32_t size = static_cast<uint32_t>(list.size());
        if (cls == LinkClass::Writing) links.writing = size;
        if (cls == LinkClass::Reading) links.reading = size;
      }
      for (NodeImpl** s = selectors.Begin(owner); s != selectors.End(owner); ++s)
        if (*s != nodes_[owner]) AddOnce(list, owner, (*s)->Index());
      links.invalidating = static_cast<uint32_t>(list.size());
      links.children = Keep(list).begin();
    }
  }

  // Reverse lists: parents (value links, not pInvalidator), everything that
  // invalidates through this node, and the selectors of this node.
  void LayOutParents() {
    Buckets parents(nodes_.size()), invalidatedBy(nodes_.size()), selecting(nodes_.size());
    auto each = [&](auto&& parent, auto&& invalidator, auto&& selection) {
      for (const Edge& e : edges_) {
        if (e.cls == LinkClass::None) {
          if (e.element == Elem::pSelected && e.owner != e.target) {
            selection(e.target, e.owner);
            invalidator(e.owner, e.target);  // the selector changes when the selected does
          }
          continue;
        }
        invalidator(e.target, e.owner);
        if (e.element != Elem::pInvalidator) parent(e.target, e.owner);
      }
    };
    each([&](uint32_t t, uint32_t) { parents.Count(t); },
         [&](uint32_t t, uint32_t) { invalidatedBy.Count(t); },
         [&](uint32_t t, uint32_t) { selecting.Count(t); });
    parents.Layout();
    invalidatedBy.Layout();
    selecting.Layout();
    each([&](uint32_t t, uint32_t o) { parents.Place(t, nodes_[o]); },
         [&](uint32_t t, uint32_t o) { invalidatedBy.Place(t, nodes_[o]); },
         [&](uint32_t t, uint32_t o) { selecting.Place(t, nodes_[o]); });
    std::vector<NodeImpl*> list;
    for (uint32_t n = 0; n < nodes_.size(); ++n) {
      NodeLinks& links = nodes_[n]->links;
      links.parents = Unique(parents, n, list);
      links.invalidatedBy = Unique(invalidatedBy, n, list);
      links.selecting = Unique(selecting, n, list);
    }
  }

  void CheckCycles() const {
    // Value edges of each owner, then an iterative depth-first search with
    // colours; grey means "on the stack".
    std::vector<uint32_t> first(nodes_.size() + 1, 0);
    std::vector<const Edge*> out;
    for (const Edge& e : edges_) {
      if (!IsValueEdge(e.element)) continue;
      ++first[e.owner + 1];
      out.push_back(&e);
    }
    for (size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
    enum : uint8_t { kWhite, kGrey, kBlack };
    std::vector<uint8_t> colour(nodes_.size(), kWhite);
    struct Frame {
      uint32_t node;
      uint32_t next;
    };
    std::vector<Frame> stack;
    for (uint32_t start = 0; start < nodes_.size(); ++start) {
      if (colour[start] != kWhite) continue;
      stack.push_back(Frame{start, first[start]});
      colour[start] = kGrey;
      while (!stack.empty()) {
        Frame& f = stack.back();
        if (f.next >= first[f.node + 1]) {
          colour[f.node] = kBlack;
          stack.pop_back();
          continue;
        }
        const Edge& e = *out[f.next++];
        if (colour[e.target] == kGrey)
          throw RUNTIME_EXCEPTION("Node '%s' : element '%s' closes a cycle through '%s'",
                                  nodes_[f.node]->Name(), ElemName(e.element),
                                  nodes_[e.target]->Name());
        if (colour[e.target] == kWhite) {
          colour[e.target] = kGrey;
          stack.push_back(Frame{e.target, first[e.target]});
        }
      }
    }
  }

 private:
  NodeImpl* Resolve(uint32_t nameId) const {
    if (NodeImpl* n = map_.Names().NodeOf(nameId)) return n;
    const std::string_view name = map_.Names().Text(nameId);
    for (const std::string_view prefix : {std::string_view("Std::"), std::string_view("Cust::")})
      if (name.substr(0, prefix.size()) == prefix) return map_.Find(name.substr(prefix.size()));
    return nullptr;
  }

  template <class F>
  void ForEachSelection(F&& f) const {
    for (const Edge& e : edges_)
      if (e.element == Elem::pSelected) f(e.owner, e.target);
  }

  void AddOnce(std::vector<NodeImpl*>& list, uint32_t owner, uint32_t target) {
    if (mark_[target] == owner) return;
    mark_[target] = owner;
    list.push_back(nodes_[target]);
  }

  Span<NodeImpl*> Keep(const std::vector<NodeImpl*>& list) {
    NodeImpl** data = map_.Memory().Array<NodeImpl*>(list.size());
    std::copy(list.begin(), list.end(), data);
    return Span<NodeImpl*>(data, static_cast<uint32_t>(list.size()));
  }

  // One bucket without repeats, kept in the arena; marks use a fresh stamp
  // range so they never collide with the owner stamps of LayOutChildren.
  Span<NodeImpl*> Unique(Buckets& buckets, uint32_t n, std::vector<NodeImpl*>& list) {
    list.clear();
    const uint32_t stamp = ++stamp_;
    for (NodeImpl** i = buckets.Begin(n); i != buckets.End(n); ++i) {
      uint32_t& mark = mark_[(*i)->Index()];
      if (mark == stamp) continue;
      mark = stamp;
      list.push_back(*i);
    }
    return Keep(list);
  }

  NodeMap& map_;
  const std::vector<NodeImpl*>& nodes_;
  std::vector<Edge> edges_;
  std::vector<uint32_t> mark_;
  uint32_t stamp_ = 0x80000000u;
};

}  // namespace

void NodeMap::Link() {
  Linker linker(*this, nodes_);
  linker.Collect();
  linker.LayOutChildren();
  linker.LayOutParents();
  linker.CheckCycles();
  FormulaCacheScope formulas(*this);
  for (NodeImpl* n : nodes_) n->FinishLoad();
}

}  // namespace impl
}  // namespace GenApi
