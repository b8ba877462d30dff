#include "vq/sim/RegisterSpace.h"

#include <algorithm>

#include "vq/gencp/Constants.h"

namespace vq::sim {

namespace {

bool readable(Access a) { return a != Access::WO; }
bool writable(Access a) { return a != Access::RO; }

Access combine(Access a, Access b) {
  const bool r = readable(a) || readable(b);
  const bool w = writable(a) || writable(b);
  if (r && w) return Access::RW;
  return w ? Access::WO : Access::RO;
}

// Overflow-safe end of a range; ranges reaching past 2^64 are clamped.
uint64_t rangeEnd(uint64_t address, uint64_t length) {
  return length > UINT64_MAX - address ? UINT64_MAX : address + length;
}

}  // namespace

void RegisterSpace::add(uint64_t address, uint64_t length, Access access) {
  if (length == 0) return;
  uint64_t begin = address;
  uint64_t end = rangeEnd(address, length);
  // Collect every block overlapping [begin, end) and widen the range to cover them.
  std::vector<RegisterBlock> merged;
  auto it = blocks_.upper_bound(begin);
  if (it != blocks_.begin()) --it;
  while (it != blocks_.end() && it->second.address < end) {
    if (it->second.end() > begin) {
      begin = std::min(begin, it->second.address);
      end = std::max(end, it->second.end());
      access = combine(access, it->second.access);
      merged.push_back(std::move(it->second));
      it = blocks_.erase(it);
    } else {
      ++it;
    }
  }
  RegisterBlock block;
  block.address = begin;
  block.access = access;
  block.data.assign(end - begin, 0);
  for (const auto& old : merged) {
    std::copy(old.data.begin(), old.data.end(), block.data.begin() + (old.address - begin));
  }
  blocks_[begin] = std::move(block);
}

template <typename Visit>
bool RegisterSpace::walkConst(uint64_t address, uint64_t length, Visit visit) const {
  if (length == 0) return true;
  if (length > UINT64_MAX - address) return false;
  uint64_t cursor = address;
  const uint64_t end = address + length;
  auto it = blocks_.upper_bound(cursor);
  if (it == blocks_.begin()) return false;
  --it;
  while (cursor < end) {
    if (it == blocks_.end() || it->second.address > cursor || it->second.end() <= cursor)
      return false;
    const RegisterBlock& block = it->second;
    const uint64_t count = std::min(end, block.end()) - cursor;
    visit(block, cursor - block.address, cursor - address, count);
    cursor += count;
    ++it;
  }
  return true;
}

bool RegisterSpace::covers(uint64_t address, uint64_t length) const {
  return walkConst(address, length, [](const RegisterBlock&, uint64_t, uint64_t, uint64_t) {});
}

bool RegisterSpace::overlaps(uint64_t address, uint64_t length) const {
  if (length == 0) return false;
  const uint64_t end = rangeEnd(address, length);
  auto it = blocks_.upper_bound(address);
  if (it != blocks_.begin()) {
    auto prev = std::prev(it);
    if (prev->second.end() > address) return true;
  }
  return it != blocks_.end() && it->second.address < end;
}

bool RegisterSpace::peek(uint64_t address, uint64_t length, std::vector<uint8_t>& out) const {
  if (!covers(address, length)) return false;
  out.assign(length, 0);
  walkConst(address, length,
            [&out](const RegisterBlock& b, uint64_t from, uint64_t to, uint64_t n) {
              std::copy_n(b.data.begin() + from, n, out.begin() + to);
            });
  return true;
}

bool RegisterSpace::poke(uint64_t address, const std::vector<uint8_t>& data) {
  if (!covers(address, data.size())) return false;
  uint64_t cursor = address;
  std::size_t done = 0;
  while (done < data.size()) {
    auto it = std::prev(blocks_.upper_bound(cursor));
    RegisterBlock& block = it->second;
    const std::size_t offset = cursor - block.address;
    const std::size_t count = std::min(data.size() - done, block.data.size() - offset);
    std::copy_n(data.begin() + done, count, block.data.begin() + offset);
    done += count;
    cursor += count;
  }
  return true;
}

uint16_t RegisterSpace::read(uint64_t address, uint64_t length, std::vector<uint8_t>& out) const {
  bool allowed = true;
  if (!walkConst(address, length, [&allowed](const RegisterBlock& b, uint64_t, uint64_t, uint64_t) {
        allowed = allowed && readable(b.access);
      })) {
    return gencp::kStatusInvalidAddress;
  }
  if (!allowed) return gencp::kStatusAccessDenied;
  peek(address, length, out);
  return gencp::kStatusSuccess;
}

uint16_t RegisterSpace::write(uint64_t address, const std::vector<uint8_t>& data) {
  bool allowed = true;
  if (!walkConst(address, data.size(),
                 [&allowed](const RegisterBlock& b, uint64_t, uint64_t, uint64_t) {
                   allowed = allowed && writable(b.access);
                 })) {
    return gencp::kStatusInvalidAddress;
  }
  if (!allowed) return gencp::kStatusWriteProtect;
  poke(address, data);
  return gencp::kStatusSuccess;
}

void RegisterSpace::restoreFrom(const RegisterSpace& other) {
  for (auto& [address, block] : blocks_) {
    std::vector<uint8_t> bytes;
    if (other.peek(address, block.data.size(), bytes)) block.data = std::move(bytes);
  }
}

}  // namespace vq::sim
