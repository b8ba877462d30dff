// Initial register values: one `<address> <type> <value>` per line, '#' comments.
// Types: u8 u16 u32 u64 i8 i16 i32 i64 f32 f64 (big-endian), str (text, rest of the
// line), hex (raw bytes, spaces allowed).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vq::sim {

struct InitialValue {
  uint64_t address = 0;
  std::vector<uint8_t> bytes;
};

// Throws ProfileError naming the line for malformed input.
std::vector<InitialValue> parseValues(const std::string& text);

}  // namespace vq::sim
