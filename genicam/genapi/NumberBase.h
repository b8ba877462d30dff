// NumberBase: the checked SetValue/GetValue shared by integer-like and float-like nodes,
// built on the internal value protocol (GetInt/SetInt or GetFloat/SetFloat).
#pragma once

#include <type_traits>

#include "NodeMap.h"

namespace GenApi {
namespace impl {

template <class T>
class NumberBase : public NodeImpl {
 public:
  using NodeImpl::NodeImpl;

 protected:
  // Throws when value is outside what the node accepts now.
  virtual void CheckRange(T value, const char* method) = 0;

  // SetValue: with verify, checks access and range first and the node's error state after.
  void CheckedSet(T value, bool verify) {
    map_->RunWrite(this, [&] {
      if (verify) {
        CheckWritable("SetValue");
        CheckRange(value, "SetValue");
      }
      WriteNumber(value, verify);
      if (verify) CheckError("SetValue");
    });
  }

  // GetValue: with verify, reads past the cache and range-checks what it read.
  T CheckedGet(bool verify, bool ignoreCache) {
    AutoLock guard(map_->GetLock());
    CheckReadable("GetValue");
    const T value = ReadNumber(verify, ignoreCache || verify);
    if (verify) CheckRange(value, "GetValue");
    return value;
  }

 private:
  T ReadNumber(bool verify, bool ignoreCache) {
    if constexpr (std::is_same_v<T, double>)
      return GetFloat(verify, ignoreCache);
    else
      return GetInt(verify, ignoreCache);
  }
  void WriteNumber(T value, bool verify) {
    if constexpr (std::is_same_v<T, double>)
      SetFloat(value, verify);
    else
      SetInt(value, verify);
  }
};

}  // namespace impl
}  // namespace GenApi
