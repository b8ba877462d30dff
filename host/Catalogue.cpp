#include "Catalogue.h"

#include <cstring>
#include <pugixml.hpp>

namespace vq::host {

namespace {
constexpr std::int32_t kTextSize = 512;
}

bool Feature::isBoolean() const {
  return kind == VALUE_KIND_LIST && entries.size() == 2 && entries[0].value == 1 &&
         entries[0].name == "True" && entries[1].value == 0 && entries[1].name == "False";
}

const FeatureEntry* Feature::entryOfText(const std::string& valueText) const {
  char* end = nullptr;
  const long long value = std::strtoll(valueText.c_str(), &end, 10);
  if (valueText.empty() || end == nullptr || *end != '\0') return nullptr;
  for (const auto& entry : entries) {
    if (static_cast<std::int32_t>(entry.value) == static_cast<std::int32_t>(value)) return &entry;
  }
  return nullptr;
}

bool Feature::sameAs(const Feature& other) const {
  auto entryKey = [](const std::vector<FeatureEntry>& entries) {
    std::vector<std::pair<std::uint32_t, std::string>> key;
    for (const auto& entry : entries) key.emplace_back(entry.value, entry.name);
    return key;
  };
  return name == other.name && kind == other.kind && writable == other.writable &&
         minimum == other.minimum && maximum == other.maximum && increment == other.increment &&
         entryKey(entries) == entryKey(other.entries);
}

namespace {

// Entry nodes are often named "EnumEntry_<Feature>_<Entry>" and shown by that name; a
// person reads and writes the <Entry> part. The prefix is the part all entries share, up to
// its last "_"; a lone entry keeps what follows its last "_".
void LabelEntries(std::vector<FeatureEntry>& entries) {
  const std::string kPrefix = "EnumEntry_";
  for (const auto& entry : entries) {
    if (entry.name.rfind(kPrefix, 0) != 0) {
      for (auto& e : entries) e.label = e.name;
      return;
    }
  }
  std::string common = entries.empty() ? std::string() : entries.front().name;
  for (const auto& entry : entries) {
    std::size_t n = 0;
    while (n < common.size() && n < entry.name.size() && common[n] == entry.name[n]) ++n;
    common.resize(n);
  }
  if (entries.size() == 1) common = entries.front().name;
  const std::size_t cut = common.rfind('_');
  for (auto& entry : entries) {
    entry.label = cut != std::string::npos && cut + 1 < entry.name.size()
                      ? entry.name.substr(cut + 1)
                      : entry.name;
  }
}

}  // namespace

bool Catalogue::readText(std::uint32_t index, std::uint32_t code, std::string& text) const {
  char buffer[kTextSize] = {};
  if (extension_.GetParameterAttribute(index, code, buffer, kTextSize) != 1) return false;
  buffer[kTextSize - 1] = '\0';
  text = buffer;
  return true;
}

template <typename T>
bool Catalogue::readValue(std::uint32_t index, std::uint32_t code, T& value) const {
  static_assert(sizeof(T) == 4, "attribute values are 4 bytes");
  return extension_.GetParameterAttribute(index, code, &value, sizeof(T)) == 1;
}

bool Catalogue::readFeature(std::uint32_t index, Feature& feature) const {
  feature.index = index;
  if (!readText(index, PARAM_DISPLAY_NAME, feature.name)) return false;  // hidden at this level
  std::uint32_t writable = 0;
  std::uint32_t entryCount = 0;
  readValue(index, PARAM_CATEGORY_INDEX, feature.category);
  readValue(index, PARAM_MINIMUM, feature.minimum);
  readValue(index, PARAM_MAXIMUM, feature.maximum);
  readValue(index, PARAM_INCREMENT, feature.increment);
  readValue(index, PARAM_WRITABLE, writable);
  readValue(index, PARAM_VALUE_KIND, feature.kind);
  feature.writable = writable == 1;
  if (readValue(index, PARAM_ENTRY_COUNT, entryCount) && entryCount > 0 && entryCount < 4096) {
    std::vector<EntryBlock> blocks(entryCount);
    const auto size = static_cast<std::int32_t>(entryCount * sizeof(EntryBlock));
    if (extension_.GetParameterAttribute(index, PARAM_ENTRY_LIST, blocks.data(), size) == 1) {
      for (auto& block : blocks) {
        block.name[sizeof(block.name) - 1] = '\0';
        feature.entries.push_back({block.value, block.name, block.name});
      }
      LabelEntries(feature.entries);
    }
  }
  return true;
}

void Catalogue::reload() {
  features_.clear();
  categories_.clear();
  count_ = extension_.GetParameterCount();
  for (std::uint32_t index = 0; index < count_; ++index) {
    Feature feature;
    if (readFeature(index, feature)) features_.push_back(std::move(feature));
  }
  const std::uint32_t categoryCount = extension_.GetCategoryCount();
  for (std::uint32_t index = 0; index < categoryCount; ++index) {
    char name[kTextSize] = {};
    char second[kTextSize];
    std::uint32_t unused = 0;
    if (extension_.GetCategoryName(index, name, kTextSize, second, kTextSize, &unused) != 1) {
      name[0] = '\0';
    }
    categories_.push_back(name);
  }
}

const Feature* Catalogue::byIndex(std::uint32_t index) const {
  for (const auto& feature : features_) {
    if (feature.index == index) return &feature;
  }
  return nullptr;
}

std::string Catalogue::categoryName(std::uint32_t index) const {
  return index < categories_.size() ? categories_[index] : std::string();
}

std::optional<std::string> Catalogue::valueText(std::uint32_t index) const {
  std::string text;
  if (!readText(index, PARAM_VALUE_TEXT, text)) return std::nullopt;
  return text;
}

DescriptionNames DescriptionNames::FromXml(const std::string& xml) {
  DescriptionNames names;
  pugi::xml_document document;
  if (xml.empty() || !document.load_buffer(xml.data(), xml.size())) return names;
  for (const auto& found : document.select_nodes("//*[@Name]")) {
    const pugi::xml_node node = found.node();
    const std::string name = node.attribute("Name").value();
    const pugi::xml_node display = node.child("DisplayName");
    const std::string shown = display ? display.text().get() : name;
    if (std::strcmp(node.name(), "EnumEntry") == 0) {
      names.entries.emplace(name, shown);
    } else {
      names.features.emplace(name, shown);
    }
  }
  return names;
}

}  // namespace vq::host
