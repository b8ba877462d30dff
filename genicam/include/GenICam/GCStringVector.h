// GenICam::gcstring_vector: the list-of-texts type of every GenICam interface.
#ifndef GENICAM_GCSTRINGVECTOR_H
#define GENICAM_GCSTRINGVECTOR_H

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "GenICam/GCBaseExport.h"
#include "GenICam/GCString.h"

namespace GenICam {

// A vector of gcstring with the std::vector vocabulary. Iterators are plain
// pointers into contiguous storage (invalidated as for std::vector). Checked
// access (at, operator[], front, back on an empty vector, erase/insert at a
// position outside the vector) throws GenICam::OutOfRangeException.
class GCBASE_API gcstring_vector {
 public:
  using value_type = gcstring;
  using size_type = size_t;
  using difference_type = std::ptrdiff_t;
  using reference = gcstring&;
  using const_reference = const gcstring&;
  using pointer = gcstring*;
  using const_pointer = const gcstring*;
  using iterator = gcstring*;
  using const_iterator = const gcstring*;

  gcstring_vector();
  explicit gcstring_vector(size_t count, const gcstring& value = gcstring());
  gcstring_vector(std::initializer_list<gcstring> values);
  gcstring_vector(const gcstring_vector& other);
  gcstring_vector(gcstring_vector&& other) noexcept;
  ~gcstring_vector();
  gcstring_vector& operator=(const gcstring_vector& other);
  gcstring_vector& operator=(gcstring_vector&& other) noexcept;

  iterator begin();
  iterator end();
  const_iterator begin() const;
  const_iterator end() const;
  const_iterator cbegin() const;
  const_iterator cend() const;

  size_t size() const;
  size_t max_size() const;
  size_t capacity() const;
  bool empty() const;
  void reserve(size_t count);
  void resize(size_t count, const gcstring& value = gcstring());
  void clear();

  gcstring& at(size_t index);
  const gcstring& at(size_t index) const;
  gcstring& operator[](size_t index);
  const gcstring& operator[](size_t index) const;
  gcstring& front();
  const gcstring& front() const;
  gcstring& back();
  const gcstring& back() const;
  gcstring* data();
  const gcstring* data() const;

  void push_back(const gcstring& value);
  void push_back(gcstring&& value);
  void pop_back();  // no effect on an empty vector
  iterator insert(const_iterator position, const gcstring& value);
  iterator insert(const_iterator position, size_t count, const gcstring& value);
  iterator erase(const_iterator position);
  iterator erase(const_iterator first, const_iterator last);
  void assign(size_t count, const gcstring& value);
  void swap(gcstring_vector& other) noexcept;

 private:
  size_t IndexOf(const_iterator position, bool allowEnd) const;

  std::vector<gcstring> items_;
};

GCBASE_API bool operator==(const gcstring_vector& left, const gcstring_vector& right);
GCBASE_API bool operator!=(const gcstring_vector& left, const gcstring_vector& right);

}  // namespace GenICam

#endif  // GENICAM_GCSTRINGVECTOR_H
