// CPointer: a checked smart pointer that casts to the wanted interface, plus
// the access-mode helpers.
#pragma once

#include <GenApi/ICategory.h>
#include <GenApi/ICommand.h>
#include <GenApi/IBoolean.h>
#include <GenApi/IDeviceInfo.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>
#include <GenApi/INodeMap.h>
#include <GenApi/IPort.h>
#include <GenApi/IRegister.h>
#include <GenApi/ISelector.h>
#include <GenApi/IString.h>

namespace GenApi {

template <class T, class B = IBase>
class CPointer {
 public:
  CPointer() : m_pT(nullptr) {}
  CPointer(B* pB) : m_pT(pB ? dynamic_cast<T*>(pB) : nullptr) {}  // NOLINT: implicit by design
  template <class T2, class B2>
  CPointer(const CPointer<T2, B2>& other)  // NOLINT
      : m_pT(other.IsValid() ? dynamic_cast<T*>(static_cast<T2*>(other)) : nullptr) {}
  CPointer(const CPointer&) = default;
  CPointer& operator=(const CPointer&) = default;
  virtual ~CPointer() = default;

  CPointer& operator=(B* pB) {
    m_pT = pB ? dynamic_cast<T*>(pB) : nullptr;
    return *this;
  }

  operator T*() const {
    if (!m_pT) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
    return m_pT;
  }
  T& operator*() const {
    if (!m_pT) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
    return *m_pT;
  }
  T& operator()() const { return **this; }
  T* operator->() const {
    if (!m_pT) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
    return m_pT;
  }
  bool IsValid() const { return m_pT != nullptr; }
  operator bool() const { return m_pT != nullptr; }
  bool operator==(const CPointer<T, B>& other) const { return m_pT == other.m_pT; }
  bool operator!=(const CPointer<T, B>& other) const { return m_pT != other.m_pT; }
  bool operator==(int nMustBeNull) const {
    if (nMustBeNull != 0) throw LOGICAL_ERROR_EXCEPTION("argument must be NULL");
    return m_pT == nullptr;
  }
  bool operator!=(int nMustBeNull) const { return !(*this == nMustBeNull); }
  void Release() { m_pT = nullptr; }

 protected:
  T* m_pT;
};

typedef CPointer<IBase> CBasePtr;
typedef CPointer<INode> CNodePtr;
typedef CPointer<IValue> CValuePtr;
typedef CPointer<ICategory> CCategoryPtr;
typedef CPointer<IBoolean> CBooleanPtr;
typedef CPointer<IInteger> CIntegerPtr;
typedef CPointer<IString> CStringPtr;
typedef CPointer<IRegister> CRegisterPtr;
typedef CPointer<IEnumeration> CEnumerationPtr;
typedef CPointer<IEnumEntry> CEnumEntryPtr;
typedef CPointer<IPort> CPortPtr;
typedef CPointer<ICommand> CCommandPtr;
typedef CPointer<ISelector> CSelectorPtr;
typedef CPointer<INodeMap, INodeMap> CNodeMapPtr;
typedef CPointer<IDeviceInfo, INodeMap> CDeviceInfoPtr;

class CFloatPtr : public CPointer<IFloat, IBase> {
 public:
  CFloatPtr() = default;
  CFloatPtr(IBase* pB) : CPointer<IFloat, IBase>(pB) {}  // NOLINT
  CFloatPtr& operator=(IBase* pB) {
    CPointer<IFloat, IBase>::operator=(pB);
    return *this;
  }
  // Integer view of the float value, rounded to the nearest integer.
  int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) const {
    const double v = (*this)->GetValue(Verify, IgnoreCache);
    return static_cast<int64_t>(v < 0 ? v - 0.5 : v + 0.5);
  }
};

// Access helpers on modes.
inline bool IsReadable(EAccessMode AccessMode) { return AccessMode == RO || AccessMode == RW; }
inline bool IsWritable(EAccessMode AccessMode) { return AccessMode == WO || AccessMode == RW; }
inline bool IsImplemented(EAccessMode AccessMode) { return AccessMode != NI; }
inline bool IsAvailable(EAccessMode AccessMode) { return !(AccessMode == NA || AccessMode == NI); }

// Access helpers on nodes; a null pointer is neither readable nor writable.
inline bool IsReadable(const IBase* p) { return p && IsReadable(p->GetAccessMode()); }
inline bool IsWritable(const IBase* p) { return p && IsWritable(p->GetAccessMode()); }
inline bool IsImplemented(const IBase* p) { return p && IsImplemented(p->GetAccessMode()); }
inline bool IsAvailable(const IBase* p) { return p && IsAvailable(p->GetAccessMode()); }

template <class T, class B>
bool IsReadable(const CPointer<T, B>& p) {
  return p.IsValid() && IsReadable(static_cast<IBase*>(static_cast<T*>(p)));
}
template <class T, class B>
bool IsWritable(const CPointer<T, B>& p) {
  return p.IsValid() && IsWritable(static_cast<IBase*>(static_cast<T*>(p)));
}
template <class T, class B>
bool IsImplemented(const CPointer<T, B>& p) {
  return p.IsValid() && IsImplemented(static_cast<IBase*>(static_cast<T*>(p)));
}
template <class T, class B>
bool IsAvailable(const CPointer<T, B>& p) {
  return p.IsValid() && IsAvailable(static_cast<IBase*>(static_cast<T*>(p)));
}

}  // namespace GenApi
