// list and describe, and the feature rendering they share with get and set.
#include <cmath>

#include "Commands.h"
#include "Failure.h"
#include "Session.h"
#include "Text.h"

namespace vq::host {

using nlohmann::json;

std::string KindName(const Feature& feature) {
  if (feature.isBoolean()) return "boolean";
  switch (feature.kind) {
    case VALUE_KIND_NUMBER:
      return "number";
    case VALUE_KIND_TEXT:
      return "text";
    case VALUE_KIND_LIST:
      return "list";
    case VALUE_KIND_BUTTON:
      return "command";
    default:
      return "other";
  }
}

std::string AccessName(const Feature& feature) {
  if (feature.isButton()) return "command";
  return feature.writable ? "rw" : "ro";
}

namespace {

// Limits that say something: finite and inside the 64-bit integers (a feature without
// limits reports the type's extremes).
bool Meaningful(float limit) { return std::isfinite(limit) && std::fabs(limit) < 9.2e18f; }

}  // namespace

std::string RangeText(const Feature& feature) {
  if (feature.kind == VALUE_KIND_NUMBER && feature.minimum < feature.maximum &&
      Meaningful(feature.minimum) && Meaningful(feature.maximum)) {
    std::string text = FormatNumber(feature.minimum) + " .. " + FormatNumber(feature.maximum);
    if (feature.increment > 1) text += " step " + std::to_string(feature.increment);
    return text;
  }
  if (feature.kind == VALUE_KIND_LIST && !feature.isBoolean()) {
    std::string text;
    for (const auto& entry : feature.entries) text += (text.empty() ? "" : "|") + entry.label;
    return text.size() > 60 ? text.substr(0, 57) + "..." : text;
  }
  return std::string();
}

json FeatureJson(Session& session, const Feature& feature, const std::string* value) {
  json item = {{"index", feature.index},
               {"name", feature.name},
               {"category", session.catalogue().categoryName(feature.category)},
               {"kind", KindName(feature)},
               {"access", AccessName(feature)}};
  const std::string node = session.names().nodeName(feature);
  if (!node.empty()) item["node"] = node;
  if (feature.kind == VALUE_KIND_NUMBER) {
    // JSON has no infinities: a limit that is not finite is null.
    item["minimum"] = std::isfinite(feature.minimum) ? json(feature.minimum) : json(nullptr);
    item["maximum"] = std::isfinite(feature.maximum) ? json(feature.maximum) : json(nullptr);
    item["increment"] = feature.increment;
  }
  if (feature.kind == VALUE_KIND_LIST && !feature.isBoolean()) {
    json entries = json::array();
    for (const auto& entry : feature.entries) {
      entries.push_back({{"value", entry.value}, {"name", entry.label}});
    }
    item["entries"] = entries;
  }
  if (value != nullptr) {
    item["value"] = JsonValue(feature, *value);
    item["text"] = feature.isButton() ? std::string() : UserValue(feature, *value);
  }
  return item;
}

void ListCommand(Session& session, const std::vector<std::string>& args) {
  const std::string pattern = args.empty() ? std::string() : args[0];
  json features = json::array();
  std::vector<Row> rows = {{"#", "Name", "Value", "Access", "Range", "Category"}};
  for (const auto& feature : session.catalogue().features()) {
    const std::string node = session.names().nodeName(feature);
    if (!pattern.empty() && !PatternMatches(pattern, feature.name) &&
        (node.empty() || !PatternMatches(pattern, node))) {
      continue;
    }
    const std::string text = feature.isButton() ? std::string() : session.readValue(feature);
    features.push_back(FeatureJson(session, feature, &text));
    rows.push_back({std::to_string(feature.index), feature.name,
                    feature.isButton() ? "(command)" : UserValue(feature, text),
                    AccessName(feature), RangeText(feature),
                    session.catalogue().categoryName(feature.category)});
  }
  if (!pattern.empty() && features.empty()) {
    throw UsageError("no feature matches '" + pattern + "'; run 'vqcam list' to see them all");
  }
  session.output().emit({{"command", "list"}, {"features", features}}, AlignedTable(rows));
}

void DescribeCommand(Session& session, const std::vector<std::string>& args) {
  const Feature& feature = session.names().resolve(args[0]);
  std::vector<ParameterTextItem> texts;
  ParameterTextsQuery query{feature.index, 0, &texts};
  session.extension().QueryCommand(CMD_PARAMETER_TEXTS, &query, sizeof(query));
  std::string description;
  for (const auto& item : texts) {
    if (item.style == 0) description = item.text;
  }
  const std::string text = feature.isButton() ? std::string() : session.readValue(feature);
  json result = FeatureJson(session, feature, &text);
  result["command"] = "describe";
  result["description"] = description;
  std::vector<Row> rows = {{"Name", feature.name}};
  if (result.contains("node")) rows.push_back({"Node", result["node"].get<std::string>()});
  rows.push_back({"Index", std::to_string(feature.index)});
  rows.push_back({"Category", result["category"].get<std::string>()});
  rows.push_back({"Kind", KindName(feature)});
  rows.push_back({"Access", AccessName(feature)});
  if (!feature.isButton()) rows.push_back({"Value", UserValue(feature, text)});
  if (feature.kind == VALUE_KIND_NUMBER) {
    rows.push_back({"Minimum", FormatNumber(feature.minimum)});
    rows.push_back({"Maximum", FormatNumber(feature.maximum)});
    rows.push_back({"Increment", std::to_string(feature.increment)});
  }
  for (const auto& entry : feature.entries) {
    rows.push_back({"Entry", entry.label + " (" + std::to_string(entry.value) + ")"});
  }
  rows.push_back({"Description", description});
  session.output().emit(result, AlignedTable(rows));
}

}  // namespace vq::host
