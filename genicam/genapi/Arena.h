// Arena: the node map's bump allocator. Nodes, their small lists and the
// description's texts live in a few large blocks that are freed together
// when the map is cleared; nothing in it is freed one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

namespace GenApi {
namespace impl {

class Arena {
 public:
  Arena() = default;
  ~Arena() { Release(); }
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  void* Allocate(size_t size, size_t align) {
    uintptr_t at = (reinterpret_cast<uintptr_t>(cur_) + (align - 1)) & ~uintptr_t(align - 1);
    if (cur_ == nullptr || at + size > reinterpret_cast<uintptr_t>(end_)) {
      if (size + align > kLargeSize) return AllocateLarge(size + align, align);
      Grow();
      at = (reinterpret_cast<uintptr_t>(cur_) + (align - 1)) & ~uintptr_t(align - 1);
    }
    cur_ = reinterpret_cast<char*>(at + size);
    return reinterpret_cast<void*>(at);
  }

  template <class T, class... Args>
  T* New(Args&&... args) {
    return new (Allocate(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
  }

  // Uninitialised room for count trivially copyable values.
  template <class T>
  T* Array(size_t count) {
    static_assert(std::is_trivially_copyable<T>::value, "arena arrays hold plain values");
    return count == 0 ? nullptr : static_cast<T*>(Allocate(sizeof(T) * count, alignof(T)));
  }

  // A NUL-terminated copy of text.
  const char* Copy(std::string_view text) {
    char* out = static_cast<char*>(Allocate(text.size() + 1, 1));
    if (!text.empty()) std::memcpy(out, text.data(), text.size());
    out[text.size()] = '\0';
    return out;
  }

  // Frees every block; whatever was built in them must already be destroyed.
  void Release();

 private:
  // Requests above this get a block of their own; the others share blocks.
  static constexpr size_t kLargeSize = 16 * 1024;

  void Grow();
  void* AllocateLarge(size_t size, size_t align);
  char* NewBlock(size_t payload);

  struct Block {
    Block* previous;
  };
  Block* blocks_ = nullptr;
  char* cur_ = nullptr;
  char* end_ = nullptr;
};

// A fixed run of values in the arena.
template <class T>
class Span {
 public:
  Span() = default;
  Span(T* data, uint32_t size) : data_(data), size_(size) {}
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T& operator[](size_t i) const { return data_[i]; }

 private:
  T* data_ = nullptr;
  uint32_t size_ = 0;
};

// A list of plain values that grows in the arena while a node is built.
// Outgrown storage stays in the arena; lists are short, so little is lost.
template <class T>
class ArenaVec {
  static_assert(std::is_trivially_copyable<T>::value, "arena lists hold plain values");

 public:
  void push_back(Arena& arena, const T& value) {
    if (size_ == capacity_) {
      const uint32_t capacity = capacity_ == 0 ? 2 : capacity_ * 2;
      T* data = arena.Array<T>(capacity);
      if (size_ != 0) std::memcpy(static_cast<void*>(data), data_, sizeof(T) * size_);
      data_ = data;
      capacity_ = capacity;
    }
    data_[size_++] = value;
  }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T& operator[](size_t i) const { return data_[i]; }
  T& back() const { return data_[size_ - 1]; }

 private:
  T* data_ = nullptr;
  uint32_t size_ = 0;
  uint32_t capacity_ = 0;
};

}  // namespace impl
}  // namespace GenApi
