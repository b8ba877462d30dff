// Finding a feature from what a user typed, and converting values between the user's
// words and the module's value texts.
//
// A name resolves, first rule that gives exactly one feature wins:
//  1. a flat index ("12" or "#12");
//  2. the display name, exactly, then ignoring letter case;
//  3. a node name of the camera's description, when the description is at hand;
//  4. letters and digits only, ignoring case ("exposure-time" ~ "ExposureTime" ~
//     "Exposure Time").
// Several features under one rule make the name ambiguous.
#pragma once

#include <string>

#include "Catalogue.h"
#include "nlohmann/json.hpp"

namespace vq::host {

class FeatureNames {
 public:
  FeatureNames(const Catalogue& catalogue, const DescriptionNames& names)
      : catalogue_(catalogue), names_(names) {}

  // Throws a usage Failure for an unknown or ambiguous name.
  const Feature& resolve(const std::string& name) const;
  // The description's node name of a feature, empty when unknown or not unique.
  std::string nodeName(const Feature& feature) const;

  // The value text SetParameterValue expects for the user's value: numbers as numbers,
  // booleans as 1/0, enumerations by their entry's integer value, strings as written.
  // Throws a usage Failure for a value of the wrong kind or an unknown entry.
  std::string toModuleText(const Feature& feature, const std::string& userValue) const;

 private:
  const Catalogue& catalogue_;
  const DescriptionNames& names_;
};

// The module's value text as a user writes it (entry names, true/false), and as JSON.
std::string UserValue(const Feature& feature, const std::string& moduleText);
nlohmann::json JsonValue(const Feature& feature, const std::string& moduleText);

}  // namespace vq::host
