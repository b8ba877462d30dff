// NameTable: every name of a description (nodes, pointer targets, vendor
// element names) interned once; an id stands for its name, and a name's id
// leads to its node in one hash look-up.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "Arena.h"
#include "TextBytes.h"

namespace GenApi {
namespace impl {

class NodeImpl;

class NameTable {
 public:
  explicit NameTable(Arena& arena) : arena_(arena) {}

  // The id of name, adding it when new. Names met before (most pointers
  // name a node declared or named already) are found here, inline.
  uint32_t Intern(std::string_view name) {
    const uint32_t hash = HashText(name);
    if (slots_.empty()) return Add(name, hash, 0);
    const size_t mask = slots_.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
      const Slot slot = slots_[i];
      if (slot.id == 0) return Add(name, hash, i);
      if (slot.hash != hash) continue;
      const Entry& e = entries_[slot.id - 1];
      if (e.size == name.size() && SameBytes(e.text, name.data(), name.size())) return slot.id - 1;
    }
  }
  // The id of name if it is known.
  bool Find(std::string_view name, uint32_t& id) const;

  // The name, followed by a second NUL: it may serve as a property value
  // without attribute.
  const char* Text(uint32_t id) const { return entries_[id].text; }
  // The node declared under the name, or null.
  NodeImpl* NodeOf(uint32_t id) const { return entries_[id].node; }
  // That node with its index in the map and its kind bits, kept here so that
  // linking a pointer reads the name table only, not the node.
  struct Declared {
    NodeImpl* node;
    uint32_t index;
    uint16_t kinds;
  };
  Declared DeclaredOf(uint32_t id) const {
    const Entry& e = entries_[id];
    return Declared{e.node, e.index, e.kinds};
  }
  void SetNode(uint32_t id, NodeImpl* node, uint32_t index, uint16_t kinds) {
    Entry& e = entries_[id];
    e.node = node;
    e.index = index;
    e.kinds = kinds;
  }
  // Node by name, or null.
  NodeImpl* FindNode(std::string_view name) const;

  // Room for about count names, so that loading does not rehash.
  void Reserve(size_t count);
  // Drops the spare capacity once loading is done.
  void Shrink() { entries_.shrink_to_fit(); }
  void Clear();

 private:
  struct Entry {
    const char* text;
    uint32_t size;
    uint32_t hash;
    NodeImpl* node;
    uint32_t index;
    uint16_t kinds;
  };
  // A slot holds the hash too, so most probes never touch an entry.
  struct Slot {
    uint32_t hash;
    uint32_t id;  // id + 1; 0 marks a free slot
  };
  size_t Probe(std::string_view name, uint32_t hash) const;
  // Adds a new name; free is the free slot where its probe ended.
  uint32_t Add(std::string_view name, uint32_t hash, size_t free);
  void Rehash(size_t slots);

  Arena& arena_;
  std::vector<Entry> entries_;
  std::vector<Slot> slots_;
};

}  // namespace impl
}  // namespace GenApi
