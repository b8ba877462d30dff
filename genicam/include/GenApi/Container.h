// node_vector and value_vector: the lists of nodes and feature values that
// INode, ICategory and INodeMap fill.
#pragma once

#include <cstddef>
#include <vector>

#include <GenApi/GenApiDll.h>

namespace GenApi {

struct INode;
struct IValue;

// A small std::vector-like list of interface pointers.
template <class T>
class pointer_vector {
 public:
  typedef T* value_type;
  typedef typename std::vector<T*>::iterator iterator;
  typedef typename std::vector<T*>::const_iterator const_iterator;
  typedef std::size_t size_type;

  pointer_vector() = default;
  explicit pointer_vector(size_t n) : items_(n, nullptr) {}

  iterator begin() { return items_.begin(); }
  iterator end() { return items_.end(); }
  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }
  size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  void clear() { items_.clear(); }
  void reserve(size_t n) { items_.reserve(n); }
  void resize(size_t n) { items_.resize(n, nullptr); }
  size_t capacity() const { return items_.capacity(); }
  void push_back(T* p) { items_.push_back(p); }
  void pop_back() { items_.pop_back(); }
  iterator erase(iterator pos) { return items_.erase(pos); }
  T*& operator[](size_t i) { return items_[i]; }
  T* const& operator[](size_t i) const { return items_[i]; }
  T*& at(size_t i) { return items_.at(i); }
  T* const& at(size_t i) const { return items_.at(i); }
  T*& front() { return items_.front(); }
  T*& back() { return items_.back(); }

 private:
  std::vector<T*> items_;
};

typedef pointer_vector<INode> node_vector;
typedef pointer_vector<IValue> value_vector;
typedef node_vector NodeList_t;
typedef value_vector FeatureList_t;

}  // namespace GenApi
