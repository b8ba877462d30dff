// Enumeration features.
#pragma once

#include <GenApi/IEnumEntry.h>

namespace GenApi {

typedef GenICam::gcstring_vector StringList_t;

struct GENAPI_DECL IEnumeration : virtual public IValue {
  virtual void GetSymbolics(StringList_t& Symbolics) = 0;
  virtual void GetEntries(NodeList_t& Entries) = 0;
  virtual void SetIntValue(int64_t Value, bool Verify = true) = 0;
  virtual int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) = 0;
  virtual IEnumEntry* GetEntryByName(const GenICam::gcstring& Symbolic) = 0;
  virtual IEnumEntry* GetEntry(const int64_t IntValue) = 0;
  virtual IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) = 0;

  IEnumeration& operator=(const GenICam::gcstring& ValueStr) {
    FromString(ValueStr);
    return *this;
  }
  GenICam::gcstring operator*() { return ToString(); }
  GenICam::gcstring operator()() { return ToString(); }
  ~IEnumeration() override;
};

}  // namespace GenApi
