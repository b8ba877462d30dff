// Enumeration entries by list position and by value, and binding an
// enumeration accessor to a feature handle.
#include "features/BoundedText.h"
#include "features/GenericFeature.h"
#include "features/TypedFeatures.h"

namespace vq {

std::int32_t GenericFeature::AsEnumeration(EnumerationFeature& enumeration) const {
  auto* bound = NodeAs<GenApi::IEnumeration>(node_);
  if (bound == nullptr) return 0;
  enumeration.Bind(bound);
  return 1;
}

void EnumerationFeature::Bind(GenApi::IEnumeration* enumeration) {
  lastError_.clear();
  value_ = enumeration;
}

// The entry list is fetched for every query; the module keeps no copy of it.
template <typename Use>
std::int32_t EnumerationFeature::WithEntryAt(std::uint32_t index, Use&& use) {
  return CaptureResult([&](GenApi::IEnumeration& enumeration) {
    GenApi::NodeList_t entries;
    enumeration.GetEntries(entries);
    if (index >= entries.size()) return std::int32_t{0};
    auto* entry = NodeAs<GenApi::IEnumEntry>(entries[index]);
    if (entry == nullptr) return std::int32_t{0};
    use(*entry);
    return std::int32_t{1};
  });
}

template <typename Use>
std::int32_t EnumerationFeature::WithEntryOfValue(std::uint32_t value, Use&& use) {
  const auto wanted = static_cast<std::int64_t>(static_cast<std::uint64_t>(value));
  return CaptureResult([&](GenApi::IEnumeration& enumeration) {
    GenApi::NodeList_t entries;
    enumeration.GetEntries(entries);
    for (GenApi::INode* node : entries) {
      // A node that is no entry ends the walk with "NULL pointer dereferenced".
      GenApi::CEnumEntryPtr entry(node);
      if (entry->GetValue() == wanted) {
        use(*entry);
        return std::int32_t{1};
      }
    }
    return std::int32_t{0};
  });
}

std::int32_t EnumerationFeature::GetEntryCount(std::uint32_t& count) {
  return Capture([&](GenApi::IEnumeration& enumeration) {
    GenApi::NodeList_t entries;
    enumeration.GetEntries(entries);
    count = static_cast<std::uint32_t>(entries.size());
  });
}

std::int32_t EnumerationFeature::GetEntrySymbolic(std::uint32_t index, char* buffer,
                                                  std::uint32_t size) {
  return WithEntryAt(index, [&](GenApi::IEnumEntry& entry) {
    CopyText(buffer, size, entry.GetSymbolic().c_str());
  });
}

std::int32_t EnumerationFeature::GetEntryValue(std::uint32_t index, std::uint32_t& value) {
  return WithEntryAt(index, [&](GenApi::IEnumEntry& entry) {
    value = static_cast<std::uint32_t>(entry.GetValue());
  });
}

std::int32_t EnumerationFeature::IsEntryAvailable(std::uint32_t index, std::uint32_t& available) {
  return WithEntryAt(index, [&](GenApi::IEnumEntry& entry) {
    available = GenApi::IsAvailable(entry.GetAccessMode()) ? 1u : 0u;
  });
}

std::int32_t EnumerationFeature::GetSymbolicOfValue(std::uint32_t value, char* buffer,
                                                    std::uint32_t size) {
  return WithEntryOfValue(value, [&](GenApi::IEnumEntry& entry) {
    CopyText(buffer, size, entry.GetSymbolic().c_str());
  });
}

std::int32_t EnumerationFeature::GetDisplayNameOfValue(std::uint32_t value, char* buffer,
                                                       std::uint32_t size) {
  return WithEntryOfValue(value, [&](GenApi::IEnumEntry& entry) {
    CopyText(buffer, size, entry.GetNode()->GetDisplayName().c_str());
  });
}

}  // namespace vq
