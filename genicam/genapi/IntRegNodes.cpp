// IntReg and MaskedIntReg: integers stored in device registers.
#include "IntRegNodes.h"

#include <cstring>

namespace GenApi {
namespace impl {

namespace {
int64_t SignExtend(uint64_t raw, unsigned bits) {
  if (bits >= 64) return static_cast<int64_t>(raw);
  const uint64_t sign = 1ULL << (bits - 1);
  raw &= (sign << 1) - 1;
  return static_cast<int64_t>((raw ^ sign) - sign);
}
int64_t RangeMin(unsigned bits, bool isSigned) {
  if (!isSigned) return 0;
  return bits >= 64 ? INT64_MIN : -(int64_t(1) << (bits - 1));
}
int64_t RangeMax(unsigned bits, bool isSigned) {
  if (bits >= 64) return INT64_MAX;
  if (isSigned) return (int64_t(1) << (bits - 1)) - 1;
  return bits == 63 ? INT64_MAX : (int64_t(1) << bits) - 1;
}
}  // namespace

bool IntRegNode::ParseSpecific(const XmlElem& e) {
  if (ParseRegister(e)) return true;
  if (e.id == Elem::Sign) {
    signed_ = std::strcmp(e.text, "Signed") == 0;
    return true;
  }
  if (e.id == Elem::FeatureID || e.id == Elem::Timeout) return true;  // IIDC extras
  return IntegerBase::ParseSpecific(e);
}

void IntRegNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  core_.CollectLinks(this, sink);
}

size_t IntRegNode::CheckedLength() {
  const int64_t len = core_.Length(this, false);
  if (len < 1 || len > 8)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "GetValue")(
        "Node '%s' : integer register length %lld is not between 1 and 8", name_,
        static_cast<long long>(len));
  return static_cast<size_t>(len);
}

int64_t IntRegNode::GetInt(bool, bool ignoreCache) {
  const size_t len = CheckedLength();
  const std::vector<uint8_t> bytes = core_.Read(this, ignoreCache);
  const uint64_t raw = BytesToUnsigned(bytes.data(), len, core_.endianess);
  return signed_ ? SignExtend(raw, unsigned(8 * len)) : static_cast<int64_t>(raw);
}

void IntRegNode::SetInt(int64_t value, bool) {
  const size_t len = CheckedLength();
  std::vector<uint8_t> bytes(len);
  UnsignedToBytes(static_cast<uint64_t>(value), bytes.data(), len, core_.endianess);
  core_.Write(this, bytes);
}

int64_t IntRegNode::IntMin() { return RangeMin(unsigned(8 * CheckedLength()), signed_); }
int64_t IntRegNode::IntMax() { return RangeMax(unsigned(8 * CheckedLength()), signed_); }

bool MaskedIntRegNode::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::Bit: lsbText_ = msbText_ = ParseInt(name_, e); return true;
    case Elem::LSB: lsbText_ = ParseInt(name_, e); return true;
    case Elem::MSB: msbText_ = ParseInt(name_, e); return true;
    default: return IntRegNode::ParseSpecific(e);
  }
}

void MaskedIntRegNode::FinishLoad() {
  if (lsbText_ < 0 && msbText_ < 0)
    throw PROPERTY_EXCEPTION("Node '%s' : element 'Bit' or 'LSB'/'MSB' is missing",
                             name_);
  if (lsbText_ < 0) lsbText_ = msbText_;
  if (msbText_ < 0) msbText_ = lsbText_;
  if (lsbText_ > 63 || msbText_ > 63)
    throw PROPERTY_EXCEPTION("Node '%s' : element 'LSB'/'MSB' is beyond bit 63", name_);
}

void MaskedIntRegNode::Field(unsigned& lsb, unsigned& width) {
  const int64_t bits = 8 * static_cast<int64_t>(CheckedLength());
  int64_t l = lsbText_, m = msbText_;
  if (core_.endianess == BigEndian) {
    l = bits - 1 - l;
    m = bits - 1 - m;
  }
  if (m < l) std::swap(l, m);
  if (l < 0 || m >= bits)
    throw OUT_OF_RANGE_EXCEPTION_NODE(name_, "GetValue")(
        "Node '%s' : bit field lies outside the %lld-bit register", name_,
        static_cast<long long>(bits));
  lsb = static_cast<unsigned>(l);
  width = static_cast<unsigned>(m - l + 1);
}

int64_t MaskedIntRegNode::GetInt(bool, bool ignoreCache) {
  unsigned lsb = 0, width = 0;
  Field(lsb, width);
  const std::vector<uint8_t> bytes = core_.Read(this, ignoreCache);
  const uint64_t raw = BytesToUnsigned(bytes.data(), bytes.size(), core_.endianess) >> lsb;
  const uint64_t mask = width >= 64 ? ~0ULL : ((1ULL << width) - 1);
  return signed_ ? SignExtend(raw & mask, width) : static_cast<int64_t>(raw & mask);
}

void MaskedIntRegNode::SetInt(int64_t value, bool) {
  unsigned lsb = 0, width = 0;
  Field(lsb, width);
  const size_t len = CheckedLength();
  uint64_t raw = 0;
  if (IsReadable(core_.Mode())) {
    const std::vector<uint8_t> old = core_.Read(this, false);
    raw = BytesToUnsigned(old.data(), len, core_.endianess);
  }
  const uint64_t mask = (width >= 64 ? ~0ULL : ((1ULL << width) - 1)) << lsb;
  raw = (raw & ~mask) | ((static_cast<uint64_t>(value) << lsb) & mask);
  std::vector<uint8_t> bytes(len);
  UnsignedToBytes(raw, bytes.data(), len, core_.endianess);
  core_.Write(this, bytes);
}

int64_t MaskedIntRegNode::IntMin() {
  unsigned lsb = 0, width = 0;
  Field(lsb, width);
  return RangeMin(width, signed_);
}

int64_t MaskedIntRegNode::IntMax() {
  unsigned lsb = 0, width = 0;
  Field(lsb, width);
  return RangeMax(width, signed_);
}

}  // namespace impl
}  // namespace GenApi
