#include "features/TypedFeatures.h"

namespace vq {

// Reads never verify and never bypass the cache: the node's caching mode and
// any invalidation decide whether the camera is asked.
constexpr bool kVerify = false;
constexpr bool kIgnoreCache = false;

std::int32_t IntegerFeature::GetValue(double& value) {
  return Capture([&](GenApi::IInteger& integer) {
    value = static_cast<double>(integer.GetValue(kVerify, kIgnoreCache));
  });
}

std::int32_t FloatFeature::GetValue(double& value) {
  return Capture([&](GenApi::IFloat& number) { value = number.GetValue(kVerify, kIgnoreCache); });
}

std::int32_t BooleanFeature::GetValue(std::uint32_t& value) {
  return Capture([&](GenApi::IBoolean& boolean) {
    value = boolean.GetValue(kVerify, kIgnoreCache) ? 1u : 0u;
  });
}

std::int32_t StringFeature::GetValue(std::string& value) {
  return Capture([&](GenApi::IString& text) {
    const GenICam::gcstring read = text.GetValue(kVerify, kIgnoreCache);
    value.assign(read.c_str(), read.size());
  });
}

std::int32_t EnumerationFeature::GetValue(std::uint32_t& value) {
  return Capture([&](GenApi::IEnumeration& enumeration) {
    value = static_cast<std::uint32_t>(enumeration.GetIntValue(kVerify, kIgnoreCache));
  });
}

}  // namespace vq
