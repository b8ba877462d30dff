// The serial baud rate: the fastest rate the frame grabber and the camera
// share, the camera's current rate, and switching it. Rates travel as Camera
// Link baud-rate bits; the camera names them as entries of its enumeration
// "DeviceSerialPortBaudRate".
#include <strings.h>

#include "camera/GenericCamera.h"
#include "features/FeatureInfoRecord.h"
#include "features/TypedFeatures.h"

namespace vq {

namespace {

constexpr const char* kBaudRateFeature = "DeviceSerialPortBaudRate";

struct BaudRateName {
  std::uint32_t bit;
  const char* name;  // compared ignoring letter case
};

constexpr BaudRateName kBaudRateNames[] = {
    {1, "Baud9600"},     {2, "Baud19200"},   {4, "Baud38400"},   {8, "Baud57600"},
    {16, "Baud115200"},  {32, "Baud230400"}, {64, "Baud460800"}, {128, "Baud921600"},
};

// The bit of an entry name, 0 for a name outside the table.
std::uint32_t BaudRateBit(const char* name) {
  for (const BaudRateName& row : kBaudRateNames) {
    if (strcasecmp(row.name, name) == 0) return row.bit;
  }
  return 0;
}

}  // namespace

// Binds the baud-rate enumeration: 1 with its entry count when the camera has it.
std::int32_t GenericCamera::FindBaudRateFeature(GenericFeature& feature,
                                                EnumerationFeature& enumeration,
                                                std::uint32_t& count) const {
  if (!featureTree_ || !featureTree_->GetFeatureByName(kBaudRateFeature, feature)) return 0;
  if (!feature.AsEnumeration(enumeration)) return 0;
  return enumeration.GetEntryCount(count) && count != 0 ? 1 : 0;
}

std::uint32_t GenericCamera::GetMaxCommonBaudRate() {
  if (!featureTree_) return 1;
  // Without a port there is no frame grabber to ask; 9600 is always shared.
  if (!port_) return 1;
  CLUINT32 mask = 0;
  if (static_cast<ISerial*>(port_.get())->clGetSupportedBaudRates(&mask) != 0) return 1;
  GenericFeature feature;
  EnumerationFeature enumeration;
  std::uint32_t count = 0;
  if (!FindBaudRateFeature(feature, enumeration, count)) return 1;
  std::uint32_t best = 1;
  for (std::uint32_t position = 0; position < count; ++position) {
    char name[kFeatureTextSize];
    if (!enumeration.GetEntrySymbolic(position, name, sizeof name)) continue;
    const std::uint32_t bit = BaudRateBit(name);
    if (bit > best && (mask & bit) != 0) best = bit;
  }
  return best;
}

std::uint32_t GenericCamera::GetCurrentBaudRate() {
  GenericFeature feature;
  if (!featureTree_ || !featureTree_->GetFeatureByName(kBaudRateFeature, feature)) return 1;
  std::uint32_t value = 0;
  if (!feature.GetValue(&value, sizeof value)) return 1;
  EnumerationFeature enumeration;
  char name[kFeatureTextSize];
  if (!feature.AsEnumeration(enumeration) ||
      !enumeration.GetSymbolicOfValue(value, name, sizeof name)) {
    return 1;
  }
  return BaudRateBit(name);
}

std::int32_t GenericCamera::SetBaudRate(std::uint32_t baudRateBit) {
  GenericFeature feature;
  EnumerationFeature enumeration;
  std::uint32_t count = 0;
  if (!FindBaudRateFeature(feature, enumeration, count)) return 0;
  // The first entry whose bit is the one asked for; names outside the table
  // count as bit 0.
  for (std::uint32_t position = 0; position < count; ++position) {
    char name[kFeatureTextSize];
    if (!enumeration.GetEntrySymbolic(position, name, sizeof name)) continue;
    if (BaudRateBit(name) != baudRateBit) continue;
    std::uint32_t value = 0;
    if (!enumeration.GetEntryValue(position, value)) return 0;
    return feature.SetValue(&value, sizeof value);
  }
  return 0;
}

}  // namespace vq
