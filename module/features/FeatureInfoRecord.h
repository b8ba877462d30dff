// Everything the host can ask about one feature, gathered per request by the
// camera's GetFeatureInfo.
#pragma once

#include <cstdint>
#include <vector>

namespace vq {

// Size of the record's texts: at most 511 characters and the terminator.
constexpr std::uint32_t kFeatureTextSize = 512;

// One choice of a list feature.
struct ListEntry {
  std::uint32_t value = 0;             // the integer this choice stands for
  char name[kFeatureTextSize] = {};    // display name, NUL-terminated
};

struct FeatureInfoRecord {
  char DisplayName[kFeatureTextSize] = {};
  std::uint32_t CategoryIndex = 0;  // into the camera's category table
  std::uint32_t index = 0;          // the flat index asked for
  char ValueText[kFeatureTextSize] = {};
  float Minimum = 0;
  float Maximum = 0;
  float Increment = 0;
  std::vector<ListEntry> EntryList;  // owned by the record
  std::int32_t EntryCount = 0;
  std::uint32_t Writable = 0;
  std::uint32_t Reserved9 = 0;
  std::uint32_t ValueKind = 0;   // ValueKind of the host interface
  std::uint32_t Identifier = 0;  // index | PARAMETER_IDENTIFIER_BIT
  std::uint32_t Decimals = 0;
};

}  // namespace vq
