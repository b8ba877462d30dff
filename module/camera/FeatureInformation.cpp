// A feature's record for the host (name, category, value text, limits,
// choices, writability, editor kind), filtered by the visibility level, and
// the parameter texts behind the host's command 49.
#include "camera/CameraMessages.h"
#include "camera/GenericCamera.h"
#include "features/BoundedText.h"
#include "features/FeatureCodes.h"
#include "features/FeatureInfoRecord.h"
#include "features/NumberConversion.h"
#include "features/TypedFeatures.h"

namespace vq {

namespace {

// Style codes of the parameter texts.
constexpr std::uint32_t kStyleName = 2;
constexpr std::uint32_t kStyleDescription = 0;

void FillNumberRecord(GenericFeature& feature, std::uint32_t type, std::uint32_t readValue,
                      FeatureInfoRecord& record) {
  feature.GetInc(&record.Increment, sizeof record.Increment);
  feature.GetMax(&record.Maximum, sizeof record.Maximum);
  feature.GetMin(&record.Minimum, sizeof record.Minimum);
  if (readValue != 1) return;
  double value = 0;
  if (!feature.GetValue(&value, sizeof value)) return;
  if (type == FEATURE_TYPE_INTEGER) {
    // The low 32 bits of the integer, as a signed number.
    const auto low = static_cast<std::uint32_t>(TruncateToInt64(value));
    FormatText(record.ValueText, sizeof record.ValueText, "%d", static_cast<std::int32_t>(low));
  } else {
    FormatText(record.ValueText, sizeof record.ValueText, "%.3f", value);
  }
}

void FillBooleanRecord(GenericFeature& feature, std::uint32_t readValue,
                       FeatureInfoRecord& record) {
  record.ValueKind = VALUE_KIND_LIST;
  ListEntry on;
  on.value = 1;
  CopyText(on.name, sizeof on.name, "True");
  ListEntry off;
  off.value = 0;
  CopyText(off.name, sizeof off.name, "False");
  record.EntryList = {on, off};
  record.EntryCount = 2;
  std::uint32_t value = 0;
  if (readValue == 1 && feature.GetValue(&value, sizeof value)) {
    CopyText(record.ValueText, sizeof record.ValueText, value == 1 ? "1" : "0");
  }
}

void FillEnumerationRecord(GenericFeature& feature, std::uint32_t readValue,
                           FeatureInfoRecord& record) {
  record.ValueKind = VALUE_KIND_LIST;
  EnumerationFeature enumeration;
  if (!feature.AsEnumeration(enumeration)) return;
  std::uint32_t value = 0;
  if (readValue == 1 && feature.GetValue(&value, sizeof value)) {
    FormatText(record.ValueText, sizeof record.ValueText, "%d", static_cast<std::int32_t>(value));
  }
  std::uint32_t count = 0;
  if (!enumeration.GetEntryCount(count)) return;
  // Unavailable entries are left out; the rest keep the enumeration's order.
  for (std::uint32_t position = 0; position < count; ++position) {
    std::uint32_t available = 0;
    if (!enumeration.IsEntryAvailable(position, available) || available == 0) continue;
    ListEntry entry;
    enumeration.GetEntryValue(position, entry.value);
    enumeration.GetDisplayNameOfValue(entry.value, entry.name, sizeof entry.name);
    record.EntryList.push_back(entry);
    ++record.EntryCount;
  }
}

}  // namespace

const char* GenericCamera::TopLevelCategoryName(const std::vector<GenICam::gcstring>& path) {
  // A feature listed directly under the root has no category of its own: its
  // record files it under the root's display name (the table grows by that
  // entry when first asked), so that every category index names a real entry.
  if (path.size() >= 2) return path[1].c_str();
  return path.empty() ? "" : path[0].c_str();
}

std::int32_t GenericCamera::GetFeatureInfo(std::uint32_t index, FeatureInfoRecord& record,
                                           std::uint32_t readValue) {
  if (!featureTree_) return 0;
  std::uint32_t count = 0;
  featureTree_->GetFeatureCount(count);
  if (static_cast<std::int32_t>(index) >= static_cast<std::int32_t>(count)) return 0;
  record = FeatureInfoRecord();

  GenericFeature feature;
  if (!featureTree_->GetFeatureByIndex(index, feature)) {
    ReportIndexFailure(kFeatureLookupFailed, index);
    return 0;
  }
  std::vector<GenICam::gcstring> path;
  if (!featureTree_->GetFeatureCategory(index, path)) {
    ReportIndexFailure(kCategoryLookupFailed, index);
    return 0;
  }
  std::uint32_t access = 0;
  std::uint32_t type = 0;
  std::uint32_t visibility = 0;
  feature.GetDisplayName(record.DisplayName, sizeof record.DisplayName);
  feature.GetAccessMode(access);
  feature.GetType(type);
  feature.GetDecimals(record.Decimals);
  feature.GetVisibility(visibility);
  if (visibility > visibilityLevel_) return 0;  // hidden at this level

  record.Reserved9 = 0;
  record.ValueKind = VALUE_KIND_NUMBER;
  record.CategoryIndex = static_cast<std::uint32_t>(FindOrAddCategory(TopLevelCategoryName(path)));
  record.index = index;
  record.Writable = access == FEATURE_ACCESS_RW ? 1 : 0;
  record.Identifier = index | PARAMETER_IDENTIFIER_BIT;

  switch (access) {
    case FEATURE_ACCESS_NA:
      CopyText(record.ValueText, sizeof record.ValueText, "Not Available");
      return 1;
    case FEATURE_ACCESS_NI:
      return 1;
    case FEATURE_ACCESS_WO:
      record.ValueKind = VALUE_KIND_BUTTON;
      CopyText(record.ValueText, sizeof record.ValueText, "Press...");
      record.Writable = 1;
      return 1;
    default:
      break;
  }
  switch (type) {
    case FEATURE_TYPE_INTEGER:
    case FEATURE_TYPE_FLOAT:
      FillNumberRecord(feature, type, readValue, record);
      break;
    case FEATURE_TYPE_BOOLEAN:  // also a command that is not write-only
      FillBooleanRecord(feature, readValue, record);
      break;
    case FEATURE_TYPE_ENUMERATION:
      FillEnumerationRecord(feature, readValue, record);
      break;
    case FEATURE_TYPE_STRING:
      record.ValueKind = VALUE_KIND_TEXT;
      if (readValue == 1) feature.GetValue(record.ValueText, sizeof record.ValueText);
      break;
    default:  // registers and untyped nodes: nothing to show or change
      record.Writable = 0;
      break;
  }
  return 1;
}

std::int32_t GenericCamera::AppendParameterTexts(std::uint32_t index,
                                                 std::vector<ParameterTextItem>& texts) {
  if (!featureTree_) return 0;
  GenericFeature feature;
  if (!featureTree_->GetFeatureByIndex(index, feature)) {
    ReportIndexFailure(kFeatureLookupFailed, index);
    return 0;
  }
  char name[kFeatureTextSize];
  feature.GetDisplayName(name, sizeof name);
  texts.push_back({std::string(name) + "\r", kStyleName});

  std::uint32_t size = 0;
  if (feature.GetDescription(nullptr, size) && size == 0) return 0;  // no text at all
  std::vector<char> description(size);
  if (!feature.GetDescription(description.data(), size)) return 0;
  texts.push_back({std::string(description.data()), kStyleDescription});
  return 1;
}

void GenericCamera::ReportIndexFailure(const char* format, std::uint32_t index) {
  char text[kMessageBufferSize];
  FormatText(text, sizeof text, format, static_cast<std::int32_t>(index));
  ReportMessage(MESSAGE_FAILURE, text);
}

}  // namespace vq
