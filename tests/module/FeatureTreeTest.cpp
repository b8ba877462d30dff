// Catalogue shapes the KORVA example does not have (its catalogue:
// KorvaCatalogueTest): categories without implemented features, a category
// that lists itself, a feature that is implemented only after the build; and
// the camera object's category table and a tree build that fails part-way.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "camera/GenericCamera.h"
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

TEST(CameraObject, CategoriesAreFoundByExactNameOrAppendedWithTheirFirst511Characters) {
  GenericCamera camera{ParameterRecordList()};
  const std::string longName(600, 'c');
  const std::pair<std::string, std::int32_t> rows[] = {
      {"Acquisition", 0}, {"Image", 1},  {"Acquisition", 0},
      {"acquisition", 2}, {longName, 3}, {longName.substr(0, 511), 3},
      {longName, 4}};  // the cut name is kept
  for (const auto& [name, index] : rows) EXPECT_EQ(camera.FindOrAddCategory(name.c_str()), index);
  EXPECT_EQ(camera.GetCategoryCount(), 5u);
  EXPECT_STREQ(camera.GetCategoryName(2), "acquisition");
  EXPECT_EQ(std::string(camera.GetCategoryName(3)), longName.substr(0, 511));
  EXPECT_EQ(camera.GetCategoryName(5), nullptr);
}

// A port that fails every read at one address, as a camera that stops
// answering would.
class FailingPort : public MemoryPort {
 public:
  void Read(void* buffer, int64_t address, int64_t length) override {
    if (address == 0x200) throw ACCESS_EXCEPTION("no answer at 0x%llx", (long long)address);
    MemoryPort::Read(buffer, address, length);
  }
};

std::int32_t Host(std::uint32_t, std::uint32_t, void*, HostContext context) {
  ++*reinterpret_cast<int*>(context);
  return 1;
}

TEST(CameraObject, TreeBuildFailingPartWayReleasesTheNodeMap) {
  // "First" gets its change callback before "Second"'s address read fails.
  const std::string xml =
      Description(R"(
  <Category Name="Root"><pFeature>First</pFeature><pFeature>Second</pFeature></Category>
  <IntReg Name="Second"><pAddress>Base</pAddress><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>)" +
                  IntRegNode("First", 0x100, 4) + IntRegNode("Base", 0x200, 4, "RO"));
  FailingPort port;
  auto reference = CreateNodeMapReference();
  LoadNodeMapFromText(*reference, GenICam::gcstring(xml.c_str()));
  ASSERT_TRUE(ConnectNodeMap(*reference, &port));
  GenericCamera camera{ParameterRecordList()};
  int calls = 0;
  camera.hostCallback = &Host;
  camera.hostContext = reinterpret_cast<HostContext>(&calls);
  EXPECT_THROW(camera.AttachNodeMap(std::move(reference)), GenICam::AccessException);
  EXPECT_FALSE(camera.HasFeatureTree());
  EXPECT_EQ(camera.NodeMap(), nullptr);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace vq::test
