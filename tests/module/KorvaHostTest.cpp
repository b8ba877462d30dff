// The KORVA example through the host interface: every attribute of every
// parameter at every visibility level against the description read here with
// an XML parser of its own and the simulated camera's register image; writes
// of every value kind with the change notices they cause; button presses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/HostCamera.h"
#include "support/KorvaXml.h"

namespace vq::test {
namespace {

// Behind IsMultiFrame, IsSoftwareTrigger and IsColorSensor the example's
// registers hold 0: these parameters and the entry BayerRG8 are unavailable.
const std::set<std::string> kUnavailable = {"AcquisitionFrameCount", "TriggerSoftware",
                                            "BalanceRatioSelector", "BalanceRatio", "BayerRG8"};

struct Expected {
  std::string name;
  std::string displayName;
  std::string category;  // top-level category's display name
  std::uint32_t visibility = 1;
  std::uint32_t kind = VALUE_KIND_NUMBER;
  std::uint32_t writable = 0;
  std::optional<std::string> valueText;  // none: computed by a formula, not checked
  std::vector<std::pair<std::uint32_t, std::string>> entries;
  std::optional<float> minimum, maximum;
  std::optional<std::int32_t> increment;
};

// What the host must be shown, from the description and the register image.
class ExpectedParameters {
 public:
  explicit ExpectedParameters(HostCamera& camera) : camera_(camera) {}

  std::vector<Expected> Parameters() {
    std::vector<Expected> parameters;
    xml_.Walk([&](const pugi::xml_node& element, const std::vector<std::string>& path) {
      if (!element.child("pIsImplemented")) parameters.push_back(Describe(element, path[1]));
    });
    return parameters;
  }

 private:
  static std::string Tag(const pugi::xml_node& e) { return e.name(); }
  static std::string Child(const pugi::xml_node& e, const char* name) {
    return KorvaXml::Child(e, name);
  }

  std::string Access(const pugi::xml_node& e) {
    if (e.child("ImposedAccessMode")) return Child(e, "ImposedAccessMode");
    if (e.child("AccessMode")) return Child(e, "AccessMode");
    if (e.child("pValue")) return Access(xml_[Child(e, "pValue")]);
    return Tag(e).find("SwissKnife") != std::string::npos ? "RO" : "RW";
  }

  // The integer or float a node holds, from literals and the register image.
  std::optional<double> Number(const pugi::xml_node& e) {
    if (Tag(e) == "Converter") return std::nullopt;  // formulas are not evaluated here
    if (e.child("pValue")) return Number(xml_[Child(e, "pValue")]);
    if (e.child("Value")) return std::stod(Child(e, "Value"));
    const std::string tag = Tag(e);
    if (tag != "IntReg" && tag != "MaskedIntReg" && tag != "FloatReg") return std::nullopt;
    const int length = std::stoi(Child(e, "Length"));
    const std::uint64_t raw =
        camera_.Register(std::stoull(Child(e, "Address"), nullptr, 0), length);
    if (tag == "FloatReg") {
      if (length == 4) {
        float value;
        const auto bits = static_cast<std::uint32_t>(raw);
        std::memcpy(&value, &bits, 4);
        return value;
      }
      double value;
      std::memcpy(&value, &raw, 8);
      return value;
    }
    if (tag == "MaskedIntReg") {
      return double((raw >> (8 * length - 1 - e.child("Bit").text().as_int())) & 1);
    }
    if (Child(e, "Sign") == "Signed" && length < 8 && (raw >> (8 * length - 1)) != 0) {
      return double(std::int64_t(raw) - (std::int64_t(1) << (8 * length)));
    }
    return double(raw);
  }

  std::optional<std::string> Text(const pugi::xml_node& e, std::uint32_t kind, bool isFloat) {
    if (Tag(e) == "StringReg") {
      std::string text;
      const std::uint64_t address = std::stoull(Child(e, "Address"), nullptr, 0);
      for (int i = 0; i < std::stoi(Child(e, "Length")); ++i) {
        const char c = char(camera_.Register(address + i, 1));
        if (c == '\0') break;
        text += c;
      }
      return text;
    }
    if (kind == VALUE_KIND_TEXT) return Child(e, "Value");
    const std::optional<double> value = Number(e);
    if (!value) return std::nullopt;
    if (Tag(e) == "Boolean") return std::string(*value == 1 ? "1" : "0");
    char text[64];
    if (isFloat) {
      std::snprintf(text, sizeof text, "%.3f", *value);
    } else {
      std::snprintf(text, sizeof text, "%d", std::int32_t(std::uint32_t(std::int64_t(*value))));
    }
    return std::string(text);
  }

  // Only integer and float parameters have limits; the others show zeros.
  void Limits(const pugi::xml_node& e, bool isNumber, bool isFloat, Expected& p) {
    if (!isNumber) {
      p.minimum = p.maximum = 0.0f;
      p.increment = 0;
    } else if (e.child("Min") && e.child("Max")) {
      p.minimum = std::stof(Child(e, "Min"));
      p.maximum = std::stof(Child(e, "Max"));
      p.increment = isFloat ? 0 : e.child("Inc") ? std::stoi(Child(e, "Inc")) : 1;
    } else if (Tag(e) == "IntReg" && Child(e, "Length") == "4" && Child(e, "Sign") != "Signed") {
      p.minimum = 0.0f;
      p.maximum = 4294967296.0f;
      p.increment = 1;
    }
  }

  Expected Describe(const pugi::xml_node& e, const std::string& category) {
    Expected p;
    p.name = e.attribute("Name").value();
    p.displayName = KorvaXml::DisplayName(e);
    p.category = category;
    const std::string visibility = Child(e, "Visibility");
    p.visibility = visibility == "Expert"      ? 2
                   : visibility == "Guru"      ? 3
                   : visibility == "Invisible" ? 4
                                               : 1;
    const std::string tag = Tag(e);
    const std::string access = kUnavailable.count(p.name) ? "NA" : Access(e);
    p.writable = access == "RW" ? 1 : 0;
    bool isNumber = false;
    bool isFloat = false;
    if (access == "NA") {
      p.valueText = "Not Available";
    } else if (access == "WO") {
      p.kind = VALUE_KIND_BUTTON;
      p.writable = 1;
      p.valueText = "Press...";
    } else if (tag == "Register") {
      p.valueText = "";
      p.writable = 0;
    } else if (tag == "Boolean" || tag == "Command") {
      p.kind = VALUE_KIND_LIST;
      p.entries = {{1, "True"}, {0, "False"}};
      p.valueText = tag == "Command" ? std::optional<std::string>("") : Text(e, p.kind, false);
    } else if (tag == "Enumeration") {
      p.kind = VALUE_KIND_LIST;
      for (pugi::xml_node entry : e.children("EnumEntry")) {
        const std::string name = entry.attribute("Name").value();
        if (kUnavailable.count(name)) continue;
        const std::string display = Child(entry, "DisplayName");
        p.entries.emplace_back(std::uint32_t(std::stoll(Child(entry, "Value"), nullptr, 0)),
                               display.empty() ? "EnumEntry_" + p.name + "_" + name : display);
      }
      p.valueText = Text(e, p.kind, false);
    } else if (tag == "String" || tag == "StringReg") {
      p.kind = VALUE_KIND_TEXT;
      p.valueText = Text(e, p.kind, false);
    } else {
      isNumber = true;
      isFloat = tag == "Float" || tag == "FloatReg" || tag == "Converter";
      p.valueText = Text(e, p.kind, isFloat);
    }
    Limits(e, isNumber, isFloat, p);
    return p;
  }

  HostCamera& camera_;
  KorvaXml xml_;
};

template <typename T>
void ExpectIfKnown(const std::optional<T>& expected, const T& actual) {
  EXPECT_EQ(actual, expected.value_or(actual));
}

class KorvaHost : public OpenedCamera {
 protected:
  KorvaHost() : OpenedCamera(KorvaAreaProfile()) {}
};

TEST_F(KorvaHost, EveryAttributeOfEveryParameterAtEveryLevel) {
  const std::vector<Expected> parameters = ExpectedParameters(camera).Parameters();
  VQ_Ext& ext = camera.Ext();
  ASSERT_EQ(ext.GetParameterCount(), parameters.size());
  const auto checked = [&](auto field) {
    return std::count_if(parameters.begin(), parameters.end(),
                         [&](const Expected& p) { return bool(p.*field); });
  };
  // Only formula results go unchecked.
  EXPECT_EQ(checked(&Expected::valueText), 71);
  EXPECT_EQ(checked(&Expected::maximum), 59);
  std::vector<std::string> categories;
  for (const Expected& p : parameters) {
    if (std::find(categories.begin(), categories.end(), p.category) == categories.end()) {
      categories.push_back(p.category);
    }
  }
  ASSERT_EQ(CategoryNames(ext), categories);

  const char* levels[] = {"Beginner", "Expert", "Guru", "Invisible"};
  for (std::uint32_t level = 1; level <= 4; ++level) {
    ASSERT_EQ(camera.SetLevel(levels[level - 1]), 1);
    for (std::uint32_t index = 0; index < parameters.size(); ++index) {
      const Expected& p = parameters[index];
      SCOPED_TRACE(p.name + " at " + levels[level - 1]);
      if (p.visibility > level) {
        for (std::uint32_t code = 0; code <= 13; ++code) {
          char buffer[8];
          EXPECT_EQ(ext.GetParameterAttribute(index, code, buffer, 4), 0) << code;
        }
        EXPECT_EQ(ext.SetParameterValue(index, "1"), 0);
        continue;
      }
      EXPECT_EQ(camera.Text(index, PARAM_DISPLAY_NAME), p.displayName);
      const auto category = camera.Word<std::uint32_t>(index, PARAM_CATEGORY_INDEX);
      ASSERT_LT(category, categories.size());
      EXPECT_EQ(categories[category], p.category);
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_VALUE_KIND), p.kind);
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_WRITABLE), p.writable);
      ExpectIfKnown(p.valueText, camera.Text(index, PARAM_VALUE_TEXT));
      ExpectIfKnown(p.minimum, camera.Word<float>(index, PARAM_MINIMUM));
      ExpectIfKnown(p.maximum, camera.Word<float>(index, PARAM_MAXIMUM));
      ExpectIfKnown(p.increment, camera.Word<std::int32_t>(index, PARAM_INCREMENT));
      ASSERT_EQ(camera.Word<std::int32_t>(index, PARAM_ENTRY_COUNT),
                std::int32_t(p.entries.size()));
      std::vector<EntryBlock> blocks(p.entries.size() + 1);
      ASSERT_EQ(ext.GetParameterAttribute(index, PARAM_ENTRY_LIST, blocks.data(),
                                          std::int32_t(blocks.size() * sizeof(EntryBlock))),
                1);
      for (std::size_t i = 0; i < p.entries.size(); ++i) {
        EXPECT_EQ(blocks[i].value, p.entries[i].first);
        EXPECT_EQ(std::string(blocks[i].name), p.entries[i].second);
      }
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_IDENTIFIER), index | 0x80000000u);
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_RESERVED9), 0u);
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_DECIMALS), 0u);
      EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_CONSTANT_FOUR), 4u);
    }
  }
  EXPECT_TRUE(camera.host.messages.empty());
}

// A write of each value kind, and the parameters the host is told changed
// while its own call was running.
struct KorvaWrite {
  const char* parameter;  // display name
  const char* text;
  std::int32_t result;
  const char* valueText;              // read back; "" for none
  std::vector<const char*> notified;  // display names among the code-9 notices
  std::uint32_t level;                // of the one message, 9 for none
};

TEST_F(KorvaHost, WritesOfEveryKindNotifyTheirDependents) {
  ASSERT_EQ(camera.SetLevel("Invisible"), 1);
  const KorvaWrite rows[] = {
      {"Width", "1024", 1, "1024", {"Width", "Offset X"}, 9},
      {"Offset X", "64", 1, "64", {"Offset X", "Width Max"}, 9},
      {"Binning Horizontal", "2", 1, "2", {"Binning Horizontal", "Width Max"}, 9},
      {"Width", "1000", 0, "1024", {}, 3},  // not a multiple of the increment
      {"Gain", "2.5", 1, "2.500", {"Gain"}, 9},
      {"Pixel Format", "17825795", 1, "17825795", {"Pixel Format"}, 9},  // Mono10
      {"Reverse X", "1", 1, "1", {"Reverse X"}, 9},
      {"User ID", "line 3 camera", 1, "line 3 camera", {"User ID"}, 9},
      {"Acquisition Stop", "1", 1, "", {}, 9},  // a command that completes later
      {"Scan Type", "1", 0, "0", {}, 3}};       // read-only
  for (const KorvaWrite& row : rows) {
    SCOPED_TRACE(row.parameter);
    const std::uint32_t index = camera.Index(row.parameter);
    camera.host.ClearRecords();
    EXPECT_EQ(camera.Ext().SetParameterValue(index, row.text), row.result);
    const std::vector<std::uint32_t> notices = camera.host.notices;
    for (const char* dependent : row.notified) {
      const std::uint32_t expected = camera.Index(dependent);
      EXPECT_NE(std::find(notices.begin(), notices.end(), expected), notices.end()) << dependent;
    }
    EXPECT_EQ(MessageLevels(camera.host), std::vector<std::uint32_t>(row.level != 9, row.level));
    EXPECT_EQ(camera.Text(index, PARAM_VALUE_TEXT), row.valueText);
  }
  EXPECT_EQ(camera.Register(0x40110, 4), 64u);  // OffsetX's register
}

// Buttons are pressed, never written; pressing any parameter writes "1".
TEST_F(KorvaHost, PressingSaysSoAndWritesOne) {
  ASSERT_EQ(camera.SetLevel("Guru"), 1);
  const struct {
    const char* parameter;
    std::uint32_t kind;
    const char* valueAfter;
  } rows[] = {{"User Set Load", VALUE_KIND_BUTTON, "Press..."},
              {"Acquisition Start", VALUE_KIND_BUTTON, "Press..."},
              {"Device Reset", VALUE_KIND_BUTTON, "Press..."},
              {"Reverse Y", VALUE_KIND_LIST, "1"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.parameter);
    camera.host.ClearRecords();
    const std::uint32_t index = camera.Index(row.parameter);
    EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_VALUE_KIND), row.kind);
    const std::uint64_t before = camera.Simulator().stats().commands;
    if (row.kind == VALUE_KIND_BUTTON) {
      EXPECT_EQ(camera.Ext().SetParameterValue(index, "1"), 0);
      EXPECT_EQ(camera.Simulator().stats().commands, before);
    }
    EXPECT_EQ(camera.Ext().PressParameterButton(nullptr, index), 1);
    EXPECT_GT(camera.Simulator().stats().commands, before);
    EXPECT_EQ(camera.host.MessagesOfLevel(MESSAGE_INFORMATION),
              std::vector<std::string>{std::string(row.parameter) + " button was clicked."});
    EXPECT_EQ(camera.Text(index, PARAM_VALUE_TEXT), row.valueAfter);
  }
}

}  // namespace
}  // namespace vq::test
