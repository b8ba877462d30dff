// The host's parameter operations: count, attributes, value write and button
// press. Every request fetches the parameter's record afresh, so the host
// always sees the node map and the visibility level as they are now.
#include <cstring>

#include "extension/ModuleState.h"
#include "extension/VQ_CameraExt.h"
#include "features/BoundedText.h"
#include "features/FeatureInfoRecord.h"
#include "features/NumberConversion.h"
#include "features/RawBytes.h"

namespace vq {

namespace {

constexpr std::uint32_t kLastAttribute = PARAM_DECIMALS;
constexpr std::uint32_t kWordSize = 4;

// Texts: refused when the size is below the text's length; a size equal to
// it gives the text cut by one. Sizes below 1 are refused too, since the last
// byte of the buffer is always written.
std::int32_t CopyAttributeText(const char* text, void* buffer, std::int32_t size) {
  if (buffer == nullptr || size <= 0 || static_cast<std::size_t>(size) < std::strlen(text)) {
    return 0;
  }
  auto* out = static_cast<char*>(buffer);
  CopyText(out, static_cast<std::size_t>(size), text);
  out[size - 1] = '\0';
  return 1;
}

// The choices, one 1548-byte block each, back to back.
std::int32_t CopyEntryList(const FeatureInfoRecord& record, void* buffer, std::int32_t size) {
  const std::int64_t needed =
      std::int64_t{record.EntryCount} * static_cast<std::int64_t>(sizeof(EntryBlock));
  if (size < needed) return 0;
  if (needed > 0 && buffer == nullptr) return 0;
  auto* blocks = static_cast<unsigned char*>(buffer);
  for (std::size_t i = 0; i < record.EntryList.size(); ++i) {
    unsigned char* block = blocks + i * sizeof(EntryBlock);
    const ListEntry& entry = record.EntryList[i];
    StoreRaw(block + offsetof(EntryBlock, value), entry.value);
    CopyText(reinterpret_cast<char*>(block + offsetof(EntryBlock, name)),
             sizeof(EntryBlock::name), entry.name);
    StoreRaw(block + offsetof(EntryBlock, reserved1), std::uint32_t{0});
    StoreRaw(block + offsetof(EntryBlock, reserved2), std::uint32_t{0});
  }
  return 1;
}

// A 32-bit field; exactly says whether the size must be 4 or at least 4
// (compared as unsigned).
template <typename T>
std::int32_t CopyWord(const T& value, void* buffer, std::int32_t size, bool exactly) {
  const auto unsignedSize = static_cast<std::uint32_t>(size);
  if (buffer == nullptr) return 0;
  if (exactly ? unsignedSize != kWordSize : unsignedSize < kWordSize) return 0;
  StoreRaw(buffer, value);
  return 1;
}

// One attribute by the size rule of its code. Every attribute refuses a null
// buffer it would have to write into.
std::int32_t CopyAttribute(const FeatureInfoRecord& record, std::uint32_t code, void* buffer,
                           std::int32_t size) {
  constexpr bool kExactly = true;
  constexpr bool kAtLeast = false;
  switch (code) {
    case PARAM_DISPLAY_NAME:
      return CopyAttributeText(record.DisplayName, buffer, size);
    case PARAM_CATEGORY_INDEX:
      return CopyWord(record.CategoryIndex, buffer, size, kAtLeast);
    case PARAM_VALUE_TEXT:
      return CopyAttributeText(record.ValueText, buffer, size);
    case PARAM_MINIMUM:
      return CopyWord(record.Minimum, buffer, size, kAtLeast);
    case PARAM_MAXIMUM:
      return CopyWord(record.Maximum, buffer, size, kAtLeast);
    case PARAM_INCREMENT:
      return CopyWord(TruncateToInt32(record.Increment), buffer, size, kExactly);
    case PARAM_ENTRY_LIST:
      return CopyEntryList(record, buffer, size);
    case PARAM_ENTRY_COUNT:
      return CopyWord(record.EntryCount, buffer, size, kExactly);
    case PARAM_WRITABLE:
      return CopyWord(record.Writable, buffer, size, kExactly);
    case PARAM_RESERVED9:
      return CopyWord(record.Reserved9, buffer, size, kExactly);
    case PARAM_VALUE_KIND:
      return CopyWord(record.ValueKind, buffer, size, kExactly);
    case PARAM_CONSTANT_FOUR:
      if (buffer == nullptr) return 0;
      StoreRaw(buffer, std::uint32_t{4});  // whatever the size
      return 1;
    case PARAM_IDENTIFIER:
      return CopyWord(record.Identifier, buffer, size, kExactly);
    case PARAM_DECIMALS:
      return CopyWord(record.Decimals, buffer, size, kAtLeast);
    default:
      return 0;
  }
}

}  // namespace

// Before InitializeCamera there is no camera: every operation answers 0.

std::uint32_t VQ_CameraExt::GetParameterCount() {
  std::uint32_t count = 0;
  if (camera_ && camera_->HasFeatureTree()) camera_->FeatureTree()->GetFeatureCount(count);
  return count;
}

std::int32_t VQ_CameraExt::GetParameterAttribute(std::uint32_t index, std::uint32_t code,
                                                 void* buffer, std::int32_t size) {
  if (!camera_) return 0;
  FeatureInfoRecord record;
  const std::uint32_t readValue = code == PARAM_VALUE_TEXT ? 1 : 0;
  if (!camera_->GetFeatureInfo(index, record, readValue)) return 0;
  if (code > kLastAttribute) return 0;
  return CopyAttribute(record, code, buffer, size);
}

std::int32_t VQ_CameraExt::PressParameterButton(void* hostArgument, std::uint32_t index) {
  ModuleStateGuard moduleState;
  if (!camera_) return 0;
  return camera_->PressParameterButton(hostArgument, index);
}

std::int32_t VQ_CameraExt::SetParameterValue(std::uint32_t index, const char* text) {
  ModuleStateGuard moduleState;
  if (!camera_) return 0;
  FeatureInfoRecord record;
  if (!camera_->GetFeatureInfo(index, record, 0)) return 0;
  // Buttons are executed only through PressParameterButton.
  if (record.ValueKind == VALUE_KIND_BUTTON) return 0;
  return camera_->SetFeatureValueText(index, text);
}

}  // namespace vq
