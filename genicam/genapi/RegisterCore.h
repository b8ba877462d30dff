// RegisterCore: address, length, port, access and the (address,length)-keyed
// byte cache that every register-backed node shares.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include "Node.h"

namespace GenApi {
namespace impl {

class RegisterCore {
 public:
  struct IndexTerm {
    Ref pIndex;
    bool hasOffset = false;
    int64_t offset = 0;
    Ref pOffset;
  };

  // Takes the register template elements; false for anything else.
  bool Parse(const XmlElem& e, const std::string& node);
  void CollectLinks(NodeImpl* owner, LinkSink& sink);

  int64_t Address(const NodeImpl* owner, bool ignoreCache);
  int64_t Length(const NodeImpl* owner, bool ignoreCache);
  // Reads or writes the whole register through the cache.
  std::vector<uint8_t> Read(const NodeImpl* owner, bool ignoreCache);
  void Write(const NodeImpl* owner, const std::vector<uint8_t>& bytes);
  bool CacheValid(const NodeImpl* owner);
  void Clear() { cache_.clear(); }
  EAccessMode Mode() const;

  ECachingMode cachable = WriteThrough;
  EAccessMode accessMode = RO;
  EEndianess endianess = LittleEndian;
  bool hasLength = false;
  int64_t length = 4;
  Ref pLength;
  Ref pPort;
  int64_t address = 0;
  std::vector<Ref> pAddresses;
  std::vector<IndexTerm> indexes;

 private:
  std::map<std::pair<int64_t, int64_t>, std::vector<uint8_t>> cache_;
};

// Byte conversions between register images and numbers.
uint64_t BytesToUnsigned(const uint8_t* bytes, size_t length, EEndianess endianess);
void UnsignedToBytes(uint64_t value, uint8_t* bytes, size_t length, EEndianess endianess);

}  // namespace impl
}  // namespace GenApi
