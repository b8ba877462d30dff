// gcstring members: a thin layer over std::string with null-safe construction
// and GenICam exceptions for out-of-range positions.
#include "GenICam/GCString.h"

#include <utility>

#include "GenICam/GCException.h"

namespace GenICam {

namespace {
std::string FromNullable(const char* text) {
  return text != nullptr ? std::string(text) : std::string();
}
std::string FromNullable(const char* text, size_t count) {
  return text != nullptr ? std::string(text, count) : std::string();
}
}  // namespace

gcstring::gcstring() = default;
gcstring::gcstring(const char* text) : text_(FromNullable(text)) {}
gcstring::gcstring(const char* text, size_t count) : text_(FromNullable(text, count)) {}
gcstring::gcstring(size_t count, char ch) : text_(count, ch) {}
gcstring::gcstring(const std::string& text) : text_(text) {}
gcstring::gcstring(const gcstring& other) = default;
gcstring::gcstring(gcstring&& other) noexcept : text_(std::move(other.text_)) {}
gcstring::~gcstring() = default;

gcstring& gcstring::operator=(const gcstring& other) = default;
gcstring& gcstring::operator=(gcstring&& other) noexcept {
  text_ = std::move(other.text_);
  return *this;
}
gcstring& gcstring::operator=(const char* text) { return assign(text); }
gcstring& gcstring::operator=(const std::string& text) {
  text_ = text;
  return *this;
}
gcstring& gcstring::operator=(char ch) { return assign(1, ch); }

gcstring& gcstring::assign(const gcstring& text) {
  text_ = text.text_;
  return *this;
}
gcstring& gcstring::assign(const char* text) {
  text_ = FromNullable(text);
  return *this;
}
gcstring& gcstring::assign(const char* text, size_t count) {
  text_ = FromNullable(text, count);
  return *this;
}
gcstring& gcstring::assign(size_t count, char ch) {
  text_.assign(count, ch);
  return *this;
}

gcstring& gcstring::append(const gcstring& text) {
  text_.append(text.text_);
  return *this;
}
gcstring& gcstring::append(const char* text) {
  if (text != nullptr) text_.append(text);
  return *this;
}
gcstring& gcstring::append(const char* text, size_t count) {
  if (text != nullptr) text_.append(text, count);
  return *this;
}
gcstring& gcstring::append(size_t count, char ch) {
  text_.append(count, ch);
  return *this;
}

gcstring& gcstring::operator+=(const gcstring& text) { return append(text); }
gcstring& gcstring::operator+=(const char* text) { return append(text); }
gcstring& gcstring::operator+=(const std::string& text) {
  text_.append(text);
  return *this;
}
gcstring& gcstring::operator+=(char ch) { return append(1, ch); }

const char* gcstring::c_str() const { return text_.c_str(); }
const char* gcstring::data() const { return text_.data(); }
size_t gcstring::size() const { return text_.size(); }
size_t gcstring::length() const { return text_.length(); }
size_t gcstring::max_size() const { return text_.max_size(); }
size_t gcstring::capacity() const { return text_.capacity(); }
bool gcstring::empty() const { return text_.empty(); }
void gcstring::clear() { text_.clear(); }

void gcstring::reserve(size_t count) {
  if (count > text_.max_size()) {
    throw BAD_ALLOC_EXCEPTION("Cannot reserve %zu characters.", count);
  }
  text_.reserve(count);
}

void gcstring::resize(size_t count, char ch) {
  if (count > text_.max_size()) {
    throw BAD_ALLOC_EXCEPTION("Cannot resize to %zu characters.", count);
  }
  text_.resize(count, ch);
}

void gcstring::swap(gcstring& other) noexcept { text_.swap(other.text_); }

int gcstring::compare(const gcstring& other) const { return text_.compare(other.text_); }
int gcstring::compare(const char* other) const {
  return text_.compare(other != nullptr ? other : "");
}

size_t gcstring::find(char ch, size_t offset) const { return text_.find(ch, offset); }
size_t gcstring::find(const gcstring& text, size_t offset) const {
  return text_.find(text.text_, offset);
}
size_t gcstring::find(const char* text, size_t offset, size_t count) const {
  if (text == nullptr) return count == 0 && offset <= text_.size() ? offset : npos;
  return text_.find(text, offset, count);
}
size_t gcstring::rfind(char ch, size_t offset) const { return text_.rfind(ch, offset); }
size_t gcstring::rfind(const gcstring& text, size_t offset) const {
  return text_.rfind(text.text_, offset);
}
size_t gcstring::find_first_of(const gcstring& chars, size_t offset) const {
  return text_.find_first_of(chars.text_, offset);
}
size_t gcstring::find_first_not_of(const gcstring& chars, size_t offset) const {
  return text_.find_first_not_of(chars.text_, offset);
}
size_t gcstring::find_last_of(const gcstring& chars, size_t offset) const {
  return text_.find_last_of(chars.text_, offset);
}
size_t gcstring::find_last_not_of(const gcstring& chars, size_t offset) const {
  return text_.find_last_not_of(chars.text_, offset);
}

gcstring gcstring::substr(size_t offset, size_t count) const {
  if (offset > text_.size()) {
    throw OUT_OF_RANGE_EXCEPTION("Offset %zu is beyond the end of a string of length %zu.", offset,
                                 text_.size());
  }
  return gcstring(text_.substr(offset, count));
}

char& gcstring::at(size_t index) {
  if (index >= text_.size()) {
    throw OUT_OF_RANGE_EXCEPTION("Index %zu is out of range (length %zu).", index, text_.size());
  }
  return text_[index];
}
const char& gcstring::at(size_t index) const {
  if (index >= text_.size()) {
    throw OUT_OF_RANGE_EXCEPTION("Index %zu is out of range (length %zu).", index, text_.size());
  }
  return text_[index];
}

// Index size() is the terminator, as for std::string.
char& gcstring::ElementAt(size_t index) {
  if (index > text_.size()) {
    throw OUT_OF_RANGE_EXCEPTION("Index %zu is out of range (length %zu).", index, text_.size());
  }
  return text_[index];
}
const char& gcstring::ElementAt(size_t index) const {
  if (index > text_.size()) {
    throw OUT_OF_RANGE_EXCEPTION("Index %zu is out of range (length %zu).", index, text_.size());
  }
  return text_[index];
}

gcstring::operator const char*() const { return text_.c_str(); }
gcstring::operator std::string() const { return text_; }

}  // namespace GenICam
