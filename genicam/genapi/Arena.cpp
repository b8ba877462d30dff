// Arena blocks.
#include "Arena.h"

#include <cstdlib>

namespace GenApi {
namespace impl {

namespace {
constexpr size_t kBlockSize = 64 * 1024;
constexpr size_t kHeaderSize = alignof(std::max_align_t) > sizeof(void*) ? alignof(std::max_align_t)
                                                                         : sizeof(void*);
}  // namespace

char* Arena::NewBlock(size_t payload) {
  char* raw = static_cast<char*>(std::malloc(kHeaderSize + payload));
  if (raw == nullptr) throw std::bad_alloc();
  Block* block = reinterpret_cast<Block*>(raw);
  block->previous = blocks_;
  blocks_ = block;
  return raw + kHeaderSize;
}

void Arena::Grow() {
  cur_ = NewBlock(kBlockSize);
  end_ = cur_ + kBlockSize;
}

void* Arena::AllocateLarge(size_t size, size_t align) {
  const uintptr_t at = reinterpret_cast<uintptr_t>(NewBlock(size));
  return reinterpret_cast<void*>((at + (align - 1)) & ~uintptr_t(align - 1));
}

void Arena::Release() {
  while (blocks_ != nullptr) {
    Block* previous = blocks_->previous;
    std::free(blocks_);
    blocks_ = previous;
  }
  cur_ = end_ = nullptr;
}

}  // namespace impl
}  // namespace GenApi
