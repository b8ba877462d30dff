// The feature catalogue built from "Root": flat indices, category paths,
// register addresses, the four look-ups and the change notifications.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "features/CameraFeature.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

std::string IntReg(const char* name, int address) {
  return std::string("<IntReg Name=\"") + name + "\"><Address>" + std::to_string(address) +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
         "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
}

// Walk order of the features below (flat index: node, path):
//  0 Width   Root/Acquisition Control        register 0x100
//  - Hidden  (not implemented: no entry)
//  1 Gain    Root/Acquisition Control        first invalidating child GainReg 0x200
//  2 Height  Root/Image/Sub                  0x104
//  3 Width   Root/Image/Sub                  (listed a second time)
//  4 Mode    Root/Image                      after a sub-category
//  - Empty   (category without features)
//  5 Label   Root/Misc                       no register: address 0
//  6 Area    Root/Misc                       formula over Width and Height: Width's 0x100
const std::string kTree = Description(
    R"(
  <Category Name="Root"><pFeature>Acquisition</pFeature><pFeature>Image</pFeature>
    <pFeature>Empty</pFeature><pFeature>Misc</pFeature></Category>
  <Category Name="Acquisition"><DisplayName>Acquisition Control</DisplayName>
    <pFeature>Width</pFeature><pFeature>Hidden</pFeature><pFeature>Gain</pFeature></Category>
  <Category Name="Image"><pFeature>Sub</pFeature><pFeature>Mode</pFeature></Category>
  <Category Name="Sub"><pFeature>Height</pFeature><pFeature>Width</pFeature></Category>
  <Category Name="Empty"/>
  <Category Name="Misc"><pFeature>Label</pFeature><pFeature>Area</pFeature></Category>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Integer Name="Hidden"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>
  <Float Name="Gain"><pValue>GainReg</pValue></Float>
  <FloatReg Name="GainReg"><Address>0x200</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess></FloatReg>
  <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="On"><Value>1</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>
  <String Name="Label"><Value>text</Value></String>
  <IntSwissKnife Name="Area"><pVariable Name="W">Width</pVariable><pVariable Name="H">Height</pVariable><Formula>W*H</Formula></IntSwissKnife>
)" + IntReg("Width", 0x100) +
    IntReg("Height", 0x104) + IntReg("ModeReg", 0x108));

struct Expected {
  const char* name;
  std::vector<std::string> path;
};

const Expected kWalk[] = {
    {"Width", {"Root", "Acquisition Control"}},
    {"Gain", {"Root", "Acquisition Control"}},
    {"Height", {"Root", "Image", "Sub"}},
    {"Width", {"Root", "Image", "Sub"}},
    {"Mode", {"Root", "Image"}},
    {"Label", {"Root", "Misc"}},
    {"Area", {"Root", "Misc"}},
};

std::vector<std::string> Strings(const std::vector<GenICam::gcstring>& path) {
  std::vector<std::string> result;
  for (const auto& part : path) result.emplace_back(part.c_str());
  return result;
}

std::string NameOf(const GenericFeature& feature) {
  return feature.Node() == nullptr ? "" : feature.Node()->GetName().c_str();
}

class FeatureTreeTest : public ::testing::Test {
 protected:
  LoadedNodeMap map{kTree};
  CameraFeature tree{*map.reference};
};

TEST_F(FeatureTreeTest, FeaturesAreNumberedDepthFirstInListOrder) {
  std::uint32_t count = 0;
  EXPECT_EQ(tree.GetFeatureCount(count), 1);
  ASSERT_EQ(count, std::size(kWalk));
  for (std::uint32_t index = 0; index < count; ++index) {
    GenericFeature feature;
    feature.SetLastError("old");
    ASSERT_EQ(tree.GetFeatureByIndex(index, feature), 1) << index;
    EXPECT_EQ(NameOf(feature), kWalk[index].name) << index;
    EXPECT_EQ(feature.LastError(), "") << index;
    std::vector<GenICam::gcstring> path;
    ASSERT_EQ(tree.GetFeatureCategory(index, path), 1);
    EXPECT_EQ(Strings(path), kWalk[index].path) << index;
  }
}

TEST_F(FeatureTreeTest, AddressesComeFromTheRegisterOrItsFirstInvalidatingChild) {
  // Mode's first invalidating child is ModeReg, at 0x108; Area's is Width.
  const std::int64_t expected[] = {0x100, 0x200, 0x104, 0x100, 0x108, 0, 0x100};
  std::vector<std::int64_t> addresses;
  std::function<void(const FeatureNode&)> walk = [&](const FeatureNode& entry) {
    if (entry.kind == FEATURE_NODE_FEATURE) addresses.push_back(entry.address);
    for (const FeatureNode& child : entry.children) walk(child);
  };
  walk(tree.Root());
  EXPECT_EQ(addresses, std::vector<std::int64_t>(std::begin(expected), std::end(expected)));
}

TEST_F(FeatureTreeTest, CategoryIndicesCloseTheirSubtrees) {
  const FeatureNode& root = tree.Root();
  EXPECT_EQ(root.kind, FEATURE_NODE_CATEGORY);
  EXPECT_EQ(Strings(root.categoryPath), std::vector<std::string>{"Root"});
  ASSERT_EQ(root.children.size(), 4u);
  EXPECT_EQ(root.children[0].index, 1u);  // Acquisition: Width, Gain
  EXPECT_EQ(root.children[1].index, 4u);  // Image: Height, Width, Mode
  EXPECT_EQ(root.children[2].index, 4u);  // Empty: nothing new since Image
  EXPECT_EQ(root.children[2].children.size(), 0u);
  EXPECT_EQ(root.children[3].index, 6u);
  EXPECT_EQ(root.index, 6u);
}

TEST_F(FeatureTreeTest, IndexAtOrBeyondTheCountIsNotFound) {
  for (std::uint32_t index : {7u, 8u, 0x80000000u, 0xFFFFFFFFu}) {
    GenericFeature feature(map.Node("Label"));
    EXPECT_EQ(tree.GetFeatureByIndex(index, feature), 0) << index;
    EXPECT_EQ(NameOf(feature), "Label");
    std::vector<GenICam::gcstring> path{"kept"};
    EXPECT_EQ(tree.GetFeatureCategory(index, path), 0);
    EXPECT_EQ(Strings(path), std::vector<std::string>{"kept"});
  }
}

TEST_F(FeatureTreeTest, NameLookUpUsesNodeNamesCaseSensitivelyAndNeverCategories) {
  std::uint32_t index = 99;
  EXPECT_EQ(tree.GetFeatureIndex("Width", index), 1);
  EXPECT_EQ(index, 0u);  // the first entry in walk order
  EXPECT_EQ(tree.GetFeatureIndex("Area", index), 1);
  EXPECT_EQ(index, 6u);
  index = 99;
  for (const char* miss :
       {"width", "Acquisition Control", "Acquisition", "Root", "Hidden", "GainReg", ""}) {
    EXPECT_EQ(tree.GetFeatureIndex(miss, index), 0) << miss;
  }
  EXPECT_EQ(tree.GetFeatureIndex(nullptr, index), 0);
  EXPECT_EQ(index, 99u);

  GenericFeature feature;
  EXPECT_EQ(tree.GetFeatureByName("Mode", feature), 1);
  EXPECT_EQ(NameOf(feature), "Mode");
  EXPECT_EQ(tree.GetFeatureByName("Image", feature), 0);
  EXPECT_EQ(NameOf(feature), "Mode");
}

TEST_F(FeatureTreeTest, AddressLookUpFindsTheFirstEntryInWalkOrder) {
  GenericFeature feature;
  EXPECT_EQ(tree.GetFeatureByAddress(0x100, feature), 1);
  EXPECT_EQ(NameOf(feature), "Width");
  EXPECT_EQ(tree.GetFeatureByAddress(0x200, feature), 1);
  EXPECT_EQ(NameOf(feature), "Gain");
  EXPECT_EQ(tree.GetFeatureByAddress(0, feature), 1);
  EXPECT_EQ(NameOf(feature), "Label");
  EXPECT_EQ(tree.GetFeatureByAddress(0x104, feature), 1);
  EXPECT_EQ(NameOf(feature), "Height");
  EXPECT_EQ(tree.GetFeatureByAddress(0x300, feature), 0);
  EXPECT_EQ(NameOf(feature), "Height");  // a miss leaves the handle alone
}

// Records every change notice.
struct Notices {
  std::vector<std::pair<std::uint32_t, std::string>> seen;
  static std::int32_t Handler(std::uint32_t index, GenericFeature* feature, void* context) {
    static_cast<Notices*>(context)->seen.emplace_back(index, NameOf(*feature));
    return 0;
  }
};

TEST_F(FeatureTreeTest, ChangesReachTheHandlerAsFlatIndicesOfTheFirstEntry) {
  Notices notices;
  tree.SetChangeHandler(&Notices::Handler, &notices);
  dynamic_cast<GenApi::IInteger*>(map.Node("Height"))->SetValue(3);
  // Height (2) and the formula over it, Area (6); each once.
  std::vector<std::pair<std::uint32_t, std::string>> expected{{2, "Height"}, {6, "Area"}};
  std::sort(notices.seen.begin(), notices.seen.end());
  EXPECT_EQ(notices.seen, expected);

  notices.seen.clear();
  dynamic_cast<GenApi::IInteger*>(map.Node("Width"))->SetValue(3);
  // Width has two entries and so two callbacks; both report the first index.
  expected = {{0, "Width"}, {0, "Width"}, {6, "Area"}};
  std::sort(notices.seen.begin(), notices.seen.end());
  EXPECT_EQ(notices.seen, expected);
}

TEST_F(FeatureTreeTest, ClearedOrReplacedHandlersAreNotCalled) {
  Notices first, second;
  tree.SetChangeHandler(&Notices::Handler, &first);
  tree.SetChangeHandler(&Notices::Handler, &second);
  map.Node("Gain")->InvalidateNode();
  EXPECT_TRUE(first.seen.empty());
  EXPECT_FALSE(second.seen.empty());

  second.seen.clear();
  tree.ClearChangeHandler();
  dynamic_cast<GenApi::IInteger*>(map.Node("Height"))->SetValue(5);
  EXPECT_TRUE(second.seen.empty());
}

TEST_F(FeatureTreeTest, NodesOutsideTheTreeAreDropped) {
  Notices notices;
  tree.SetChangeHandler(&Notices::Handler, &notices);
  tree.OnNodeChanged(map.Node("GainReg"));
  tree.OnNodeChanged(nullptr);
  EXPECT_TRUE(notices.seen.empty());
}

TEST(FeatureTreeShapes, CategoriesWithoutImplementedFeaturesGiveAnEmptyCatalogue) {
  LoadedNodeMap map{Description(R"(
  <Category Name="Root"><pFeature>A</pFeature><pFeature>Hidden</pFeature></Category>
  <Category Name="A"/>
  <Integer Name="Zero"><Value>0</Value></Integer>
  <Integer Name="Hidden"><pIsImplemented>Zero</pIsImplemented><Value>1</Value></Integer>
)")};
  CameraFeature tree(*map.reference);
  std::uint32_t count = 99;
  tree.GetFeatureCount(count);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(tree.Root().children.size(), 1u);
  EXPECT_EQ(tree.Root().children[0].index, 0xFFFFFFFFu);  // closed before any feature
  GenericFeature feature;
  for (std::uint32_t index : {0u, 1u, 0xFFFFFFFFu}) {
    EXPECT_EQ(tree.GetFeatureByIndex(index, feature), 0) << index;
  }
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

  Notices notices;
  tree.SetChangeHandler(&Notices::Handler, &notices);
  dynamic_cast<GenApi::IInteger*>(map.Node("Switch"))->SetValue(1);
  EXPECT_NE(map.Node("Later")->GetAccessMode(), GenApi::NI);
  EXPECT_EQ(tree.GetFeatureIndex("Later", index), 0);
  dynamic_cast<GenApi::IInteger*>(map.Node("Later"))->SetValue(5);
  EXPECT_TRUE(notices.seen.empty());
}

TEST(FeatureTreeShapes, DescriptionWithoutRootCategoryIsRefused) {
  LoadedNodeMap map{Description(R"(
  <Integer Name="Root"><Value>0</Value></Integer>
)")};
  EXPECT_THROW(CameraFeature tree(*map.reference), GenICam::RuntimeException);
  LoadedNodeMap noRoot{Description(R"(<Integer Name="X"><Value>0</Value></Integer>)")};
  EXPECT_THROW(CameraFeature tree(*noRoot.reference), GenICam::RuntimeException);
}

TEST(FeatureTreeShapes, CategoryListingItselfEndsTheWalk) {
  LoadedNodeMap map{Description(R"(
  <Category Name="Root"><pFeature>A</pFeature></Category>
  <Category Name="A"><pFeature>X</pFeature><pFeature>B</pFeature></Category>
  <Category Name="B"><pFeature>A</pFeature><pFeature>Y</pFeature></Category>
  <Integer Name="X"><Value>1</Value></Integer>
  <Integer Name="Y"><Value>2</Value></Integer>
)")};
  CameraFeature tree(*map.reference);
  std::uint32_t count = 0;
  tree.GetFeatureCount(count);
  EXPECT_EQ(count, 2u);
}

}  // namespace
}  // namespace vq::test
