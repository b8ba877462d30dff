// NameTable: open addressing over the entries, linear probing.
#include "NameTable.h"

#include <cstring>

namespace GenApi {
namespace impl {

size_t NameTable::Probe(std::string_view name, uint32_t hash) const {
  const size_t mask = slots_.size() - 1;
  for (size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& slot = slots_[i];
    if (slot.id == 0) return i;
    if (slot.hash != hash) continue;
    const Entry& e = entries_[slot.id - 1];
    if (e.size == name.size() && SameBytes(e.text, name.data(), name.size())) return i;
  }
}

void NameTable::Rehash(size_t slots) {
  slots_.assign(slots, Slot{0, 0});
  const size_t mask = slots - 1;
  for (uint32_t id = 0; id < entries_.size(); ++id) {
    size_t i = entries_[id].hash & mask;
    while (slots_[i].id != 0) i = (i + 1) & mask;
    slots_[i] = Slot{entries_[id].hash, id + 1};
  }
}

void NameTable::Reserve(size_t count) {
  entries_.reserve(count);
  size_t slots = 1024;
  while (slots < 2 * count) slots *= 2;
  if (slots > slots_.size()) Rehash(slots);
}

uint32_t NameTable::Add(std::string_view name, uint32_t hash, size_t slot) {
  if (2 * (entries_.size() + 1) > slots_.size()) {
    Rehash(slots_.empty() ? 1024 : 2 * slots_.size());
    slot = Probe(name, hash);
  }
  // Stored as a property value too ("name\0" and an empty attribute "\0").
  char* text = static_cast<char*>(arena_.Allocate(name.size() + 2, 1));
  CopyBytes(text, name.data(), name.size());
  text[name.size()] = text[name.size() + 1] = '\0';
  Entry& e = entries_.emplace_back();  // filled in place: a whole Entry copied stalls
  e.text = text;
  e.size = static_cast<uint32_t>(name.size());
  e.hash = hash;
  e.node = nullptr;
  e.index = 0;
  e.kinds = 0;
  slots_[slot] = Slot{hash, static_cast<uint32_t>(entries_.size())};
  return slots_[slot].id - 1;
}

bool NameTable::Find(std::string_view name, uint32_t& id) const {
  if (slots_.empty()) return false;
  const Slot& slot = slots_[Probe(name, HashText(name))];
  if (slot.id == 0) return false;
  id = slot.id - 1;
  return true;
}

NodeImpl* NameTable::FindNode(std::string_view name) const {
  uint32_t id = 0;
  return Find(name, id) ? entries_[id].node : nullptr;
}

void NameTable::Clear() {
  entries_.clear();
  entries_.shrink_to_fit();
  slots_.clear();
  slots_.shrink_to_fit();
}

}  // namespace impl
}  // namespace GenApi
