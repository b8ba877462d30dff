// The node map's recursive lock.
#pragma once

#include <mutex>

#include <GenApi/GenApiDll.h>

namespace GenApi {

class GENAPI_DECL CLock {
 public:
  CLock() = default;
  CLock(const CLock&) = delete;
  CLock& operator=(const CLock&) = delete;
  void Lock() { mutex_.lock(); }
  void Unlock() { mutex_.unlock(); }
  bool TryLock() { return mutex_.try_lock(); }

 private:
  std::recursive_mutex mutex_;
};

class AutoLock {
 public:
  explicit AutoLock(CLock& lock) : lock_(lock) { lock_.Lock(); }
  ~AutoLock() { lock_.Unlock(); }
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  CLock& lock_;
};

}  // namespace GenApi
