#include "FeatureNames.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "Failure.h"
#include "Text.h"

namespace vq::host {

namespace {

const char kListHint[] = "; run 'vqcam list' to see the names";

std::vector<const Feature*> Matching(const std::vector<Feature>& features,
                                     const std::function<bool(const Feature&)>& test) {
  std::vector<const Feature*> found;
  for (const auto& feature : features) {
    if (test(feature)) found.push_back(&feature);
  }
  return found;
}

bool IsIndex(const std::string& name, std::uint32_t& index) {
  const std::string digits = !name.empty() && name[0] == '#' ? name.substr(1) : name;
  if (digits.empty() || digits.size() > 9 ||
      digits.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  index = static_cast<std::uint32_t>(std::stoul(digits));
  return true;
}

Failure Ambiguous(const std::string& name, const std::vector<const Feature*>& found) {
  std::string list;
  for (const Feature* feature : found) {
    list += (list.empty() ? "" : ", ") + std::string("#") + std::to_string(feature->index) + " " +
            feature->name;
  }
  return UsageError("'" + name + "' names several features (" + list +
                    "); use the flat index, e.g. '#" + std::to_string(found.front()->index) + "'");
}

}  // namespace

const Feature& FeatureNames::resolve(const std::string& name) const {
  const auto& features = catalogue_.features();
  std::uint32_t index = 0;
  if (IsIndex(name, index)) {
    if (const Feature* feature = catalogue_.byIndex(index)) return *feature;
    throw UsageError("no feature with index " + std::to_string(index) + " at this visibility " +
                     "level; try --visibility invisible" + kListHint);
  }
  const std::string display =
      names_.features.count(name) != 0 ? names_.features.at(name) : std::string();
  const std::string normal = Normalise(name);
  const std::vector<std::function<bool(const Feature&)>> rules = {
      [&](const Feature& f) { return f.name == name; },
      [&](const Feature& f) { return EqualsIgnoreCase(f.name, name); },
      [&](const Feature& f) { return !display.empty() && f.name == display; },
      [&](const Feature& f) { return !normal.empty() && Normalise(f.name) == normal; },
  };
  for (const auto& rule : rules) {
    const auto found = Matching(features, rule);
    if (found.empty()) continue;
    // One feature listed in several categories is found once per listing.
    const bool oneFeature = std::all_of(
        found.begin(), found.end(), [&](const Feature* f) { return f->sameAs(*found.front()); });
    if (oneFeature) return *found.front();
    throw Ambiguous(name, found);
  }
  throw UsageError("unknown feature '" + name + "'" + kListHint);
}

std::string FeatureNames::nodeName(const Feature& feature) const {
  std::string node;
  for (const auto& [nodeName, display] : names_.features) {
    if (display != feature.name) continue;
    if (!node.empty()) return std::string();  // not unique
    node = nodeName;
  }
  return node;
}

std::string FeatureNames::toModuleText(const Feature& feature, const std::string& userValue) const {
  const std::string value = Trim(userValue);
  if (feature.isButton()) {
    throw UsageError("'" + feature.name + "' is a command; use 'press " + feature.name + "'");
  }
  if (feature.kind == VALUE_KIND_TEXT) return userValue;
  if (feature.isBoolean()) {
    const std::string word = Lower(value);
    if (word == "true" || word == "1" || word == "on" || word == "yes") return "1";
    if (word == "false" || word == "0" || word == "off" || word == "no") return "0";
    throw UsageError("'" + feature.name + "' takes true or false, not '" + userValue + "'");
  }
  if (feature.kind == VALUE_KIND_LIST) {
    const std::string display =
        names_.entries.count(value) != 0 ? names_.entries.at(value) : std::string();
    const std::vector<std::function<bool(const FeatureEntry&)>> rules = {
        [&](const FeatureEntry& e) { return e.label == value || e.name == value; },
        [&](const FeatureEntry& e) {
          return EqualsIgnoreCase(e.label, value) || EqualsIgnoreCase(e.name, value);
        },
        [&](const FeatureEntry& e) { return !display.empty() && e.label == display; },
        [&](const FeatureEntry& e) { return Normalise(e.label) == Normalise(value); },
        [&](const FeatureEntry& e) { return std::to_string(e.value) == value; },
    };
    for (const auto& rule : rules) {
      for (const auto& entry : feature.entries) {
        if (rule(entry)) return std::to_string(entry.value);
      }
    }
    std::string choices;
    for (const auto& entry : feature.entries)
      choices += (choices.empty() ? "" : ", ") + entry.label;
    throw UsageError("'" + feature.name + "' has no entry '" + userValue +
                     "'; choose one of: " + (choices.empty() ? "(none available)" : choices));
  }
  double number = 0;
  if (!ParseNumber(value, number)) {
    throw UsageError("'" + feature.name + "' takes a number, not '" + userValue + "'");
  }
  return FormatNumber(number);
}

std::string UserValue(const Feature& feature, const std::string& moduleText) {
  if (feature.isBoolean()) return moduleText == "1" ? "true" : moduleText == "0" ? "false" : "";
  if (feature.kind == VALUE_KIND_LIST) {
    const FeatureEntry* entry = feature.entryOfText(moduleText);
    return entry != nullptr ? entry->label : moduleText;
  }
  return moduleText;
}

nlohmann::json JsonValue(const Feature& feature, const std::string& moduleText) {
  if (feature.isButton() || moduleText.empty()) return nullptr;
  if (feature.isBoolean()) return moduleText == "1";
  if (feature.kind == VALUE_KIND_NUMBER) {
    double number = 0;
    if (!ParseNumber(moduleText, number)) return moduleText;
    if (moduleText.find_first_of(".eE") == std::string::npos) {
      return static_cast<std::int64_t>(number);
    }
    return number;
  }
  return UserValue(feature, moduleText);
}

}  // namespace vq::host
