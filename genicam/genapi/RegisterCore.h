// RegisterCore: address, length, port, access and the (address,length)-keyed
// byte cache that every register-backed node shares.
#pragma once

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "NameTable.h"
#include "Node.h"

namespace GenApi {
namespace impl {

class RegisterCore {
 public:
  struct IndexTerm {
    Ref pIndex;
    Ref pOffset;
    int64_t offset;
    bool hasOffset;
  };

  // Takes the register template elements; false for anything else.
  bool Parse(const XmlElem& e, NodeImpl* owner, NameTable& names, Arena& arena);
  void CollectLinks(NodeImpl* owner, LinkSink& sink);

  int64_t Address(const NodeImpl* owner, bool ignoreCache);
  int64_t Length(const NodeImpl* owner, bool ignoreCache);
  // Reads or writes the whole register through the cache.
  std::vector<uint8_t> Read(const NodeImpl* owner, bool ignoreCache);
  void Write(const NodeImpl* owner, const std::vector<uint8_t>& bytes);
  bool CacheValid(const NodeImpl* owner);
  void Clear() { cache_.reset(); }
  EAccessMode Mode() const;

  ECachingMode cachable = WriteThrough;
  EAccessMode accessMode = RO;
  EEndianess endianess = LittleEndian;
  bool hasLength = false;
  int64_t length = 4;
  Ref pLength;
  Ref pPort;
  int64_t address = 0;
  ArenaVec<Ref> pAddresses;
  ArenaVec<IndexTerm> indexes;

 private:
  // Register images by (address, length), made on the first read.
  using Cache = std::map<std::pair<int64_t, int64_t>, std::vector<uint8_t>>;
  std::unique_ptr<Cache> cache_;
};

// Byte conversions between register images and numbers.
uint64_t BytesToUnsigned(const uint8_t* bytes, size_t length, EEndianess endianess);
void UnsignedToBytes(uint64_t value, uint8_t* bytes, size_t length, EEndianess endianess);

}  // namespace impl
}  // namespace GenApi
