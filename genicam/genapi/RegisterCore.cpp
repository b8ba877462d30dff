// RegisterCore: address arithmetic, port traffic and the byte cache.
#include "RegisterCore.h"

#include "NodeMap.h"
#include "PortNode.h"

namespace GenApi {
namespace impl {

namespace {
// Largest register a node may read or write in one go.
constexpr int64_t kMaxRegisterLength = 64 * 1024 * 1024;
}  // namespace

bool RegisterCore::Parse(const XmlElem& e, const std::string& node) {
  const std::string& n = e.name;
  if (n == "Address") address += ParseInt(node, e);
  else if (n == "pAddress") pAddresses.push_back(Ref{e.text, nullptr});
  else if (n == "pIndex") {
    IndexTerm term;
    term.pIndex.name = e.text;
    if (const std::string* off = e.Attr("Offset")) {
      term.offset = ParseInt(node, XmlElem{"Offset", *off, {}});
      term.hasOffset = true;
    }
    if (const std::string* poff = e.Attr("pOffset")) term.pOffset.name = *poff;
    indexes.push_back(term);
  } else if (n == "Length") {
    length = ParseInt(node, e);
    hasLength = true;
  } else if (n == "pLength") pLength.name = e.text;
  else if (n == "AccessMode") accessMode = ParseAccessMode(e, RO);
  else if (n == "pPort") pPort.name = e.text;
  else if (n == "Cachable") cachable = ParseCachingMode(e);
  else if (n == "Endianess") endianess = (e.text == "BigEndian") ? BigEndian : LittleEndian;
  else return false;
  return true;
}

void RegisterCore::CollectLinks(NodeImpl* owner, LinkSink& sink) {
  for (Ref& r : pAddresses) sink.Link(owner, r, LinkClass::Reading, "pAddress");
  for (IndexTerm& t : indexes) {
    sink.Link(owner, t.pIndex, LinkClass::Reading, "pIndex");
    sink.Link(owner, t.pOffset, LinkClass::Reading, "pOffset");
  }
  sink.Link(owner, pLength, LinkClass::Reading, "pLength");
  sink.Link(owner, pPort, LinkClass::Reading, "pPort");
}

int64_t RegisterCore::Length(const NodeImpl* owner, bool ignoreCache) {
  const int64_t len = pLength.node ? ReadInt(owner, pLength.node, ignoreCache) : length;
  if (len < 0 || len > kMaxRegisterLength)
    throw OUT_OF_RANGE_EXCEPTION_NODE(owner->Name().c_str(), "GetLength")(
        "Node '%s' : register length %lld is out of range", owner->Name().c_str(),
        static_cast<long long>(len));
  return len;
}

int64_t RegisterCore::Address(const NodeImpl* owner, bool ignoreCache) {
  uint64_t sum = static_cast<uint64_t>(address);
  for (Ref& r : pAddresses) sum += static_cast<uint64_t>(ReadInt(owner, r.node, ignoreCache));
  for (IndexTerm& t : indexes) {
    const int64_t index = ReadInt(owner, t.pIndex.node, ignoreCache);
    int64_t offset = 0;
    if (t.pOffset.node) offset = ReadInt(owner, t.pOffset.node, ignoreCache);
    else if (t.hasOffset) offset = t.offset;
    else offset = Length(owner, ignoreCache);
    sum += static_cast<uint64_t>(index) * static_cast<uint64_t>(offset);
  }
  return static_cast<int64_t>(sum);
}

EAccessMode RegisterCore::Mode() const {
  if (!pPort.node) return NA;
  return Combine(accessMode, pPort.node->AccessModeLocked());
}

namespace {
PortNode* PortOf(const NodeImpl* owner, const Ref& pPort) {
  PortNode* port = dynamic_cast<PortNode*>(pPort.node);
  if (!port)
    throw ACCESS_EXCEPTION_NODE(owner->Name().c_str(), "GetValue")(
        "Node '%s' : no port to reach the register", owner->Name().c_str());
  return port;
}
}  // namespace

std::vector<uint8_t> RegisterCore::Read(const NodeImpl* owner, bool ignoreCache) {
  const int64_t addr = Address(owner, ignoreCache);
  const int64_t len = Length(owner, ignoreCache);
  const auto key = std::make_pair(addr, len);
  const bool caching = owner->GetCachingMode() != NoCache;
  if (caching && !ignoreCache) {
    auto it = cache_.find(key);
    if (it != cache_.end()) return it->second;
  }
  std::vector<uint8_t> bytes(static_cast<size_t>(len), 0);
  PortOf(owner, pPort)->Read(bytes.data(), addr, len);
  if (caching) cache_[key] = bytes;
  return bytes;
}

void RegisterCore::Write(const NodeImpl* owner, const std::vector<uint8_t>& bytes) {
  const int64_t addr = Address(owner, false);
  const auto key = std::make_pair(addr, static_cast<int64_t>(bytes.size()));
  cache_.erase(key);
  PortOf(owner, pPort)->Write(bytes.data(), addr, static_cast<int64_t>(bytes.size()));
  if (owner->GetCachingMode() == WriteThrough) cache_[key] = bytes;
}

bool RegisterCore::CacheValid(const NodeImpl* owner) {
  if (owner->GetCachingMode() == NoCache) return false;
  try {
    return cache_.count(std::make_pair(Address(owner, false), Length(owner, false))) != 0;
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
