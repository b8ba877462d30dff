// Byte helpers for the short texts of a description (names, element names,
// element texts): compared, copied and hashed with a few word loads instead
// of library calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace GenApi {
namespace impl {

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

// A fast hash of short texts, eight bytes at a time; the last bytes are read
// with one overlapping load instead of one by one.
inline uint32_t HashText(std::string_view text) {
  const char* p = text.data();
  const size_t size = text.size();
  const auto word = [](const char* at) {
    uint64_t w;
    std::memcpy(&w, at, 8);
    return w;
  };
  uint64_t h = 0x9E3779B97F4A7C15ull * (size + 1);
  uint64_t tail = 0;
  if (size >= 8) {
    const char* last = p + size - 8;
    for (; p < last; p += 8) {
      h = (h ^ word(p)) * 0xFF51AFD7ED558CCDull;
      h ^= h >> 32;
    }
    tail = word(last);
  } else if (size >= 4) {
    uint32_t first, second;
    std::memcpy(&first, p, 4);
    std::memcpy(&second, p + size - 4, 4);
    tail = (uint64_t(second) << 32) | first;
  } else if (size > 0) {
    const auto byte = [p](size_t i) { return uint64_t(static_cast<unsigned char>(p[i])); };
    tail = byte(0) | (byte(size / 2) << 8) | (byte(size - 1) << 16);
  }
  h = (h ^ tail) * 0xC4CEB9FE1A85EC53ull;
  return static_cast<uint32_t>(h ^ (h >> 29));
}

// Copies n bytes, sizeof(Word) <= n <= 2 * sizeof(Word), as two overlapping words.
template <class Word>
void CopyTwoWords(char* to, const char* from, size_t n) {
  Word head, tail;
  std::memcpy(&head, from, sizeof(Word));
  std::memcpy(&tail, from + n - sizeof(Word), sizeof(Word));
  std::memcpy(to, &head, sizeof(Word));
  std::memcpy(to + n - sizeof(Word), &tail, sizeof(Word));
}

// Copies n bytes; the short runs of names and element texts without a library call.
inline void CopyBytes(char* to, const char* from, size_t n) {
  if (n > 16)
    std::memcpy(to, from, n);
  else if (n >= 8)
    CopyTwoWords<uint64_t>(to, from, n);
  else if (n >= 4)
    CopyTwoWords<uint32_t>(to, from, n);
  else
    for (size_t i = 0; i < n; ++i) to[i] = from[i];
}

}  // namespace impl
}  // namespace GenApi
