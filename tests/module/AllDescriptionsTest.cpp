// Every real camera description, served by the simulator from a zero-filled
// register image and opened through the host interface: every attribute and
// the texts of every parameter at visibility Invisible, with nothing but the
// interface's own results (GenICam failures of the name, access and
// visibility queries may leave the call, as they do for any host).
#include <GenICam.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "support/ComputedRegisters.h"
#include "support/DescriptionText.h"
#include "support/HostCamera.h"

namespace vq::test {
namespace {

std::vector<std::string> DescriptionFiles() {
  std::vector<std::string> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(VQ_GENICAM_XML_DIR, error)) {
    if (entry.path().extension() == ".xml") files.push_back(entry.path().filename().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// Asks every attribute of one parameter; returns how many calls threw.
int FetchEverything(VQ_Ext& ext, std::uint32_t index) {
  int thrown = 0;
  std::vector<EntryBlock> entries(1);
  for (std::uint32_t code = 0; code <= 14; ++code) {
    try {
      std::int32_t size = code == PARAM_DISPLAY_NAME || code == PARAM_VALUE_TEXT ? 512 : 4;
      if (code == PARAM_ENTRY_LIST) {
        std::int32_t count = 0;
        ext.GetParameterAttribute(index, PARAM_ENTRY_COUNT, &count, 4);
        entries.resize(std::max(count, 1));
        size = static_cast<std::int32_t>(entries.size() * sizeof(EntryBlock));
      }
      const std::int32_t result = ext.GetParameterAttribute(index, code, entries.data(), size);
      EXPECT_EQ(result, code <= 13 ? 1 : 0) << "parameter " << index << " code " << code;
    } catch (const GenICam::GenericException&) {
      ++thrown;
    }
  }
  try {
    std::vector<ParameterTextItem> texts;
    ParameterTextsQuery query{index, 0, &texts};
    ext.QueryCommand(CMD_PARAMETER_TEXTS, &query, sizeof query);
    EXPECT_FALSE(texts.empty()) << "parameter " << index;
  } catch (const GenICam::GenericException&) {
    ++thrown;
  }
  return thrown;
}

class AllDescriptions : public ::testing::TestWithParam<std::string> {};

TEST_P(AllDescriptions, EveryParameterAnswersThroughTheHostInterface) {
  const std::string text = ReadTextFile(std::string(VQ_GENICAM_XML_DIR) + "/" + GetParam());
  HostCamera camera(ProfileForDescription(text, kKorvaModel));
  CoverComputedRegisters(text, camera.Simulator());
  ASSERT_TRUE(camera.Open()) << (camera.host.messages.empty() ? "" : camera.host.messages[0].text);
  ASSERT_EQ(camera.SetLevel("Invisible"), 1);
  VQ_Ext& ext = camera.Ext();
  const std::uint32_t count = ext.GetParameterCount();
  EXPECT_GT(count, 0u);
  int thrown = 0;
  for (std::uint32_t index = 0; index < count; ++index) thrown += FetchEverything(ext, index);
  char buffer[8];
  EXPECT_EQ(ext.GetParameterAttribute(count, PARAM_CONSTANT_FOUR, buffer, 4), 0);
  // Only the module's own level-0 texts and device errors could appear; a
  // read never reports.
  EXPECT_TRUE(camera.host.MessagesOfLevel(MESSAGE_FAILURE).empty());
  RecordProperty("parameters", static_cast<int>(count));
  RecordProperty("thrown", thrown);
}

std::string TestName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param.substr(0, info.param.size() - 4);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(RealCameras, AllDescriptions, ::testing::ValuesIn(DescriptionFiles()),
                         TestName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AllDescriptions);

TEST(RealCameras, FolderIsPresent) {
  if (DescriptionFiles().empty()) {
    GTEST_SKIP() << "no descriptions in " << VQ_GENICAM_XML_DIR;
  }
  SUCCEED();
}

}  // namespace
}  // namespace vq::test
