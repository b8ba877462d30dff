// The element names the engine knows, by id, in a table built at compile
// time: a known name is found with one probe.
#pragma once

#include <cstring>
#include <string_view>

#include "TextBytes.h"
#include "XmlElem.h"

namespace GenApi {
namespace impl {

// Open-addressed table from name to id, filled at compile time.
class ElemTable {
 public:
  constexpr ElemTable() {
    for (size_t id = 1; id < size_t(Elem::Count); ++id) {
      const std::string_view name = kElemNames[id];
      size_t i = Hash(name) & kMask;
      while (slots_[i].id != Elem::Unknown) i = (i + 1) & kMask;
      slots_[i] = Slot{static_cast<Elem>(id), static_cast<uint8_t>(name.size())};
    }
  }
  Elem Find(std::string_view name) const {
    for (size_t i = Hash(name) & kMask;; i = (i + 1) & kMask) {
      const Slot& slot = slots_[i];
      if (slot.id == Elem::Unknown) return Elem::Unknown;
      if (slot.size == name.size() &&
          SameBytes(kElemNames[size_t(slot.id)], name.data(), name.size()))
        return slot.id;
    }
  }

 private:
  struct Slot {
    Elem id;
    uint8_t size;
  };
  static constexpr size_t kMask = 511;
  // Length and three characters; these multipliers give every known name a
  // slot of its own, so a known name is found at the first probe.
  static constexpr size_t Hash(std::string_view s) {
    const size_t n = s.size();
    if (n == 0) return 0;
    const auto at = [&s](size_t i) {
      return static_cast<uint32_t>(static_cast<unsigned char>(s[i]));
    };
    return (uint32_t(n) * 36698u) ^ (at(0) * 29623u) ^ (at(n - 1) * 33076u) ^ (at(n / 2) * 12266u);
  }
  Slot slots_[kMask + 1] = {};
};

inline constexpr ElemTable kElemTable;

// The id of a name found only after a namespace prefix, or Unknown.
Elem ElemOfPrefixed(const char* name, size_t size);

// Known names hold no ':', so a name found as written is the answer; only
// the others are looked up again without their prefix.
inline Elem ElemOfQualified(const char* name) {
  const size_t size = std::strlen(name);
  const Elem id = kElemTable.Find(std::string_view(name, size));
  return id != Elem::Unknown ? id : ElemOfPrefixed(name, size);
}

}  // namespace impl
}  // namespace GenApi
