// The camera's features as the host interface shows them: one row per flat index with its
// display name, category, limits, entries, writability and value kind, read through
// GetParameterAttribute. Values are read on demand, since each read goes to the camera.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "vq/VQ_Ext.h"

namespace vq::host {

struct FeatureEntry {
  std::uint32_t value = 0;
  std::string name;   // as the module gives it
  std::string label;  // as a person reads it: without the "EnumEntry_<Feature>_" prefix
};

struct Feature {
  std::uint32_t index = 0;
  std::string name;  // display name
  std::uint32_t category = 0;
  float minimum = 0;
  float maximum = 0;
  std::int32_t increment = 0;
  std::vector<FeatureEntry> entries;
  bool writable = false;
  std::uint32_t kind = VALUE_KIND_NUMBER;

  // A list of exactly the two entries True (1) and False (0).
  bool isBoolean() const;
  bool isButton() const { return kind == VALUE_KIND_BUTTON; }
  // The entry whose value the module's value text names, or null.
  const FeatureEntry* entryOfText(const std::string& valueText) const;
  // The same feature listed again (in a second category): every attribute but the index
  // and the category equal.
  bool sameAs(const Feature& other) const;
};

class Catalogue {
 public:
  explicit Catalogue(VQ_Ext& extension) : extension_(extension) {}

  // Reads every feature the current visibility level shows, and the category table.
  void reload();

  // Features visible at the current level, by ascending index.
  const std::vector<Feature>& features() const { return features_; }
  const Feature* byIndex(std::uint32_t index) const;
  std::uint32_t parameterCount() const { return count_; }
  const std::vector<std::string>& categories() const { return categories_; }
  std::string categoryName(std::uint32_t index) const;

  // The value text from the camera (attribute 2), or nothing when it cannot be read.
  std::optional<std::string> valueText(std::uint32_t index) const;

 private:
  bool readFeature(std::uint32_t index, Feature& feature) const;
  bool readText(std::uint32_t index, std::uint32_t code, std::string& text) const;
  template <typename T>
  bool readValue(std::uint32_t index, std::uint32_t code, T& value) const;

  VQ_Ext& extension_;
  std::uint32_t count_ = 0;
  std::vector<Feature> features_;
  std::vector<std::string> categories_;
};

// Node names of a camera description mapped to display names, for features and for
// enumeration entries; empty when the description is not at hand.
struct DescriptionNames {
  std::map<std::string, std::string> features;  // node name -> display name
  std::map<std::string, std::string> entries;   // entry node name -> entry display name

  static DescriptionNames FromXml(const std::string& xml);
};

}  // namespace vq::host
