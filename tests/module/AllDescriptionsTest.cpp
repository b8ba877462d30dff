// Every real camera description: the feature catalogue builds, and every
// feature answers every read query through GenericFeature against a
// zero-filled register image, failing only with GenICam exceptions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "features/CameraFeature.h"
#include "features/FeatureCodes.h"
#include "support/NodeMapFixture.h"

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

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// Reads everything a feature offers; returns how many value reads succeeded.
int ReadEverything(GenericFeature& feature) {
  std::uint32_t code = 0;
  char text[512];
  feature.GetType(code);
  const std::uint32_t type = code;
  try {
    feature.GetAccessMode(code);
    feature.GetVisibility(code);
    feature.GetName(text, sizeof(text));
    feature.GetDisplayName(text, sizeof(text));
    std::uint32_t size = 0;
    if (!feature.GetDescription(nullptr, size)) {
      std::vector<char> description(size);
      EXPECT_EQ(feature.GetDescription(description.data(), size), 1);
    }
  } catch (const GenICam::GenericException&) {
    // Name and access queries let GenICam failures through; they are allowed.
  }
  double number = 0;
  std::uint32_t word = 0;
  switch (type) {
    case FEATURE_TYPE_INTEGER:
    case FEATURE_TYPE_FLOAT:
      return feature.GetValue(&number, 8);
    case FEATURE_TYPE_BOOLEAN:
    case FEATURE_TYPE_ENUMERATION:
      return feature.GetValue(&word, 4);
    case FEATURE_TYPE_STRING:
      return feature.GetValue(text, sizeof(text));
    default:
      return feature.GetValue(&number, 8);
  }
}

class AllDescriptions : public ::testing::TestWithParam<std::string> {};

TEST_P(AllDescriptions, CatalogueBuildsAndEveryFeatureReads) {
  const std::string path = std::string(VQ_GENICAM_XML_DIR) + "/" + GetParam();
  LoadedNodeMap map(ReadFile(path));
  CameraFeature tree(*map.reference);
  std::uint32_t count = 0;
  tree.GetFeatureCount(count);
  EXPECT_GT(count, 0u);
  int reads = 0;
  for (std::uint32_t index = 0; index < count; ++index) {
    GenericFeature feature;
    ASSERT_EQ(tree.GetFeatureByIndex(index, feature), 1) << index;
    std::vector<GenICam::gcstring> categoryPath;
    ASSERT_EQ(tree.GetFeatureCategory(index, categoryPath), 1) << index;
    EXPECT_GE(categoryPath.size(), 1u);
    reads += ReadEverything(feature);
  }
  GenericFeature feature;
  EXPECT_EQ(tree.GetFeatureByIndex(count, feature), 0);
  RecordProperty("features", static_cast<int>(count));
  RecordProperty("reads", reads);
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
