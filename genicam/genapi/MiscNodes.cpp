// Category, Register and configuration ROM key nodes.
#include "MiscNodes.h"

#include <cstdio>

namespace GenApi {
namespace impl {

// ---- Category ----

bool CategoryNode::ParseSpecific(const XmlElem& e) {
  if (e.id != Elem::pFeature) return false;
  AddRef(features_, e);
  return true;
}

void CategoryNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  for (Ref& r : features_) sink.Link(this, r, LinkClass::Reading, Elem::pFeature, kAnyKind);
}

EAccessMode CategoryNode::NaturalAccessMode() const {
  if (features_.empty()) return RO;
  CallGuard guard(this);
  for (const Ref& r : features_)
    if (r.node()->AccessModeLocked() != NI) return RO;
  return NI;
}

void CategoryNode::GetFeatures(FeatureList_t& features) const {
  AutoLock guard(map_->GetLock());
  features.clear();
  for (const Ref& r : features_)
    if (IValue* v = dynamic_cast<IValue*>(r.node())) features.push_back(v);
}

GenICam::gcstring CategoryNode::ToString(bool, bool) { return ""; }

void CategoryNode::FromString(const GenICam::gcstring&, bool) { ThrowNotWritable("FromString"); }

// ---- Register ----

bool RegisterNode::ParseSpecific(const XmlElem& e) {
  return ParseRegister(e) || e.id == Elem::Unit || e.id == Elem::Sign;
}

void RegisterNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  core_.CollectLinks(this, sink);
}

GenICam::gcstring RegisterNode::ToString(bool, bool ignoreCache) {
  AutoLock guard(map_->GetLock());
  CheckReadable("ToString");
  const std::vector<uint8_t> bytes = core_.Read(this, ignoreCache);
  std::string text = "0x";
  char hex[3];
  for (uint8_t b : bytes) {
    std::snprintf(hex, sizeof hex, "%02x", b);
    text += hex;
  }
  return text.c_str();
}

void RegisterNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  const std::string s(valueStr.c_str());
  auto bad = [&] {
    return INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
        "Node '%s' : cannot convert string '%s' to register bytes.", name_, s.c_str());
  };
  if (s.size() < 2 || s[0] != '0' || (s[1] != 'x' && s[1] != 'X') || s.size() % 2 != 0)
    throw bad();
  std::vector<uint8_t> bytes;
  for (size_t i = 2; i < s.size(); i += 2) {
    unsigned v = 0;
    for (size_t k = i; k < i + 2; ++k) {
      const char c = s[k];
      int d = -1;
      if (c >= '0' && c <= '9') d = c - '0';
      else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
      else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
      if (d < 0) throw bad();
      v = v * 16 + unsigned(d);
    }
    bytes.push_back(static_cast<uint8_t>(v));
  }
  const int64_t len = GetLength(false);
  if (bytes.size() > static_cast<size_t>(len)) throw bad();
  bytes.resize(static_cast<size_t>(len), 0);
  Set(bytes.data(), len, verify);
}

// ---- IEEE 1212 keys ----

namespace {
// Finds the first directory entry with the given key in a big-endian
// configuration ROM image; returns false when absent.
bool FindKey(const std::vector<uint8_t>& rom, int64_t key, uint32_t& value, size_t& offset) {
  const size_t quadlets = rom.size() / 4;
  for (size_t q = 0; q < quadlets; ++q) {
    const uint32_t word = (uint32_t(rom[4 * q]) << 24) | (uint32_t(rom[4 * q + 1]) << 16) |
                          (uint32_t(rom[4 * q + 2]) << 8) | uint32_t(rom[4 * q + 3]);
    if (word == 0) continue;
    if (static_cast<int64_t>(word >> 24) == key) {
      value = word & 0xffffff;
      offset = 4 * q;
      return true;
    }
  }
  return false;
}

RegisterNode* RomOf(const NodeImpl* owner, const Ref& parser) {
  auto* rom = dynamic_cast<RegisterNode*>(parser.node());
  if (!rom)
    throw RUNTIME_EXCEPTION_NODE(owner->Name(), "GetValue")(
        "Node '%s' : element 'p1212Parser' does not name a configuration ROM",
        owner->Name());
  return rom;
}
}  // namespace

bool IntKeyNode::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::p1212Parser: SetRef(parser_, e); return true;
    case Elem::Key: key_ = ParseInt(name_, e); return true;
    default: return IntegerBase::ParseSpecific(e);
  }
}

void IntKeyNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  sink.Link(this, parser_, LinkClass::Reading, Elem::p1212Parser, kConfRomKind);
}

int64_t IntKeyNode::GetInt(bool, bool ignoreCache) {
  CallGuard guard(this);
  uint32_t value = 0;
  size_t offset = 0;
  if (!FindKey(RomOf(this, parser_)->Image(ignoreCache), key_, value, offset)) return 0;
  return value;
}

EAccessMode IntKeyNode::NaturalAccessMode() const {
  return parser_.node() ? Combine(RO, parser_.node()->AccessModeLocked()) : NA;
}

bool TextDescNode::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::p1212Parser: SetRef(parser_, e); return true;
    case Elem::Key: key_ = ParseInt(name_, e); return true;
    default: return false;
  }
}

void TextDescNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  sink.Link(this, parser_, LinkClass::Reading, Elem::p1212Parser, kConfRomKind);
}

std::string TextDescNode::GetStr(bool, bool ignoreCache) {
  CallGuard guard(this);
  const std::vector<uint8_t> rom = RomOf(this, parser_)->Image(ignoreCache);
  uint32_t value = 0;
  size_t offset = 0;
  if (!FindKey(rom, key_, value, offset)) return std::string();
  // The key's value is a quadlet offset to a leaf: length, two header quadlets, then text.
  const size_t leaf = offset + 4 * static_cast<size_t>(value);
  if (leaf + 12 > rom.size()) return std::string();
  const size_t quadlets = (size_t(rom[leaf]) << 8) | rom[leaf + 1];
  std::string text;
  for (size_t i = leaf + 12; i < rom.size() && i < leaf + 4 + 4 * quadlets; ++i) {
    if (rom[i] == 0) break;
    text += static_cast<char>(rom[i]);
  }
  return text;
}

EAccessMode TextDescNode::NaturalAccessMode() const {
  return parser_.node() ? Combine(RO, parser_.node()->AccessModeLocked()) : NA;
}

}  // namespace impl
}  // namespace GenApi

