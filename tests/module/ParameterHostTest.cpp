// Parameters as a host sees them: the module loaded with dlopen, a camera
// opened through command 25 and served by the simulator from a description
// made for the odd corners of value texts, size rules and writes; and the
// baud-rate entries of a made-up description behind a frame grabber's mask.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/DescriptionText.h"
#include "support/ForwardingLink.h"
#include "support/HostCamera.h"

namespace vq::test {
namespace {

const std::string kLongLabel(600, 'x');

std::string EdgeDescription() {
  return Description(R"(
  <Category Name="Root"><pFeature>Acquisition</pFeature><pFeature>Loose</pFeature></Category>
  <Category Name="Acquisition">
    <pFeature>Big</pFeature><pFeature>TwoTo32</pFeature><pFeature>Minus</pFeature>
    <pFeature>Count</pFeature><pFeature>Fraction</pFeature><pFeature>Two</pFeature>
    <pFeature>Odd</pFeature><pFeature>NoneLeft</pFeature><pFeature>Flag</pFeature>
    <pFeature>Label</pFeature><pFeature>Press</pFeature><pFeature>Missing</pFeature>
    <pFeature>Blob</pFeature><pFeature>Fixed</pFeature>
  </Category>
  <Integer Name="Off"><Value>0</Value></Integer>
  <Integer Name="Loose"><Value>1</Value></Integer>
  <Integer Name="Big"><Value>3000000000</Value></Integer>
  <Integer Name="TwoTo32"><Value>4294967296</Value></Integer>
  <Integer Name="Minus"><Value>-5</Value></Integer>
  <Integer Name="Count"><Description>How many</Description><pValue>CountReg</pValue><Min>0</Min><Max>10</Max><Inc>1</Inc></Integer>
  <Float Name="Fraction"><Value>1.23456</Value></Float>
  <Float Name="Two"><Value>2</Value><Min>-1.5</Min><Max>8</Max></Float>
  <Enumeration Name="Odd">
    <EnumEntry Name="Zero"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Gone"><pIsAvailable>Off</pIsAvailable><Value>7</Value></EnumEntry>
    <EnumEntry Name="AllOnes"><DisplayName>All ones</DisplayName><Value>4294967295</Value></EnumEntry>
    <pValue>OddReg</pValue>
  </Enumeration>
  <Enumeration Name="NoneLeft">
    <EnumEntry Name="Never"><pIsAvailable>Off</pIsAvailable><Value>0</Value></EnumEntry>
    <pValue>NoneLeftReg</pValue>
  </Enumeration>
  <Boolean Name="Flag"><pValue>FlagReg</pValue></Boolean>
  <String Name="Label"><Value>)" +
                     kLongLabel + R"(</Value></String>
  <Command Name="Press"><ImposedAccessMode>WO</ImposedAccessMode><pValue>PressReg</pValue><CommandValue>1</CommandValue></Command>
  <Integer Name="Missing"><pIsAvailable>Off</pIsAvailable><Value>1</Value></Integer>
  <Register Name="Blob"><Address>0x40018</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>
)" + IntRegNode("CountReg", 0x40000, 4) +
                     IntRegNode("OddReg", 0x40008, 8) + IntRegNode("FlagReg", 0x40010, 4) +
                     IntRegNode("PressReg", 0x40014, 4) + IntRegNode("Fixed", 0x4001C, 4, "RO") +
                     IntRegNode("NoneLeftReg", 0x40020, 4));
}

class EdgeCamera : public OpenedCamera {
 protected:
  EdgeCamera() : OpenedCamera(ProfileForDescription(EdgeDescription(), kKorvaModel)) {}
  void SetUp() override {
    OpenedCamera::SetUp();
    ASSERT_EQ(camera.SetLevel("Invisible"), 1);
  }
  std::uint32_t Index(const char* name) { return camera.Index(name); }
};

// (Every kind of record on the KORVA example: KorvaHostTest.)
struct RecordRow {
  const char* name;
  std::uint32_t kind;
  const char* valueText;
  std::uint32_t writable;
  std::int32_t entries;
};

TEST_F(EdgeCamera, RecordsFollowAccessAndType) {
  const std::string label511(511, 'x');
  const RecordRow rows[] = {
      {"Big", VALUE_KIND_NUMBER, "-1294967296", 1, 0},  // low 32 bits, signed
      {"TwoTo32", VALUE_KIND_NUMBER, "0", 1, 0},
      {"Minus", VALUE_KIND_NUMBER, "-5", 1, 0},
      {"Fraction", VALUE_KIND_NUMBER, "1.235", 1, 0},
      {"Odd", VALUE_KIND_LIST, "0", 1, 2},  // the unavailable entry is left out
      // No entry available: GenApi makes the enumeration itself not available.
      {"NoneLeft", VALUE_KIND_NUMBER, "Not Available", 0, 0},
      {"Label", VALUE_KIND_TEXT, label511.c_str(), 1, 0},
      {"Fixed", VALUE_KIND_NUMBER, "0", 0, 0}};  // a read-only integer register
  for (const RecordRow& row : rows) {
    SCOPED_TRACE(row.name);
    const std::uint32_t index = Index(row.name);
    EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_VALUE_KIND), row.kind);
    EXPECT_EQ(camera.Text(index, PARAM_VALUE_TEXT), row.valueText);
    EXPECT_EQ(camera.Word<std::uint32_t>(index, PARAM_WRITABLE), row.writable);
    EXPECT_EQ(camera.Word<std::int32_t>(index, PARAM_ENTRY_COUNT), row.entries);
  }
  EXPECT_TRUE(camera.host.messages.empty());
}

TEST_F(EdgeCamera, EntryBlocksCarryValueAndNameBackToBack) {
  const std::uint32_t odd = Index("Odd");
  const std::int32_t needed = 2 * sizeof(EntryBlock);
  EntryBlock blocks[3];
  std::memset(blocks, 0xCC, sizeof blocks);
  EXPECT_EQ(Ext().GetParameterAttribute(odd, PARAM_ENTRY_LIST, blocks, needed - 1), 0);
  EXPECT_EQ(blocks[0].value, 0xCCCCCCCCu);
  ASSERT_EQ(Ext().GetParameterAttribute(odd, PARAM_ENTRY_LIST, blocks, needed), 1);
  const std::pair<std::uint32_t, std::string> entries[] = {{0, "EnumEntry_Odd_Zero"},
                                                           {0xFFFFFFFFu, "All ones"}};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(blocks[i].value, entries[i].first);
    EXPECT_EQ(std::string(blocks[i].name), entries[i].second);
    EXPECT_EQ(blocks[i].unused[0], 0xCC);  // not written
    EXPECT_EQ(blocks[i].unused[1023], 0xCC);
    EXPECT_EQ(blocks[i].reserved1, 0u);
    EXPECT_EQ(blocks[i].reserved2, 0u);
  }
  EXPECT_EQ(blocks[2].value, 0xCCCCCCCCu);
  // No entries: nothing written, result 1.
  std::uint32_t untouched = 0xCCCCCCCC;
  EXPECT_EQ(Ext().GetParameterAttribute(Index("Count"), PARAM_ENTRY_LIST, &untouched, 0), 1);
  EXPECT_EQ(untouched, 0xCCCCCCCCu);
}

// Size rules of GetParameterAttribute on "Count" (display name of 5
// characters): texts need at least their length and come back cut by one at
// that size; words need exactly 4 bytes or at least 4 (compared as unsigned).
struct SizeRow {
  std::uint32_t code;
  std::int32_t size;
  std::int32_t result;
  std::size_t written;  // bytes changed at the start of the buffer
};

TEST_F(EdgeCamera, SizeRulesOfEveryCode) {
  const std::int32_t kTwoTo31 = static_cast<std::int32_t>(0x80000000u);
  // clang-format off
  const SizeRow rows[] = {
      {PARAM_DISPLAY_NAME, 0, 0, 0},         {PARAM_DISPLAY_NAME, 3, 0, 0},
      {PARAM_DISPLAY_NAME, 4, 0, 0},         {PARAM_DISPLAY_NAME, 5, 1, 5},
      {PARAM_DISPLAY_NAME, 6, 1, 6},         {PARAM_DISPLAY_NAME, 515, 1, 515},
      {PARAM_DISPLAY_NAME, kTwoTo31, 0, 0},  {PARAM_DISPLAY_NAME, -1, 0, 0},
      {PARAM_CATEGORY_INDEX, 3, 0, 0},       {PARAM_CATEGORY_INDEX, 8, 1, 4},
      {PARAM_CATEGORY_INDEX, kTwoTo31, 1, 4}, {PARAM_MINIMUM, 515, 1, 4},
      {PARAM_MAXIMUM, 5, 1, 4},              {PARAM_INCREMENT, 8, 0, 0},
      {PARAM_INCREMENT, 4, 1, 4},            {PARAM_ENTRY_COUNT, 5, 0, 0},
      {PARAM_WRITABLE, 0, 0, 0},             {PARAM_RESERVED9, 3, 0, 0},
      {PARAM_VALUE_KIND, kTwoTo31, 0, 0},    {PARAM_CONSTANT_FOUR, 0, 1, 4},
      {PARAM_IDENTIFIER, 8, 0, 0},           {PARAM_DECIMALS, 515, 1, 4},
      {14, 4, 0, 0},                         {0xFFFFFFFFu, 4, 0, 0}};
  // clang-format on
  const std::uint32_t index = Index("Count");
  for (const SizeRow& row : rows) {
    SCOPED_TRACE("code " + std::to_string(row.code) + " size " + std::to_string(row.size));
    unsigned char buffer[600];
    std::memset(buffer, 0xEE, sizeof buffer);
    EXPECT_EQ(Ext().GetParameterAttribute(index, row.code, buffer, row.size), row.result);
    std::size_t changed = 0;
    for (std::size_t i = 0; i < sizeof buffer; ++i) {
      if (buffer[i] != 0xEE) changed = i + 1;
    }
    EXPECT_EQ(changed, row.written);
    EXPECT_EQ(Ext().GetParameterAttribute(index, row.code, nullptr, row.size), 0);
  }
  char name[8];
  ASSERT_EQ(Ext().GetParameterAttribute(index, PARAM_DISPLAY_NAME, name, 5), 1);
  EXPECT_STREQ(name, "Coun");
  EXPECT_TRUE(camera.host.messages.empty());
}

TEST_F(EdgeCamera, IndicesOutsideTheCatalogue) {
  const std::uint32_t count = Ext().GetParameterCount();
  const struct {
    std::uint32_t index;
    const char* message;  // level 0, or "" for none
  } rows[] = {
      {count, ""},
      {count + 1, ""},
      {0x80000000u, "GetFeatureInfo fail to get information of parameter index -2147483648."},
      {0xFFFFFFFFu, "GetFeatureInfo fail to get information of parameter index -1."}};
  for (const auto& row : rows) {
    camera.host.ClearRecords();
    for (std::uint32_t code = 0; code <= 14; ++code) {
      std::uint32_t buffer[4] = {7, 7, 7, 7};
      EXPECT_EQ(Ext().GetParameterAttribute(row.index, code, buffer, 4), 0) << code;
      EXPECT_EQ(buffer[0], 7u);
    }
    EXPECT_EQ(Ext().SetParameterValue(row.index, "1"), 0);
    EXPECT_EQ(Ext().PressParameterButton(nullptr, row.index), 0);
    const std::vector<std::string> expected = row.message[0] == '\0'
                                                  ? std::vector<std::string>()
                                                  : std::vector<std::string>(17, row.message);
    EXPECT_EQ(camera.host.MessagesOfLevel(MESSAGE_FAILURE), expected) << row.index;
  }
}

TEST_F(EdgeCamera, CategoryNamesAreCutToTheirBuffer) {
  ASSERT_EQ(Ext().GetCategoryCount(), 1u);  // Acquisition; "Loose" under the root adds none
  const struct {
    std::uint32_t category;
    std::int32_t size;
    std::int32_t result;
    const char* name;  // "#" when untouched
  } rows[] = {{0, 10, 0, "#"}, {0, 11, 1, "Acquisitio"}, {0, 12, 1, "Acquisition"}, {0, 0, 0, "#"},
              {0, -1, 0, "#"}, {2, 64, 0, "#"},          {0x80000000u, 64, 0, "#"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.category) + " size " + std::to_string(row.size));
    char name[64] = "#";
    unsigned char second[8];
    std::memset(second, 0xEE, sizeof second);
    std::uint32_t value = 7;
    EXPECT_EQ(Ext().GetCategoryName(row.category, name, row.size, second, 6, &value), row.result);
    EXPECT_STREQ(name, row.name);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(second[0], row.result ? 0 : 0xEE);
    EXPECT_EQ(second[5], row.result ? 0 : 0xEE);
    EXPECT_EQ(second[6], 0xEE);
  }
  char name[16];
  EXPECT_EQ(Ext().GetCategoryName(0, name, sizeof name, nullptr, 0, nullptr), 1);
}

TEST_F(EdgeCamera, FeatureUnderTheRootIsFiledUnderTheRootsName) {
  ASSERT_EQ(Ext().GetCategoryCount(), 1u);  // opening registers no category for it
  const std::uint32_t category = camera.Word<std::uint32_t>(Index("Loose"), PARAM_CATEGORY_INDEX);
  char name[32] = {};
  std::uint32_t value = 7;
  ASSERT_EQ(Ext().GetCategoryName(category, name, sizeof name, nullptr, 0, &value), 1);
  EXPECT_STREQ(name, "Root");
  EXPECT_EQ(category, 1u);  // its record added the root's name
  EXPECT_EQ(Ext().GetCategoryCount(), 2u);
}

// A write through SetParameterValue and what the camera then holds.
struct WriteRow {
  const char* name;
  const char* text;
  std::int32_t result;
  const char* valueText;  // read back afterwards
  std::uint32_t level;    // of the one message expected, 9 for none
};

TEST_F(EdgeCamera, WritesConvertTheHostsText) {
  const WriteRow rows[] = {
      {"Count", "2.9", 1, "2", 9},        // truncated toward zero
      {"Count", " 7 apples", 1, "7", 9},  // reading stops after the number
      {"Count", "20", 0, "7", 3},         // above the maximum: GenApi's text
      {"Count", "abc", 0, "7", 0},        // not a number: nothing written
      {"Count", "", 0, "7", 0},
      {"Count", "1e30", 0, "7", 0},  // beyond 64 bits
      {"Minus", "-2.9", 1, "-2", 9},
      {"Two", "nan", 0, "2.000", 0},
      {"Two", "3.25", 1, "3.250", 9},
      {"Two", "9", 0, "3.250", 3},  // above the maximum
      {"Odd", "-1", 1, "-1", 9},    // the entry 4294967295
      {"Odd", "0", 1, "0", 9},
      {"Odd", "4294967295", 1, "-1", 9},
      {"Odd", "All ones", 0, "-1", 0},  // entries go by value, never by name
      {"Odd", "9", 0, "-1", 3},         // no such entry
      {"Flag", "7", 1, "1", 9},
      {"Flag", "0", 1, "0", 9},
      {"Flag", "True", 0, "0", 0},
      {"Label", "twenty characters ok", 1, "twenty characters ok", 9},  // written whole
      {"Blob", "5", 1, "", 9},  // a plain register: nothing to write
      {"Missing", "3", 0, "Not Available", 3},
      {"Press", "1", 0, "Press...", 9},  // buttons only through PressParameterButton
  };
  for (const WriteRow& row : rows) {
    SCOPED_TRACE(std::string(row.name) + " <- '" + row.text + "'");
    camera.host.ClearRecords();
    const std::uint32_t index = Index(row.name);
    EXPECT_EQ(Ext().SetParameterValue(index, row.text), row.result);
    EXPECT_EQ(camera.Text(index, PARAM_VALUE_TEXT), row.valueText);
    const std::vector<HostMessage>& m = camera.host.messages;
    ASSERT_EQ(MessageLevels(camera.host), std::vector<std::uint32_t>(row.level != 9, row.level));
    if (row.level == 3) {
      EXPECT_EQ(m[0].text.find("CLProtocol"), std::string::npos) << m[0].text;
    } else if (row.level == 0) {
      EXPECT_EQ(m[0].text, std::string("Parameter ") + row.name + ": \"" + row.text +
                               "\" is not a valid number; the value was not changed.");
    }
  }
  EXPECT_EQ(camera.Register(0x40000, 4), 7u);
  EXPECT_EQ(camera.Register(0x40008, 8), 0xFFFFFFFFu);
  EXPECT_EQ(Ext().SetParameterValue(Index("Count"), nullptr), 0);
}

std::int32_t IgnoringHost(std::uint32_t, std::uint32_t, void*, HostContext) { return 1; }

TEST_F(EdgeCamera, CameraKeepsTheCallbackRegisteredBeforeItWasCreated) {
  ASSERT_EQ(Ext().SetHostCallback(&IgnoringHost, 0), 1);
  EXPECT_EQ(Ext().SetParameterValue(Index("Count"), "abc"), 0);
  EXPECT_EQ(camera.host.MessagesOfLevel(MESSAGE_FAILURE).size(), 1u);
}

TEST_F(EdgeCamera, ServicesOfACameraWithoutTheirFeatures) {
  // No DeviceModelName: answered, nothing written.
  EXPECT_EQ(QueryText(Ext(), CMD_MODEL_NAME, 64), std::string(64, '#'));
  char buffer[8];
  EXPECT_EQ(Ext().QueryCommand(CMD_CAN_SAVE_CONFIGURATION, buffer, sizeof buffer), 0);
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SAVE_CONFIGURATION, nullptr, 0), 0);
  EXPECT_EQ(camera.host.MessagesOfLevel(MESSAGE_FAILURE),
            std::vector<std::string>{"Unable to save camera configuration"});
  EXPECT_EQ(QueryWord(Ext(), CMD_MAX_BAUD_RATE), 1u);
  EXPECT_EQ(QueryWord(Ext(), CMD_CURRENT_BAUD_RATE), 1u);
  std::uint32_t rate = 1;
  EXPECT_EQ(Ext().ExecuteCommand(CMD_SET_BAUD_RATE, &rate, 4), 0);
  // Texts of a parameter without description or tool tip: the name only, result 0.
  std::vector<ParameterTextItem> texts;
  ParameterTextsQuery query{Index("Fixed"), 0, &texts};
  EXPECT_EQ(Ext().QueryCommand(CMD_PARAMETER_TEXTS, &query, sizeof query), 0);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, "Fixed\r");
}

// The camera refuses a write: the level-3 text, then the outcome by error code.
TEST_F(EdgeCamera, DeviceRefusalsReportTheCamerasTextAndDecideByCode) {
  const struct {
    const char* name;
    std::uint16_t status;  // forced answer status, 0 for none
    bool silent;
    std::int32_t alive;
    std::int32_t result;
    bool lost;  // "Camera is not available." follows
  } rows[] = {{"write protect", 0x8004, false, 1, 0, false},
              {"warning", 0x0001, false, 1, 1, false},
              {"silent, camera answers", 0, true, 1, 0, false},
              {"silent, camera gone", 0, true, 0, 0, true}};
  const std::uint32_t count = Index("Count");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    camera.host.ClearRecords();
    camera.host.aliveAnswer = row.alive;
    sim::FaultPlan& faults = camera.Simulator().faults();
    faults = sim::FaultPlan();
    faults.forcedStatus = row.status;
    faults.forcedStatusCount = row.status != 0 ? 1 : 0;
    faults.silent = row.silent;
    EXPECT_EQ(Ext().SetParameterValue(count, "3"), row.result);
    const std::vector<std::string> deviceTexts = camera.host.MessagesOfLevel(MESSAGE_DEVICE_ERROR);
    ASSERT_EQ(deviceTexts.size(), 1u);
    EXPECT_EQ(deviceTexts[0].rfind("CLProtocol message: '", 0), 0u) << deviceTexts[0];
    EXPECT_EQ(camera.host.MessagesOfLevel(MESSAGE_FAILURE),
              row.lost ? std::vector<std::string>{"Camera is not available."}
                       : std::vector<std::string>());
    // Only the serial time-out asks whether the camera is still there.
    const auto& requests = camera.host.serialRequests;
    EXPECT_EQ(std::count(requests.begin(), requests.end(), SERIAL_IS_PORT_ALIVE), row.silent);
  }
  camera.Simulator().faults() = sim::FaultPlan();
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
TEST(BaudRateEntries, NamesIgnoreCaseUnknownNamesCountAsNoRateAndOtherBitsAreRefused) {
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
      {16, 1, 16, 16}, {128, 0, 16, 16},  // no entry for it: nothing written
      {1, 1, 1, 1},    {256, 0, 1, 1},    // outside the table
      {0, 1, 64, 0},                      // bit 0 is the name outside the table, which reads as 0
  };
  for (const auto& row : rows) {
    std::uint32_t bit = row.bit;
    EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, &bit, sizeof bit), row.result) << row.bit;
    EXPECT_EQ(camera.Register(0x40000, 4), row.current) << row.bit;
    EXPECT_EQ(QueryWord(ext, CMD_CURRENT_BAUD_RATE), row.queried) << row.bit;
  }
  EXPECT_EQ(ext.ExecuteCommand(CMD_SET_BAUD_RATE, nullptr, 4), 0);
  EXPECT_EQ(ext.QueryCommand(CMD_MAX_BAUD_RATE, nullptr, 4), 0);
}

}  // namespace
}  // namespace vq::test
