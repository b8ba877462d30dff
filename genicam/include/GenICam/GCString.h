// GenICam::gcstring: the text type of every GenICam interface.
#ifndef GENICAM_GCSTRING_H
#define GENICAM_GCSTRING_H

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

#include "GenICam/GCBaseExport.h"

namespace GenICam {

// A byte string with the std::string vocabulary. Every member is defined inside
// GCBase, so callers in other shared libraries share one implementation.
// Indexing past the end throws GenICam::OutOfRangeException.
class GCBASE_API gcstring {
 public:
  static constexpr size_t npos = static_cast<size_t>(-1);

  gcstring();
  gcstring(const char* text);                // null gives the empty string
  gcstring(const char* text, size_t count);  // null gives the empty string
  gcstring(size_t count, char ch);
  gcstring(const std::string& text);
  gcstring(const gcstring& other);
  gcstring(gcstring&& other) noexcept;
  ~gcstring();

  gcstring& operator=(const gcstring& other);
  gcstring& operator=(gcstring&& other) noexcept;
  gcstring& operator=(const char* text);
  gcstring& operator=(const std::string& text);
  gcstring& operator=(char ch);

  gcstring& assign(const gcstring& text);
  gcstring& assign(const char* text);
  gcstring& assign(const char* text, size_t count);
  gcstring& assign(size_t count, char ch);

  gcstring& append(const gcstring& text);
  gcstring& append(const char* text);
  gcstring& append(const char* text, size_t count);
  gcstring& append(size_t count, char ch);

  gcstring& operator+=(const gcstring& text);
  gcstring& operator+=(const char* text);
  gcstring& operator+=(const std::string& text);
  gcstring& operator+=(char ch);

  const char* c_str() const;
  const char* data() const;
  size_t size() const;
  size_t length() const;
  size_t max_size() const;
  size_t capacity() const;
  bool empty() const;
  void clear();
  void reserve(size_t count);
  void resize(size_t count, char ch = '\0');
  void swap(gcstring& other) noexcept;

  int compare(const gcstring& other) const;
  int compare(const char* other) const;

  size_t find(char ch, size_t offset = 0) const;
  size_t find(const gcstring& text, size_t offset = 0) const;
  size_t find(const char* text, size_t offset, size_t count) const;
  size_t rfind(char ch, size_t offset = npos) const;
  size_t rfind(const gcstring& text, size_t offset = npos) const;
  size_t find_first_of(const gcstring& chars, size_t offset = 0) const;
  size_t find_first_not_of(const gcstring& chars, size_t offset = 0) const;
  size_t find_last_of(const gcstring& chars, size_t offset = npos) const;
  size_t find_last_not_of(const gcstring& chars, size_t offset = npos) const;

  // offset > size() throws OutOfRangeException.
  gcstring substr(size_t offset = 0, size_t count = npos) const;

  // index >= size() throws OutOfRangeException.
  char& at(size_t index);
  const char& at(size_t index) const;

  // Any integer index type, so that s[0] does not compete with the built-in
  // subscript of the const char* conversion. index > size() throws.
  template <typename Index, std::enable_if_t<std::is_integral<Index>::value, int> = 0>
  char& operator[](Index index) {
    return ElementAt(static_cast<size_t>(index));
  }
  template <typename Index, std::enable_if_t<std::is_integral<Index>::value, int> = 0>
  const char& operator[](Index index) const {
    return ElementAt(static_cast<size_t>(index));
  }

  // Both conversions are implicit, so a gcstring passes for a const char* or a
  // std::string parameter. Members of std::string that take either one are
  // ambiguous for that reason: write s = gc.c_str(), s += gc.c_str(), or
  // s = std::string(gc) (which keeps embedded NULs).
  operator const char*() const;
  operator std::string() const;

 private:
  char& ElementAt(size_t index);
  const char& ElementAt(size_t index) const;

  std::string text_;
};

GCBASE_API gcstring operator+(const gcstring& left, const gcstring& right);
GCBASE_API gcstring operator+(const gcstring& left, const char* right);
GCBASE_API gcstring operator+(const char* left, const gcstring& right);
GCBASE_API gcstring operator+(const gcstring& left, const std::string& right);
GCBASE_API gcstring operator+(const std::string& left, const gcstring& right);
GCBASE_API gcstring operator+(const gcstring& left, char right);
GCBASE_API gcstring operator+(char left, const gcstring& right);

GCBASE_API bool operator==(const gcstring& left, const gcstring& right);
GCBASE_API bool operator==(const gcstring& left, const char* right);
GCBASE_API bool operator==(const char* left, const gcstring& right);
GCBASE_API bool operator==(const gcstring& left, const std::string& right);
GCBASE_API bool operator==(const std::string& left, const gcstring& right);
GCBASE_API bool operator!=(const gcstring& left, const gcstring& right);
GCBASE_API bool operator!=(const gcstring& left, const char* right);
GCBASE_API bool operator!=(const char* left, const gcstring& right);
GCBASE_API bool operator!=(const gcstring& left, const std::string& right);
GCBASE_API bool operator!=(const std::string& left, const gcstring& right);
GCBASE_API bool operator<(const gcstring& left, const gcstring& right);
GCBASE_API bool operator<(const gcstring& left, const char* right);
GCBASE_API bool operator<(const char* left, const gcstring& right);
GCBASE_API bool operator>(const gcstring& left, const gcstring& right);
GCBASE_API bool operator<=(const gcstring& left, const gcstring& right);
GCBASE_API bool operator>=(const gcstring& left, const gcstring& right);

GCBASE_API std::ostream& operator<<(std::ostream& stream, const gcstring& text);
// Reads one whitespace-separated word, as for std::string.
GCBASE_API std::istream& operator>>(std::istream& stream, gcstring& text);

}  // namespace GenICam

namespace std {
template <>
struct hash<GenICam::gcstring> {
  size_t operator()(const GenICam::gcstring& text) const noexcept {
    return hash<string_view>()(string_view(text.data(), text.size()));
  }
};
}  // namespace std

#endif  // GENICAM_GCSTRING_H
