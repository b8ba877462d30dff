// NameTable: every name of a description (nodes, pointer targets, vendor
// element names) interned once; an id stands for its name, and a name's id
// leads to its node in one hash look-up.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "Arena.h"

namespace GenApi {
namespace impl {

class NodeImpl;

// Equality of two runs of n bytes; short runs (names, element names) are
// compared with a few overlapping word loads instead of a library call.
inline bool SameBytes(const char* a, const char* b, size_t n) {
  const auto word = [](const char* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
  };
  const auto half = [](const char* p) {
    uint32_t w;
    std::memcpy(&w, p, 4);
    return w;
  };
  if (n >= 8 && n <= 16) return word(a) == word(b) && word(a + n - 8) == word(b + n - 8);
  if (n >= 4 && n < 8) return half(a) == half(b) && half(a + n - 4) == half(b + n - 4);
  if (n < 4) {
    for (size_t i = 0; i < n; ++i)
      if (a[i] != b[i]) return false;
    return true;
  }
  return std::memcmp(a, b, n) == 0;
}

// A fast hash of short texts, eight bytes at a time.
inline uint32_t HashText(std::string_view text) {
  const char* p = text.data();
  size_t n = text.size();
  uint64_t h = 0x9E3779B97F4A7C15ull * (n + 1);
  while (n >= 8) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    h = (h ^ word) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 32;
    p += 8;
    n -= 8;
  }
  uint64_t tail = 0;
  for (size_t i = 0; i < n; ++i) tail |= uint64_t(static_cast<unsigned char>(p[i])) << (8 * i);
  h = (h ^ tail) * 0xC4CEB9FE1A85EC53ull;
  return static_cast<uint32_t>(h ^ (h >> 29));
}

class NameTable {
 public:
  explicit NameTable(Arena& arena) : arena_(arena) {}

  // The id of name, adding it when new.
  uint32_t Intern(std::string_view name);
  // The id of name if it is known.
  bool Find(std::string_view name, uint32_t& id) const;

  const char* Text(uint32_t id) const { return entries_[id].text; }
  // The node declared under the name, or null.
  NodeImpl* NodeOf(uint32_t id) const { return entries_[id].node; }
  void SetNode(uint32_t id, NodeImpl* node) { entries_[id].node = node; }
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
  };
  // A slot holds the hash too, so most probes never touch an entry.
  struct Slot {
    uint32_t hash;
    uint32_t id;  // id + 1; 0 marks a free slot
  };
  size_t Probe(std::string_view name, uint32_t hash) const;
  void Rehash(size_t slots);

  Arena& arena_;
  std::vector<Entry> entries_;
  std::vector<Slot> slots_;
};

}  // namespace impl
}  // namespace GenApi
