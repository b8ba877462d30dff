// The camera services behind QueryCommand and ExecuteCommand, through the host
// interface: visibility level, parameter texts, model and help file names,
// configuration save, parameters named by the protocol driver, the baud rate
// (in process and over a pseudo-terminal with vqcam-sim), and every operation
// before a camera is open or even created.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "SimProcess.h"
#include "support/DescriptionText.h"
#include "support/ForwardingLink.h"
#include "support/HostCamera.h"

namespace vq::test {
namespace {

std::string QueryText(VQ_Ext& ext, std::uint32_t id, std::uint32_t size) {
  std::vector<char> buffer(size + 1, '#');
  buffer[size] = '\0';
  return ext.QueryCommand(id, buffer.data(), size) ? std::string(buffer.data()) : "#";
}

std::uint32_t QueryWord(VQ_Ext& ext, std::uint32_t id) {
  std::uint32_t word = 0xEEEEEEEE;
  EXPECT_EQ(ext.QueryCommand(id, &word, sizeof word), 1) << id;
  return word;
}

class KorvaServices : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(camera.Open());
    camera.host.ClearRecords();
  }
  VQ_Ext& Ext() { return camera.Ext(); }
  HostCamera camera{KorvaAreaProfile()};
};

TEST_F(KorvaServices, VisibilityLevelIsQueriedAndSetByName) {
  EXPECT_EQ(QueryText(Ext(), CMD_VISIBILITY_LEVEL, 515), "#");
  EXPECT_EQ(QueryText(Ext(), CMD_VISIBILITY_LEVEL, 516), "Guru");  // a fresh camera's
  const struct {
    const char* name;
    std::uint32_t size;
    std::int32_t result;
    const char* level;  // queried afterwards
  } rows[] = {
      {"guru", 5, 0, "Guru"},        {"expert", 516, 1, "Expert"},
      {"GURU", 516, 1, "Guru"},      {"BeGiNnEr", 516, 1, "Beginner"},
      {"invisible", 516, 1, "Invisible"},
      {"Guru ", 516, 0, "Beginner"},  // any other text sets Beginner
      {"Expert", 517, 0, "Beginner"}, {"", 516, 0, "Beginner"},
  };
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
      {"Width", 1, 1},
      {"KORVAServiceMode", 0, 1},  // invisible feature
      {"NoSuchParameter", 0, 0},
      {"GCPVersion", 0, 0},        // never shown, whatever the driver knows
      {"gcpWidth", 0, 0},
      {"", 0, 1},                  // nothing to refresh
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

TEST_F(KorvaServices, BaudRatesInProcess) {
  EXPECT_EQ(QueryWord(Ext(), CMD_MAX_BAUD_RATE), 128u);
  EXPECT_EQ(QueryWord(Ext(), CMD_CURRENT_BAUD_RATE), 1u);
  std::uint32_t unknown = 256;
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, &unknown, 4), 0);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, nullptr, 4), 0);
  EXPECT_EQ(Ext().QueryCommand(CMD_MAX_BAUD_RATE, nullptr, 4), 0);
}

TEST_F(KorvaServices, BaudRateSwitchKeepsBothSidesOfTheLineInStep) {
  // The camera and the host's port change together: the camera keeps
  // answering at each rate and no byte arrives at a rate the other side left.
  for (std::uint32_t bit : {16u, 1u}) {
    std::uint32_t rate = bit;
    EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, &rate, sizeof rate), 1) << bit;
    EXPECT_EQ(QueryWord(Ext(), CMD_CURRENT_BAUD_RATE), bit);
    EXPECT_EQ(camera.Simulator().device().baudRate(), bit);
    EXPECT_EQ(camera.Simulator().hostBaudRate(), bit);
  }
  EXPECT_EQ(camera.Simulator().stats().garbledBytes, 0u);
}

// The camera served by the vqcam-sim program on a pseudo-terminal: rates are
// negotiated over a real serial line.
TEST(BaudRateOverPty, NegotiatedSwitchedAndReadBack) {
  SimProcess program;
  std::string error;
  ASSERT_TRUE(program.Start(VQ_SIM_PROGRAM, std::string(VQ_SOURCE_DIR) + "/examples/korva-area",
                            &error))
      << error;
  SerialDeviceLink line(program.DevicePath());
  ASSERT_TRUE(line.IsOpen());
  platform::SetEnv("VQ_DIALOG", "none");
  TestHost host;
  host.cameraText = kKorvaModel;
  host.Attach(0, &line);
  std::uint32_t status = 9;
  ASSERT_EQ(host.Open(0, 0, 0, &status), 1);
  ASSERT_EQ(status, 0u);
  VQ_Ext& ext = host.Extension();

  // The fastest rate both the line and the camera (all eight rates) offer.
  std::uint32_t common = 1;
  for (std::uint32_t bit = 1; bit <= 128; bit <<= 1) {
    if (line.SupportedBaudRates() & bit) common = bit;
  }
  EXPECT_EQ(QueryWord(ext, CMD_MAX_BAUD_RATE), common);
  EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), 1u);
  for (std::uint32_t bit : {16u, 1u}) {
    host.ClearRecords();
    std::uint32_t rate = bit;
    EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, &rate, sizeof rate), 1) << bit;
    EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), bit);
    // The host's own port was switched too (request 20).
    const auto& requests = host.serialRequests;
    EXPECT_NE(std::find(requests.begin(), requests.end(), SERIAL_SET_BAUD_RATE), requests.end());
  }
  EXPECT_EQ(ext.GetParameterCount(), 77u);  // the line still carries the camera's answers
  char model[16] = {};
  EXPECT_EQ(ext.QueryCommand(CMD_MODEL_NAME, model, sizeof model), 1);
  EXPECT_STREQ(model, "A2040M");
  EXPECT_TRUE(host.messages.empty());
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
  for (const auto& row : {std::pair<std::uint32_t, std::uint32_t>{17, 16}, {0, 1}, {0xFF, 16},
                          {0x41, 1}}) {
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
      {0, 1, 64, 0},     // bit 0 is the name outside the table, which reads as 0
  };
  for (const auto& row : rows) {
    std::uint32_t bit = row.bit;
    EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, &bit, sizeof bit), row.result) << row.bit;
    EXPECT_EQ(camera.Register(0x40000, 4), row.current) << row.bit;
    EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), row.queried) << row.bit;
  }
}

TEST(HelpFile, UnnamedModelGivesOnlyTheExtension) {
  std::string text = Description(R"(
  <Category Name="Root"><pFeature>Value</pFeature></Category>
  <Integer Name="Value"><Value>1</Value></Integer>)");
  text.replace(text.find("ModelName=\"ModuleTest\""), 22, "ModelName=\"\"");
  HostCamera camera(ProfileForDescription(text, kKorvaModel));
  ASSERT_TRUE(camera.Open());
  EXPECT_EQ(QueryText(camera.Ext(), CMD_HELP_FILE_NAME, 64), ".chm");
}

// Every operation while the camera exists but no camera is open.
TEST(ServicesWithoutCamera, AnswerWithoutTouchingTheHost) {
  TestHost host;
  VQ_Ext& ext = host.Extension();
  EXPECT_EQ(ext.GetParameterCount(), 0u);
  EXPECT_EQ(ext.GetCategoryCount(), 0u);
  char buffer[600] = {};
  std::uint32_t value = 7;
  EXPECT_EQ(ext.GetCategoryName(0, buffer, 64, nullptr, 0, &value), 0);
  EXPECT_EQ(value, 0u);
  for (std::uint32_t code = 0; code <= 13; ++code) {
    EXPECT_EQ(ext.GetParameterAttribute(0, code, buffer, 4), 0);
  }
  EXPECT_EQ(ext.SetParameterValue(0, "1"), 0);
  EXPECT_EQ(ext.PressParameterButton(nullptr, 0), 0);
  EXPECT_EQ(QueryWord(ext, CMD_MAX_BAUD_RATE), 1u);
  EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), 1u);
  EXPECT_EQ(QueryText(ext, CMD_VISIBILITY_LEVEL, 516), "Guru");
  std::vector<ParameterTextItem> texts;
  ParameterTextsQuery query{0, 0, &texts};
  EXPECT_EQ(ext.QueryCommand(CMD_PARAMETER_TEXTS, &query, 16), 0);
  EXPECT_TRUE(texts.empty());
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(ext.QueryCommand(CMD_MODEL_NAME, buffer, 64), 1);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(ext.QueryCommand(CMD_CAN_SAVE_CONFIGURATION, buffer, 4), 0);
  EXPECT_EQ(ext.QueryCommand(CMD_HELP_FILE_NAME, buffer, 64), 0);
  EXPECT_EQ(ext.QueryCommand(CMD_IS_PARAMETER_VISIBLE, const_cast<char*>("Width"), 6), 0);
  EXPECT_EQ(ext.ExecuteCommand(CMD_REFRESH_PARAMETER, const_cast<char*>(""), 1), 0);
  std::uint32_t bit = 1;
  EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, &bit, 4), 0);
  EXPECT_EQ(ext.ExecuteCommand(CMD_SAVE_CONFIGURATION, nullptr, 0), 0);
  EXPECT_TRUE(host.messages.empty());
  EXPECT_TRUE(host.serialRequests.empty());
}

// A host that never called InitializeCamera: no camera object at all.
TEST(ServicesWithoutCamera, BeforeInitializeCameraEverythingIsRefused) {
  std::unique_ptr<VQ_Ext> ext(CreateModuleExtension());
  ASSERT_NE(ext, nullptr);
  char buffer[600] = {};
  std::uint32_t value = 7;
  EXPECT_EQ(ext->GetParameterCount(), 0u);
  EXPECT_EQ(ext->GetCategoryCount(), 0u);
  EXPECT_EQ(ext->GetCategoryName(0, buffer, 64, nullptr, 0, &value), 0);
  EXPECT_EQ(ext->GetParameterAttribute(0, PARAM_CONSTANT_FOUR, buffer, 4), 0);
  EXPECT_EQ(ext->SetParameterValue(0, "1"), 0);
  EXPECT_EQ(ext->PressParameterButton(nullptr, 0), 0);
  for (std::uint32_t id : {31u, 32u, 48u, 49u, 50u, 51u, 53u, 54u}) {
    EXPECT_EQ(ext->QueryCommand(id, buffer, sizeof buffer), 0) << id;
  }
  for (std::uint32_t id : {26u, 33u, 48u, 52u}) {
    EXPECT_EQ(ext->ExecuteCommand(id, buffer, 516), 0) << id;
  }
}

}  // namespace
}  // namespace vq::test
