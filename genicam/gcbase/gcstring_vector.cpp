// gcstring_vector members: std::vector<gcstring> with checked positions.
#include <cstdint>
#include <utility>

#include "GenICam/GCException.h"
#include "GenICam/GCStringVector.h"

namespace GenICam {

namespace {
[[noreturn]] void ThrowIndex(size_t index, size_t size) {
  throw OUT_OF_RANGE_EXCEPTION("Index %zu is out of range (vector size %zu).", index, size);
}
[[noreturn]] void ThrowEmpty(const char* what) {
  throw OUT_OF_RANGE_EXCEPTION("%s called on an empty vector.", what);
}
}  // namespace

gcstring_vector::gcstring_vector() = default;
gcstring_vector::gcstring_vector(size_t count, const gcstring& value) : items_(count, value) {}
gcstring_vector::gcstring_vector(std::initializer_list<gcstring> values) : items_(values) {}
gcstring_vector::gcstring_vector(const gcstring_vector& other) = default;
gcstring_vector::gcstring_vector(gcstring_vector&& other) noexcept
    : items_(std::move(other.items_)) {}
gcstring_vector::~gcstring_vector() = default;
gcstring_vector& gcstring_vector::operator=(const gcstring_vector& other) = default;
gcstring_vector& gcstring_vector::operator=(gcstring_vector&& other) noexcept {
  items_ = std::move(other.items_);
  return *this;
}

gcstring_vector::iterator gcstring_vector::begin() { return items_.data(); }
gcstring_vector::iterator gcstring_vector::end() { return items_.data() + items_.size(); }
gcstring_vector::const_iterator gcstring_vector::begin() const { return items_.data(); }
gcstring_vector::const_iterator gcstring_vector::end() const {
  return items_.data() + items_.size();
}
gcstring_vector::const_iterator gcstring_vector::cbegin() const { return begin(); }
gcstring_vector::const_iterator gcstring_vector::cend() const { return end(); }

size_t gcstring_vector::size() const { return items_.size(); }
size_t gcstring_vector::max_size() const { return items_.max_size(); }
size_t gcstring_vector::capacity() const { return items_.capacity(); }
bool gcstring_vector::empty() const { return items_.empty(); }

void gcstring_vector::reserve(size_t count) {
  if (count > items_.max_size()) throw BAD_ALLOC_EXCEPTION("Cannot reserve %zu strings.", count);
  items_.reserve(count);
}

void gcstring_vector::resize(size_t count, const gcstring& value) {
  if (count > items_.max_size()) throw BAD_ALLOC_EXCEPTION("Cannot resize to %zu strings.", count);
  items_.resize(count, value);
}

void gcstring_vector::clear() { items_.clear(); }

gcstring& gcstring_vector::at(size_t index) {
  if (index >= items_.size()) ThrowIndex(index, items_.size());
  return items_[index];
}
const gcstring& gcstring_vector::at(size_t index) const {
  if (index >= items_.size()) ThrowIndex(index, items_.size());
  return items_[index];
}
gcstring& gcstring_vector::operator[](size_t index) { return at(index); }
const gcstring& gcstring_vector::operator[](size_t index) const { return at(index); }

gcstring& gcstring_vector::front() {
  if (items_.empty()) ThrowEmpty("front()");
  return items_.front();
}
const gcstring& gcstring_vector::front() const {
  if (items_.empty()) ThrowEmpty("front()");
  return items_.front();
}
gcstring& gcstring_vector::back() {
  if (items_.empty()) ThrowEmpty("back()");
  return items_.back();
}
const gcstring& gcstring_vector::back() const {
  if (items_.empty()) ThrowEmpty("back()");
  return items_.back();
}
gcstring* gcstring_vector::data() { return items_.data(); }
const gcstring* gcstring_vector::data() const { return items_.data(); }

void gcstring_vector::push_back(const gcstring& value) { items_.push_back(value); }
void gcstring_vector::push_back(gcstring&& value) { items_.push_back(std::move(value)); }
void gcstring_vector::pop_back() {
  if (!items_.empty()) items_.pop_back();
}

// Position of an iterator as an index; refuses iterators outside this vector.
// Compared as addresses so that a foreign pointer is refused without UB.
size_t gcstring_vector::IndexOf(const_iterator position, bool allowEnd) const {
  const auto address = reinterpret_cast<std::uintptr_t>(position);
  const auto base = reinterpret_cast<std::uintptr_t>(items_.data());
  if (address >= base && (address - base) % sizeof(gcstring) == 0) {
    const size_t index = (address - base) / sizeof(gcstring);
    if (index < items_.size() || (allowEnd && index == items_.size())) return index;
  }
  throw OUT_OF_RANGE_EXCEPTION("Iterator does not point into the vector.");
}

gcstring_vector::iterator gcstring_vector::insert(const_iterator position, const gcstring& value) {
  const size_t index = IndexOf(position, true);
  items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), value);
  return items_.data() + index;
}

gcstring_vector::iterator gcstring_vector::insert(const_iterator position, size_t count,
                                                  const gcstring& value) {
  const size_t index = IndexOf(position, true);
  items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), count, value);
  return items_.data() + index;
}

gcstring_vector::iterator gcstring_vector::erase(const_iterator position) {
  const size_t index = IndexOf(position, false);
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
  return items_.data() + index;
}

gcstring_vector::iterator gcstring_vector::erase(const_iterator first, const_iterator last) {
  const size_t from = IndexOf(first, true);
  const size_t to = IndexOf(last, true);
  if (from > to) throw OUT_OF_RANGE_EXCEPTION("Erase range ends before it begins.");
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(from),
               items_.begin() + static_cast<std::ptrdiff_t>(to));
  return items_.data() + from;
}

void gcstring_vector::assign(size_t count, const gcstring& value) { items_.assign(count, value); }
void gcstring_vector::swap(gcstring_vector& other) noexcept { items_.swap(other.items_); }

bool operator==(const gcstring_vector& left, const gcstring_vector& right) {
  if (left.size() != right.size()) return false;
  for (size_t i = 0; i < left.size(); ++i) {
    if (left[i] != right[i]) return false;
  }
  return true;
}
bool operator!=(const gcstring_vector& left, const gcstring_vector& right) {
  return !(left == right);
}

}  // namespace GenICam
