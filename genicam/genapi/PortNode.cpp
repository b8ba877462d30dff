// Port node: forwards register traffic to the IPort the map was connected to.
#include "PortNode.h"

#include <algorithm>
#include <vector>

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool PortNode::ParseSpecific(const XmlElem& e) {
  switch (e.id) {
    case Elem::SwapEndianess: swapEndianess_ = ParseYesNo(e); return true;
    case Elem::pChunkID: SetRef(pChunkID_, e); return true;
    case Elem::ChunkID: case Elem::CacheChunkData: return true;
    default: return false;
  }
}

void PortNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  sink.Link(this, pChunkID_, LinkClass::Reading, Elem::pChunkID, kPolyInteger);
}

EAccessMode PortNode::NaturalAccessMode() const {
  if (!port_) return NA;
  const EAccessMode mode = port_->GetAccessMode();
  return mode == _UndefinedAccesMode || mode == _CycleDetectAccesMode ? RW : mode;
}

void PortNode::CheckBuffer(const void* buffer, int64_t length, const char* method) const {
  if (!port_)
    throw ACCESS_EXCEPTION_NODE(name_, method)("Port '%s' is not connected",
                                                       name_);
  if (length < 0 || (length > 0 && !buffer))
    throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, method)(
        "Invalid buffer or length %lld", static_cast<long long>(length));
}

namespace {
// Byte-swaps each 32-bit word (the port's SwapEndianess option).
void SwapWords(uint8_t* data, int64_t length) {
  for (int64_t i = 0; i + 4 <= length; i += 4) {
    std::swap(data[i], data[i + 3]);
    std::swap(data[i + 1], data[i + 2]);
  }
}
}  // namespace

void PortNode::Read(void* pBuffer, int64_t Address, int64_t Length) {
  AutoLock guard(map_->GetLock());
  CheckBuffer(pBuffer, Length, "Read");
  port_->Read(pBuffer, Address, Length);
  if (swapEndianess_) SwapWords(static_cast<uint8_t*>(pBuffer), Length);
}

void PortNode::Write(const void* pBuffer, int64_t Address, int64_t Length) {
  AutoLock guard(map_->GetLock());
  CheckBuffer(pBuffer, Length, "Write");
  if (!swapEndianess_) {
    port_->Write(pBuffer, Address, Length);
    return;
  }
  std::vector<uint8_t> copy(static_cast<const uint8_t*>(pBuffer),
                            static_cast<const uint8_t*>(pBuffer) + Length);
  SwapWords(copy.data(), Length);
  port_->Write(copy.data(), Address, Length);
}

}  // namespace impl
}  // namespace GenApi
