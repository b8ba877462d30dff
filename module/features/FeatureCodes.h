// The 32-bit codes by which the module describes a feature's type, access mode
// and visibility.
#pragma once

#include <cstdint>

namespace vq {

enum FeatureType : std::uint32_t {
  FEATURE_TYPE_NONE = 0,         // category, port, enumeration entry, or no node
  FEATURE_TYPE_INTEGER = 1,      // value read as an 8-byte double
  FEATURE_TYPE_FLOAT = 4,        // value read as an 8-byte double
  FEATURE_TYPE_BOOLEAN = 5,      // also commands; value read as 4-byte 0/1
  FEATURE_TYPE_ENUMERATION = 6,  // value read as the low 32 bits of the entry value
  FEATURE_TYPE_STRING = 7,       // value read as text
  FEATURE_TYPE_REGISTER = 8,     // not readable as a value
};

enum FeatureAccess : std::uint32_t {
  FEATURE_ACCESS_OTHER = 0,
  FEATURE_ACCESS_RW = 1,
  FEATURE_ACCESS_RO = 2,
  FEATURE_ACCESS_WO = 3,
  FEATURE_ACCESS_NI = 4,
  FEATURE_ACCESS_NA = 5,
};

enum FeatureVisibility : std::uint32_t {
  FEATURE_VISIBILITY_BEGINNER = 1,
  FEATURE_VISIBILITY_EXPERT = 2,
  FEATURE_VISIBILITY_GURU = 3,
  FEATURE_VISIBILITY_INVISIBLE = 4,  // also any undefined visibility
};

}  // namespace vq
