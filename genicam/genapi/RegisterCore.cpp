// RegisterCore: address arithmetic, port traffic and the byte cache.
#include "RegisterCore.h"

#include <cstring>

#include "NodeMap.h"
#include "PortNode.h"

namespace GenApi {
namespace impl {

namespace {
// Largest register a node may read or write in one go.
constexpr int64_t kMaxRegisterLength = 64 * 1024 * 1024;
}  // namespace

bool RegisterCore::Parse(const XmlElem& e, NodeImpl* owner, NameTable& names, Arena& arena) {
  const char* node = owner->Name();
  switch (e.id) {
    case Elem::Address: address += ParseInt(node, e); break;
    case Elem::pAddress: {
      Ref ref;
      ref.SetName(names.Intern(e.Text()));
      pAddresses.push_back(arena, ref);
      break;
    }
    case Elem::pIndex: {
      IndexTerm term{Ref(), Ref(), 0, false};
      term.pIndex.SetName(names.Intern(e.Text()));
      if (const char* off = e.Attr("Offset")) {
        term.offset = ParseInt(node, "Offset", off);
        term.hasOffset = true;
      }
      if (const char* poff = e.Attr("pOffset")) term.pOffset.SetName(names.Intern(poff));
      indexes.push_back(arena, term);
      break;
    }
    case Elem::Length:
      length = ParseInt(node, e);
      hasLength = true;
      break;
    case Elem::pLength: pLength.SetName(names.Intern(e.Text())); break;
    case Elem::AccessMode: accessMode = ParseAccessMode(e, RO); break;
    case Elem::pPort: pPort.SetName(names.Intern(e.Text())); break;
    case Elem::Cachable: cachable = ParseCachingMode(e); break;
    case Elem::Endianess:
      endianess = std::strcmp(e.text, "BigEndian") == 0 ? BigEndian : LittleEndian;
      break;
    default: return false;
  }
  return true;
}

void RegisterCore::CollectLinks(NodeImpl* owner, LinkSink& sink) {
  for (Ref& r : pAddresses)
    sink.Link(owner, r, LinkClass::Reading, Elem::pAddress, kIntegerLike | kEnumerationKind);
  for (IndexTerm& t : indexes) {
    sink.Link(owner, t.pIndex, LinkClass::Reading, Elem::pIndex, kIntegerLike);
    sink.Link(owner, t.pOffset, LinkClass::Reading, Elem::pOffset, kIntegerLike);
  }
  sink.Link(owner, pLength, LinkClass::Reading, Elem::pLength, kIntegerLike);
  sink.Link(owner, pPort, LinkClass::Reading, Elem::pPort, kPortKind);
}

int64_t RegisterCore::Length(const NodeImpl* owner, bool ignoreCache) {
  const int64_t len = pLength.node() ? ReadInt(owner, pLength.node(), ignoreCache) : length;
  if (len < 0 || len > kMaxRegisterLength)
    throw OUT_OF_RANGE_EXCEPTION_NODE(owner->Name(), "GetLength")(
        "Node '%s' : register length %lld is out of range", owner->Name(),
        static_cast<long long>(len));
  return len;
}

int64_t RegisterCore::Address(const NodeImpl* owner, bool ignoreCache) {
  uint64_t sum = static_cast<uint64_t>(address);
  for (Ref& r : pAddresses) sum += static_cast<uint64_t>(ReadInt(owner, r.node(), ignoreCache));
  for (IndexTerm& t : indexes) {
    const int64_t index = ReadInt(owner, t.pIndex.node(), ignoreCache);
    int64_t offset = 0;
    if (t.pOffset.node()) offset = ReadInt(owner, t.pOffset.node(), ignoreCache);
    else if (t.hasOffset) offset = t.offset;
    else offset = Length(owner, ignoreCache);
    sum += static_cast<uint64_t>(index) * static_cast<uint64_t>(offset);
  }
  return static_cast<int64_t>(sum);
}

EAccessMode RegisterCore::Mode() const {
  if (!pPort.node()) return NA;
  return Combine(accessMode, pPort.node()->AccessModeLocked());
}

namespace {
PortNode* PortOf(const NodeImpl* owner, const Ref& pPort) {
  PortNode* port = dynamic_cast<PortNode*>(pPort.node());
  if (!port)
    throw ACCESS_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : no port to reach the register", owner->Name());
  return port;
}
}  // namespace

std::vector<uint8_t> RegisterCore::Read(const NodeImpl* owner, bool ignoreCache) {
  const int64_t addr = Address(owner, ignoreCache);
  const int64_t len = Length(owner, ignoreCache);
  const auto key = std::make_pair(addr, len);
  const bool caching = owner->GetCachingMode() != NoCache;
  if (caching && !ignoreCache && cache_) {
    auto it = cache_->find(key);
    if (it != cache_->end()) return it->second;
  }
  std::vector<uint8_t> bytes(static_cast<size_t>(len), 0);
  PortOf(owner, pPort)->Read(bytes.data(), addr, len);
  if (caching) {
    if (!cache_) cache_.reset(new Cache);
    (*cache_)[key] = bytes;
  }
  return bytes;
}

void RegisterCore::Write(const NodeImpl* owner, const std::vector<uint8_t>& bytes) {
  const int64_t addr = Address(owner, false);
  const auto key = std::make_pair(addr, static_cast<int64_t>(bytes.size()));
  if (cache_) cache_->erase(key);
  PortOf(owner, pPort)->Write(bytes.data(), addr, static_cast<int64_t>(bytes.size()));
  if (owner->GetCachingMode() == WriteThrough) {
    if (!cache_) cache_.reset(new Cache);
    (*cache_)[key] = bytes;
  }
}

bool RegisterCore::CacheValid(const NodeImpl* owner) {
  if (owner->GetCachingMode() == NoCache) return false;
  try {
    if (!cache_) return false;
    return cache_->count(std::make_pair(Address(owner, false), Length(owner, false))) != 0;
  } catch (const GenICam::GenericException&) {
    return false;
  }
}

uint64_t BytesToUnsigned(const uint8_t* bytes, size_t length, EEndianess endianess) {
  uint64_t v = 0;
  for (size_t i = 0; i < length && i < 8; ++i) {
    const size_t k = endianess == BigEndian ? i : length - 1 - i;
    v = (v << 8) | bytes[k];
  }
  return v;
}

void UnsignedToBytes(uint64_t value, uint8_t* bytes, size_t length, EEndianess endianess) {
  for (size_t i = 0; i < length; ++i) {
    const uint8_t b = i < 8 ? static_cast<uint8_t>(value >> (8 * i)) : 0;
    if (endianess == BigEndian) bytes[length - 1 - i] = b;
    else bytes[i] = b;
  }
}

}  // namespace impl
}  // namespace GenApi
