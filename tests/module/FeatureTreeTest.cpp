// Catalogue shapes the KORVA example does not have (its catalogue:
// KorvaCatalogueTest): categories without implemented features, a category
// that lists itself, and a feature that is implemented only after the build.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "features/CameraFeature.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

TEST(FeatureTreeShapes, OnlyImplementedFeaturesAreNumberedAndEveryWalkEnds) {
  const struct {
    const char* name;
    std::string nodes;
    std::vector<std::string> features;  // in index order
  } rows[] = {{"categories without implemented features",
               R"(
  <Category Name="Root"><pFeature>A</pFeature><pFeature>Hidden</pFeature></Category>
  <Category Name="A"/>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Integer Name="Hidden"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>)",
               {}},
              {"a category listing itself through another",
               R"(
  <Category Name="Root"><pFeature>A</pFeature></Category>
  <Category Name="A"><pFeature>X</pFeature><pFeature>B</pFeature></Category>
  <Category Name="B"><pFeature>A</pFeature><pFeature>Y</pFeature></Category>
  <Integer Name="X"><Value>1</Value></Integer>
  <Integer Name="Y"><Value>2</Value></Integer>)",
               {"X", "Y"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    LoadedNodeMap map{Description(row.nodes)};
    CameraFeature tree(*map.reference);
    std::uint32_t count = 99;
    tree.GetFeatureCount(count);
    ASSERT_EQ(count, row.features.size());
    GenericFeature feature;
    for (std::uint32_t index = 0; index < count; ++index) {
      ASSERT_EQ(tree.GetFeatureByIndex(index, feature), 1);
      EXPECT_EQ(std::string(feature.Node()->GetName().c_str()), row.features[index]);
    }
    for (std::uint32_t index : {count, count + 1, 0xFFFFFFFFu}) {
      EXPECT_EQ(tree.GetFeatureByIndex(index, feature), 0) << index;
    }
  }
}

std::int32_t CountNotice(std::uint32_t, GenericFeature*, void* context) {
  ++*static_cast<int*>(context);
  return 0;
}

TEST(FeatureTreeShapes, FeatureNotImplementedAtBuildTimeStaysOut) {
  LoadedNodeMap map{Description(R"(
  <Category Name="Root"><pFeature>Before</pFeature><pFeature>Later</pFeature>
    <pFeature>After</pFeature></Category>
  <Integer Name="Before"><Value>1</Value></Integer>
  <Integer Name="Later"><pIsImplemented>Switch</pIsImplemented><Value>1</Value></Integer>
  <Integer Name="After"><Value>1</Value></Integer>
  <Integer Name="Switch"><Value>0</Value></Integer>
)")};
  CameraFeature tree(*map.reference);
  std::uint32_t count = 0, index = 0;
  tree.GetFeatureCount(count);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(tree.GetFeatureIndex("After", index), 1);
  EXPECT_EQ(index, 1u);  // indices stay consecutive

  int notices = 0;
  tree.SetChangeHandler(&CountNotice, &notices);
  dynamic_cast<GenApi::IInteger*>(map.Node("Switch"))->SetValue(1);
  EXPECT_NE(map.Node("Later")->GetAccessMode(), GenApi::NI);
  EXPECT_EQ(tree.GetFeatureIndex("Later", index), 0);
  dynamic_cast<GenApi::IInteger*>(map.Node("Later"))->SetValue(5);
  EXPECT_EQ(notices, 0);
}

}  // namespace
}  // namespace vq::test
