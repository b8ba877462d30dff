// The KORVA example through the host interface: every attribute of every
// parameter at every visibility level against the description and the
// simulated camera's register image; writes of every value kind with the
// change notices they cause; button presses; and the camera services behind
// QueryCommand and ExecuteCommand: visibility level, parameter texts, model
// and help file names, configuration save, parameters named by the protocol
// driver. (The baud rate switched: OpenCameraHostTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "support/ComputedRegisters.h"
#include "support/HostCamera.h"
#include "support/KorvaXml.h"

namespace vq::test {
namespace {

struct Expected {
  std::string name;
  std::string displayName;
  std::string category;  // top-level category's display name
  std::uint32_t visibility = 1;
  std::uint32_t kind = VALUE_KIND_NUMBER;
  std::uint32_t writable = 0;
  std::string valueText;
  std::vector<std::pair<std::uint32_t, std::string>> entries;
  float minimum = 0, maximum = 0;
  std::int32_t increment = 0;
};

std::string Printed(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}
std::string Printed(std::int64_t value) {
  return std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
}

// What the host must be shown. Order, names, categories and visibility come
// from the description read with a parser of the tests' own; access, values,
// limits and entry availability from a second node map of our GenApi over the
// camera's register image (GenApi's own suites check how it reads them).
class ExpectedParameters {
 public:
  explicit ExpectedParameters(HostCamera& camera) : port_(camera.Simulator().device().registers()) {
    map_._LoadXMLFromString(xml_.Text().c_str());
    map_._Connect(&port_, "Device");
  }

  std::vector<Expected> Parameters() {
    std::vector<Expected> parameters;
    xml_.Walk([&](const pugi::xml_node& element, const std::vector<std::string>& path) {
      GenApi::INode* node = map_._GetNode(element.attribute("Name").value());
      if (node->GetAccessMode() != GenApi::NI)
        parameters.push_back(Describe(element, node, path[1]));
    });
    return parameters;
  }

 private:
  static Expected Describe(const pugi::xml_node& e, GenApi::INode* node,
                           const std::string& category) {
    Expected p;
    p.name = e.attribute("Name").value();
    p.displayName = KorvaXml::DisplayName(e);
    p.category = category;
    const std::string visibility = KorvaXml::Child(e, "Visibility");
    p.visibility = visibility == "Expert"      ? 2
                   : visibility == "Guru"      ? 3
                   : visibility == "Invisible" ? 4
                                               : 1;
    const GenApi::EAccessMode access = node->GetAccessMode();
    p.writable = access == GenApi::RW ? 1 : 0;
    const std::vector<std::pair<std::uint32_t, std::string>> trueFalse = {{1, "True"},
                                                                          {0, "False"}};
    if (access == GenApi::NA) {
      p.valueText = "Not Available";
    } else if (access == GenApi::WO) {
      p.kind = VALUE_KIND_BUTTON;
      p.writable = 1;
      p.valueText = "Press...";
    } else if (auto* integer = dynamic_cast<GenApi::IInteger*>(node)) {
      p.minimum = float(integer->GetMin());
      p.maximum = float(integer->GetMax());
      p.increment = std::int32_t(float(integer->GetInc()));
      p.valueText = Printed(integer->GetValue());
    } else if (auto* boolean = dynamic_cast<GenApi::IBoolean*>(node)) {
      p.kind = VALUE_KIND_LIST;
      p.entries = trueFalse;
      p.valueText = boolean->GetValue() ? "1" : "0";
    } else if (auto* number = dynamic_cast<GenApi::IFloat*>(node)) {
      p.minimum = float(number->GetMin());
      p.maximum = float(number->GetMax());
      p.valueText = Printed("%.3f", number->GetValue());
    } else if (auto* text = dynamic_cast<GenApi::IString*>(node)) {
      p.kind = VALUE_KIND_TEXT;
      p.valueText = text->GetValue().c_str();
    } else if (dynamic_cast<GenApi::IRegister*>(node) != nullptr) {
      p.writable = 0;
    } else if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(node)) {
      p.kind = VALUE_KIND_LIST;
      GenApi::NodeList_t entries;
      enumeration->GetEntries(entries);
      for (GenApi::INode* entry : entries) {
        if (!GenApi::IsAvailable(entry)) continue;
        p.entries.emplace_back(std::uint32_t(dynamic_cast<GenApi::IEnumEntry*>(entry)->GetValue()),
                               entry->GetDisplayName().c_str());
      }
      p.valueText = Printed(enumeration->GetIntValue());
    } else {  // a command that is not write-only: no value to read
      p.kind = VALUE_KIND_LIST;
      p.entries = trueFalse;
    }
    return p;
  }

  KorvaXml xml_;
  RecordingPort port_;
  GenApi::CNodeMapRef map_{"Device"};
};

class KorvaHost : public OpenedCamera {
 protected:
  KorvaHost() : OpenedCamera(KorvaAreaProfile()) {}
};
using KorvaServices = KorvaHost;

TEST_F(KorvaHost, EveryAttributeOfEveryParameterAtEveryLevel) {
  const std::vector<Expected> parameters = ExpectedParameters(camera).Parameters();
  VQ_Ext& ext = camera.Ext();
  ASSERT_EQ(ext.GetParameterCount(), parameters.size());
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
      EXPECT_EQ(camera.Text(index, PARAM_VALUE_TEXT), p.valueText);
      EXPECT_EQ(camera.Word<float>(index, PARAM_MINIMUM), p.minimum);
      EXPECT_EQ(camera.Word<float>(index, PARAM_MAXIMUM), p.maximum);
      EXPECT_EQ(camera.Word<std::int32_t>(index, PARAM_INCREMENT), p.increment);
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

TEST_F(KorvaServices, VisibilityLevelIsQueriedAndSetByName) {
  EXPECT_EQ(QueryText(Ext(), CMD_VISIBILITY_LEVEL, 515), "#");
  EXPECT_EQ(QueryText(Ext(), CMD_VISIBILITY_LEVEL, 516), "Guru");  // a fresh camera's
  const struct {
    const char* name;
    std::uint32_t size;
    std::int32_t result;
    const char* level;  // queried afterwards
  } rows[] = {{"guru", 5, 0, "Guru"},
              {"expert", 516, 1, "Expert"},
              {"GURU", 516, 1, "Guru"},
              {"BeGiNnEr", 516, 1, "Beginner"},
              {"invisible", 516, 1, "Invisible"},
              {"Guru ", 516, 0, "Beginner"},  // any other text sets Beginner
              {"Expert", 517, 0, "Beginner"},
              {"", 516, 0, "Beginner"}};
  for (const auto& row : rows) {
    std::vector<char> data(row.size + 1, '\0');
    std::strncpy(data.data(), row.name, row.size);
    EXPECT_EQ(Ext().ExecuteCommand(CMD_VISIBILITY_LEVEL, data.data(), row.size), row.result)
        << row.name;
    EXPECT_EQ(QueryText(Ext(), CMD_VISIBILITY_LEVEL, 516), row.level) << row.name;
  }
  // A 516-byte block without a terminator is read as at most 516 characters.
  std::vector<char> unterminated(516, 'x');
  EXPECT_EQ(Ext().ExecuteCommand(CMD_VISIBILITY_LEVEL, unterminated.data(), 516), 0);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_VISIBILITY_LEVEL, nullptr, 516), 0);
  EXPECT_EQ(Ext().QueryCommand(CMD_VISIBILITY_LEVEL, nullptr, 516), 0);
}

TEST_F(KorvaServices, ParameterTextsAreAppendedToTheHostsList) {
  const std::uint32_t width = camera.Index("Width");
  std::vector<ParameterTextItem> texts = {{"kept", 9}};
  ParameterTextsQuery query{width, 0, &texts};
  EXPECT_EQ(Ext().QueryCommand(CMD_PARAMETER_TEXTS, &query, 15), 0);
  EXPECT_EQ(texts.size(), 1u);
  EXPECT_EQ(Ext().QueryCommand(CMD_PARAMETER_TEXTS, &query, 16), 1);
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[1].text, "Width\r");
  EXPECT_EQ(texts[1].style, 2u);
  EXPECT_EQ(texts[2].text, "Width of the image in pixels");  // the tool tip stands in
  EXPECT_EQ(texts[2].style, 0u);
  query.parameterIndex = Ext().GetParameterCount();
  EXPECT_EQ(Ext().QueryCommand(CMD_PARAMETER_TEXTS, &query, 16), 0);
  EXPECT_EQ(texts.size(), 3u);
  ASSERT_EQ(camera.host.MessagesOfLevel(MESSAGE_FAILURE).size(), 1u);
  query.texts = nullptr;
  EXPECT_EQ(Ext().QueryCommand(CMD_PARAMETER_TEXTS, &query, 16), 0);
}

TEST_F(KorvaServices, ModelAndHelpFileNames) {
  EXPECT_EQ(QueryText(Ext(), CMD_MODEL_NAME, 64), "A2040M");
  EXPECT_EQ(QueryText(Ext(), CMD_MODEL_NAME, 4), "A20");
  EXPECT_EQ(QueryText(Ext(), CMD_HELP_FILE_NAME, 64), "KORVA_A2040M.chm");
  EXPECT_EQ(QueryText(Ext(), CMD_HELP_FILE_NAME, 8), "KORVA_A");
  EXPECT_EQ(Ext().QueryCommand(CMD_MODEL_NAME, nullptr, 64), 0);
  // Sizes of no buffer (0, or 2^31 and above): answered, nothing written.
  for (std::uint32_t id : {CMD_MODEL_NAME, CMD_HELP_FILE_NAME}) {
    for (std::uint32_t size : {0u, 0x80000000u, 0xFFFFFFFFu}) {
      char text[32] = "#";
      EXPECT_EQ(Ext().QueryCommand(id, text, size), 1) << id << " size " << size;
      EXPECT_STREQ(text, "#") << id << " size " << size;
    }
  }
}

TEST_F(KorvaServices, SavedConfigurationReachesTheCamerasStore) {
  ASSERT_EQ(Ext().QueryCommand(CMD_CAN_SAVE_CONFIGURATION, nullptr, 0), 1);
  ASSERT_EQ(Ext().SetParameterValue(camera.Index("Width"), "1024"), 1);
  EXPECT_EQ(camera.Simulator().device().saveCount(), 0u);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SAVE_CONFIGURATION, nullptr, 0), 1);
  EXPECT_EQ(camera.Simulator().device().saveCount(), 1u);
  std::vector<std::uint8_t> stored;
  ASSERT_TRUE(camera.Simulator().device().storedConfiguration().peek(0x40108, 4, stored));
  EXPECT_EQ(stored, (std::vector<std::uint8_t>{0x00, 0x00, 0x04, 0x00}));
  EXPECT_TRUE(camera.host.messages.empty());
}

TEST_F(KorvaServices, ParametersNamedByTheDriver) {
  ASSERT_EQ(camera.SetLevel("Invisible"), 1);
  const struct {
    const char* name;
    std::int32_t visible;
    std::int32_t refreshed;
  } rows[] = {
      {"Width", 1, 1},           {"KORVAServiceMode", 0, 1},  // invisible feature
      {"NoSuchParameter", 0, 0}, {"GCPVersion", 0, 0},  // never shown, whatever the driver knows
      {"gcpWidth", 0, 0},        {"", 0, 1},            // nothing to refresh
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Ext().QueryCommand(CMD_IS_PARAMETER_VISIBLE, const_cast<char*>(row.name), 0),
              row.visible)
        << row.name;
    EXPECT_EQ(Ext().ExecuteCommand(CMD_REFRESH_PARAMETER, const_cast<char*>(row.name), 0),
              row.refreshed)
        << row.name;
  }
  EXPECT_EQ(Ext().QueryCommand(CMD_IS_PARAMETER_VISIBLE, nullptr, 0), 0);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_REFRESH_PARAMETER, nullptr, 0), 0);
}

TEST_F(KorvaServices, RefreshForcesTheNextReadToTheCamera) {
  const std::uint32_t width = camera.Index("Width");
  auto readsOf = [&] {
    const std::uint64_t before = camera.Simulator().stats().commands;
    EXPECT_EQ(camera.Text(width, PARAM_VALUE_TEXT), "2048");
    return camera.Simulator().stats().commands - before;
  };
  readsOf();
  EXPECT_EQ(readsOf(), 0u);  // cached
  char name[] = "Width";
  ASSERT_EQ(Ext().ExecuteCommand(CMD_REFRESH_PARAMETER, name, sizeof name), 1);
  EXPECT_GE(readsOf(), 1u);
  EXPECT_EQ(readsOf(), 0u);
}

}  // namespace
}  // namespace vq::test
