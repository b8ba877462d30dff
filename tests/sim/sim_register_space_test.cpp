// Address space: merging, spanning reads and writes, and the status of every refusal.
#include <gtest/gtest.h>

#include "vq/gencp/Constants.h"
#include "vq/sim/RegisterSpace.h"

using namespace vq::sim;
using namespace vq::gencp;

TEST(SimRegisterSpace, AccessStatusTable) {
  RegisterSpace space;
  space.add(0x100, 4, Access::RW);
  space.add(0x104, 4, Access::RO);
  space.add(0x108, 4, Access::WO);
  std::vector<uint8_t> out;
  struct Case {
    const char* name;
    uint64_t address;
    uint64_t length;
    uint16_t readStatus;
    uint16_t writeStatus;
  };
  const Case cases[] = {
      {"ReadWrite", 0x100, 4, kStatusSuccess, kStatusSuccess},
      {"ReadOnly", 0x104, 4, kStatusSuccess, kStatusWriteProtect},
      {"WriteOnly", 0x108, 4, kStatusAccessDenied, kStatusSuccess},
      {"SpanRwRo", 0x102, 4, kStatusSuccess, kStatusWriteProtect},
      {"BeforeFirst", 0xFC, 4, kStatusInvalidAddress, kStatusInvalidAddress},
      {"PastLast", 0x10A, 4, kStatusInvalidAddress, kStatusInvalidAddress},
      {"Gap", 0x200, 1, kStatusInvalidAddress, kStatusInvalidAddress},
      {"WrapsAround", UINT64_MAX - 1, 4, kStatusInvalidAddress, kStatusInvalidAddress},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(space.read(c.address, c.length, out), c.readStatus) << c.name;
    EXPECT_EQ(space.write(c.address, std::vector<uint8_t>(c.length, 0x11)), c.writeStatus)
        << c.name;
  }
}

TEST(SimRegisterSpace, ReadsSpanAdjacentBlocksInOrder) {
  RegisterSpace space;
  space.add(0x10, 2, Access::RW);
  space.add(0x12, 2, Access::RW);
  ASSERT_EQ(space.write(0x11, {1, 2, 3}), kStatusSuccess);
  std::vector<uint8_t> out;
  ASSERT_EQ(space.read(0x10, 4, out), kStatusSuccess);
  EXPECT_EQ(out, (std::vector<uint8_t>{0, 1, 2, 3}));
}

TEST(SimRegisterSpace, OverlappingBlocksMergeAndKeepData) {
  RegisterSpace space;
  space.add(0x20, 4, Access::RO);
  space.poke(0x20, {9, 9, 9, 9});
  space.add(0x22, 4, Access::RW);  // overlaps the end of the first
  ASSERT_EQ(space.blocks().size(), 1u);
  const auto& block = space.blocks().begin()->second;
  EXPECT_EQ(block.address, 0x20u);
  EXPECT_EQ(block.data.size(), 6u);
  EXPECT_EQ(block.access, Access::RW);
  std::vector<uint8_t> out;
  ASSERT_TRUE(space.peek(0x20, 6, out));
  EXPECT_EQ(out, (std::vector<uint8_t>{9, 9, 9, 9, 0, 0}));
  // A block bridging two others merges all three.
  space.add(0x40, 2, Access::RO);
  space.add(0x25, 0x1C, Access::RO);
  EXPECT_EQ(space.blocks().size(), 1u);
  space.add(0x80, 0, Access::RW);
  EXPECT_EQ(space.blocks().size(), 1u);
}

TEST(SimRegisterSpace, RestoreCopiesMatchingBlocks) {
  RegisterSpace a;
  a.add(0, 4, Access::RW);
  a.poke(0, {1, 2, 3, 4});
  RegisterSpace b = a;
  a.poke(0, {5, 5, 5, 5});
  a.restoreFrom(b);
  std::vector<uint8_t> out;
  a.peek(0, 4, out);
  EXPECT_EQ(out, (std::vector<uint8_t>{1, 2, 3, 4}));
}
