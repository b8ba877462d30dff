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

class Linker : public LinkSink {
 public:
  Linker(NodeMap& map, const std::vector<NodeImpl*>& nodes)
      : map_(map), nodes_(nodes), mark_(nodes.size(), UINT32_MAX) {
    edges_.reserve(4 * nodes.size());  // real descriptions have two to three pointers per node
  }

  void LinkNamed(NodeImpl* owner, Ref& ref, LinkClass cls, Elem element,
                 uint16_t kinds) override {
    const NameTable::Declared target = Resolve(ref.NameId());
    if (!target.node)
      throw RUNTIME_EXCEPTION("Node '%s' : element '%s' points to the unknown node '%s'",
                              owner->Name(), ElemName(element), map_.Names().Text(ref.NameId()));
    if ((target.kinds & kinds) == 0)
      throw LOGICAL_ERROR_EXCEPTION(
          "Node '%s' : element '%s' names '%s', a %s node, where %s is expected", owner->Name(),
          ElemName(element), target.node->Name(), target.node->TypeName(), KindsText(kinds));
    ref.Resolve(target.node);
    Edge& edge = edges_.emplace_back();  // filled in place, see Loader::Record
    edge.owner = owner->Index();
    edge.target = target.index;
    edge.cls = cls;
    edge.element = element;
  }

  void Collect() {
    for (NodeImpl* n : nodes_) n->CollectLinks(*this);
  }

  // The reverse lists of every node, laid out in one arena array: parents
  // (value links, not pInvalidator), the nodes that invalidate through this
  // one, the nodes selecting this one, and (for the children) the nodes with
  // a pSelected to this one. Each list keeps the order of the pointers and
  // loses its repeats; the slots of repeats stay unused.
  enum Reverse { kParents, kInvalidatedBy, kSelecting, kSelectors, kReverseLists };

  template <class F>
  void ForEachReverse(F&& f) const {
    for (const Edge& e : edges_) {
      if (e.cls == LinkClass::None) {
        if (e.element != Elem::pSelected) continue;
        f(kSelectors, e.target, e.owner);
        if (e.owner == e.target) continue;
        f(kSelecting, e.target, e.owner);
        f(kInvalidatedBy, e.owner, e.target);  // the selector changes when the selected does
        continue;
      }
      f(kInvalidatedBy, e.target, e.owner);
      if (e.element != Elem::pInvalidator) f(kParents, e.target, e.owner);
    }
  }

  void LayOutReverse() {
    const size_t n = nodes_.size();
    // end_[list * n + node]: where that list ends once placed; counted first.
    end_.assign(kReverseLists * n + 1, 0);
    ForEachReverse([&](Reverse list, uint32_t node, uint32_t) {
      ++end_[list * n + node + 1];
      if (list == kSelectors) ++selections_;
    });
    for (size_t i = 1; i < end_.size(); ++i) end_[i] += end_[i - 1];
    // Indices first: removing repeats by index reads no node.
    items_.resize(end_.back());
    ForEachReverse([&](Reverse list, uint32_t node, uint32_t item) {
      items_[end_[list * n + node]++] = item;
    });
    reverse_ = map_.Memory().Array<NodeImpl*>(end_.back());
    for (uint32_t node = 0; node < n; ++node) {
      NodeLinks& links = nodes_[node]->links;
      links.parents = Unique(kParents, node);
      links.invalidatedBy = Unique(kInvalidatedBy, node);
      links.selecting = Unique(kSelecting, node);
    }
  }

  // Children of each owner: writing ones first, then the other reading ones,
  // then the other invalidating ones (selectors of the node last).
  void LayOutChildren() {
    NodeImpl** out = map_.Memory().Array<NodeImpl*>(edges_.size() + selections_);
    size_t at = 0;
    for (uint32_t owner = 0; owner < nodes_.size(); ++owner) {
      const size_t begin = at;
      while (at < edges_.size() && edges_[at].owner == owner) ++at;
      NodeLinks& links = nodes_[owner]->links;
      NodeImpl** list = out;
      for (LinkClass cls : {LinkClass::Writing, LinkClass::Reading, LinkClass::Invalidating}) {
        for (size_t i = begin; i < at; ++i)
          if (edges_[i].cls == cls) AddOnce(out, owner, edges_[i].target);
        const uint32_t size = static_cast<uint32_t>(out - list);
        if (cls == LinkClass::Writing) links.writing = size;
        if (cls == LinkClass::Reading) links.reading = size;
      }
      const size_t b = kSelectors * nodes_.size() + owner;
      for (uint32_t i = Begin(b); i < end_[b]; ++i)
        if (items_[i] != owner) AddOnce(out, owner, items_[i]);
      links.invalidating = static_cast<uint32_t>(out - list);
      links.children = list;
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
  // The node a pointer names; a qualified name ("Std::X", "Cust::X") names X.
  NameTable::Declared Resolve(uint32_t nameId) const {
    const NameTable::Declared declared = map_.Names().DeclaredOf(nameId);
    if (declared.node) return declared;
    const std::string_view name = map_.Names().Text(nameId);
    for (const std::string_view prefix : {std::string_view("Std::"), std::string_view("Cust::")}) {
      if (name.substr(0, prefix.size()) != prefix) continue;
      uint32_t id = 0;
      if (map_.Names().Find(name.substr(prefix.size()), id)) return map_.Names().DeclaredOf(id);
    }
    return NameTable::Declared{nullptr, 0, 0};
  }

  void AddOnce(NodeImpl**& out, uint32_t owner, uint32_t target) {
    if (mark_[target] == owner) return;
    mark_[target] = owner;
    *out++ = nodes_[target];
  }

  // Where reverse list b (list * nodes + node) begins in items_ and reverse_.
  uint32_t Begin(size_t b) const { return b == 0 ? 0 : end_[b - 1]; }

  // One reverse list without repeats, in the arena; marks use a fresh stamp
  // range so they never collide with the owner stamps of AddOnce.
  Span<NodeImpl*> Unique(Reverse list, uint32_t node) {
    const size_t b = list * nodes_.size() + node;
    NodeImpl** out = reverse_ + Begin(b);
    const uint32_t stamp = ++stamp_;
    uint32_t kept = 0;
    for (uint32_t i = Begin(b); i < end_[b]; ++i) {
      const uint32_t item = items_[i];
      if (mark_[item] == stamp) continue;
      mark_[item] = stamp;
      out[kept++] = nodes_[item];
    }
    return Span<NodeImpl*>(kept != 0 ? out : nullptr, kept);
  }

  NodeMap& map_;
  const std::vector<NodeImpl*>& nodes_;
  std::vector<Edge> edges_;
  std::vector<uint32_t> mark_;
  std::vector<uint32_t> end_;    // see LayOutReverse
  std::vector<uint32_t> items_;  // the reverse lists by node index, repeats included
  NodeImpl** reverse_ = nullptr;
  size_t selections_ = 0;  // pSelected pointers
  uint32_t stamp_ = 0x80000000u;
};

}  // namespace

void NodeMap::Link() {
  Linker linker(*this, nodes_);
  linker.Collect();
  linker.LayOutReverse();
  linker.LayOutChildren();
  linker.CheckCycles();
  FormulaCacheScope formulas(*this);
  for (NodeImpl* n : nodes_) n->FinishLoad();
}

}  // namespace impl
}  // namespace GenApi
