// The simulated camera's address space: blocks of bytes with an access mode. Reads and
// writes may span adjacent blocks; any uncovered byte makes the access an invalid
// address, any byte without the needed right makes it write protect / access denied.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace vq::sim {

enum class Access { RO, WO, RW };

struct RegisterBlock {
  uint64_t address = 0;
  Access access = Access::RO;
  std::vector<uint8_t> data;

  uint64_t end() const { return address + data.size(); }
};

class RegisterSpace {
 public:
  // Adds a zero-filled block. Blocks overlapping existing ones are merged into one block
  // (existing bytes are kept); the merged block is writable if any part was, readable if
  // any part was. Zero-length blocks are ignored.
  void add(uint64_t address, uint64_t length, Access access);

  // Access-checked operations returning a GenCP status code.
  uint16_t read(uint64_t address, uint64_t length, std::vector<uint8_t>& out) const;
  uint16_t write(uint64_t address, const std::vector<uint8_t>& data);

  // Unchecked access for the device itself; false when a byte is not covered.
  bool peek(uint64_t address, uint64_t length, std::vector<uint8_t>& out) const;
  bool poke(uint64_t address, const std::vector<uint8_t>& data);

  bool covers(uint64_t address, uint64_t length) const;
  // True when some block overlaps [address, address + length).
  bool overlaps(uint64_t address, uint64_t length) const;

  const std::map<uint64_t, RegisterBlock>& blocks() const { return blocks_; }
  // Replaces every block's bytes with the ones in `other` where both have the block.
  void restoreFrom(const RegisterSpace& other);

 private:
  // Visits the blocks covering [address, address + length) in order; false when a gap is
  // met. `visit(block, offsetInBlock, offsetInRange, count)`.
  template <typename Visit>
  bool walkConst(uint64_t address, uint64_t length, Visit visit) const;

  std::map<uint64_t, RegisterBlock> blocks_;  // keyed by start address, never overlapping
};

}  // namespace vq::sim
