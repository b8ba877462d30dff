// The camera services behind QueryCommand and ExecuteCommand, through the host
// interface: visibility level, parameter texts, model and help file names,
// configuration save, parameters named by the protocol driver and the baud
// rate's entries and refusals. (The baud rate switched over a pseudo-terminal
// with vqcam-sim: OpenCameraHostTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "support/DescriptionText.h"
#include "support/ForwardingLink.h"
#include "support/HostCamera.h"

namespace vq::test {
namespace {

class KorvaServices : public OpenedCamera {
 protected:
  KorvaServices() : OpenedCamera(KorvaAreaProfile()) {}
};

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

TEST_F(KorvaServices, BaudRatesOutsideTheTableAndNullBuffersAreRefused) {
  std::uint32_t unknown = 256;
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, &unknown, 4), 0);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, nullptr, 4), 0);
  EXPECT_EQ(Ext().QueryCommand(CMD_MAX_BAUD_RATE, nullptr, 4), 0);
  EXPECT_EQ(QueryWord(Ext(), CMD_CURRENT_BAUD_RATE), 1u);  // unchanged
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

// A frame grabber whose port offers the rates of `mask`.
class MaskedLink : public ForwardingLink {
 public:
  using ForwardingLink::ForwardingLink;
  std::uint32_t SupportedBaudRates() override { return mask; }
  std::uint32_t mask = 0xFF;
};

// Entry names in any letter case, one name outside the table; the rate lives
// in a plain register here, so no line actually switches.
TEST(BaudRateEntries, NamesIgnoreCaseAndUnknownNamesCountAsNoRate) {
  HostCamera camera(ProfileForDescription(Description(R"(
  <Category Name="Root"><pFeature>Serial</pFeature></Category>
  <Category Name="Serial"><pFeature>DeviceSerialPortBaudRate</pFeature></Category>
  <Enumeration Name="DeviceSerialPortBaudRate">
    <EnumEntry Name="baud9600"><Value>1</Value></EnumEntry>
    <EnumEntry Name="Turbo"><Value>64</Value></EnumEntry>
    <EnumEntry Name="BAUD115200"><Value>16</Value></EnumEntry>
    <pValue>RateReg</pValue>
  </Enumeration>
)" + IntRegNode("RateReg", 0x40000, 4)),
                                          kKorvaModel));
  MaskedLink port(camera.Link());
  camera.host.Attach(0, &port);
  ASSERT_TRUE(camera.Open());
  VQ_Ext& ext = camera.Ext();
  for (const auto& row :
       {std::pair<std::uint32_t, std::uint32_t>{17, 16}, {0, 1}, {0xFF, 16}, {0x41, 1}}) {
    port.mask = row.first;
    EXPECT_EQ(QueryWord(ext, CMD_MAX_BAUD_RATE), row.second) << row.first;
  }
  const struct {
    std::uint32_t bit;
    std::int32_t result;
    std::uint32_t current;  // register and query 32 afterwards
    std::uint32_t queried;
  } rows[] = {
      {16, 1, 16, 16},
      {128, 0, 16, 16},  // no entry for it: nothing written
      {1, 1, 1, 1},
      {0, 1, 64, 0},  // bit 0 is the name outside the table, which reads as 0
  };
  for (const auto& row : rows) {
    std::uint32_t bit = row.bit;
    EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, &bit, sizeof bit), row.result) << row.bit;
    EXPECT_EQ(camera.Register(0x40000, 4), row.current) << row.bit;
    EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), row.queried) << row.bit;
  }
}

}  // namespace
}  // namespace vq::test
