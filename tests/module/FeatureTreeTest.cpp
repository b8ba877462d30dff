// The feature tree: the catalogue of the KORVA area-scan example over a
// zero-filled register image against the description read with an XML parser
// of its own (indices, category paths, register addresses, the look-ups by
// name and by address, the change notices a write causes); shapes the example
// does not have (categories without implemented features, a category that
// lists itself, a feature implemented only after the build); and the camera
// object's category table and a tree build that fails part-way. (Value texts
// and attributes through the host interface: KorvaHostTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "camera/GenericCamera.h"
#include "features/CameraFeature.h"
#include "support/KorvaXml.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

// The host's side of a camera object: counts every call and keeps the details
// of the change notices (code 9).
struct HostRecord {
  int calls = 0;
  std::vector<std::uint32_t> changed;
};

std::int32_t Record(std::uint32_t code, std::uint32_t detail, void*, HostContext context) {
  auto& host = *reinterpret_cast<HostRecord*>(context);
  ++host.calls;
  if (code == HOST_FEATURE_CHANGED) host.changed.push_back(detail);
  return 1;
}

// Every feature entry below `entry`, depth first.
void ForEachFeatureEntry(const FeatureNode& entry,
                         const std::function<void(const FeatureNode&)>& visit) {
  if (entry.kind == FEATURE_NODE_FEATURE) visit(entry);
  for (const FeatureNode& child : entry.children) ForEachFeatureEntry(child, visit);
}

struct ExpectedFeature {
  std::string name;
  std::vector<std::string> path;
  std::int64_t address;
};

bool IsRegisterElement(const pugi::xml_node& element) {
  const std::string tag = element.name();
  return tag == "IntReg" || tag == "MaskedIntReg" || tag == "FloatReg" || tag == "StringReg" ||
         tag == "Register";
}

// Features in walk order, leaving out those the node map does not implement.
// Registers carry their address in the description; other features take the
// address of their first invalidating child when it is a register (which
// child comes first is the node map's business, so that is asked there).
std::vector<ExpectedFeature> ExpectedCatalogue(const KorvaXml& xml, GenApi::CNodeMapRef& map) {
  std::vector<ExpectedFeature> features;
  xml.Walk([&](const pugi::xml_node& element, const std::vector<std::string>& path) {
    GenApi::INode* node = map._GetNode(element.attribute("Name").value());
    if (node->GetAccessMode() == GenApi::NI) return;
    pugi::xml_node reg = element;
    if (!IsRegisterElement(element)) {
      GenApi::NodeList_t children;
      node->GetChildren(children, GenApi::ctInvalidatingChildren);
      reg = children.empty() ? pugi::xml_node() : xml[children[0]->GetName().c_str()];
    }
    const std::int64_t address =
        IsRegisterElement(reg) ? reg.child("Address").text().as_llong() : 0;
    features.push_back({element.attribute("Name").value(), path, address});
  });
  return features;
}

std::string NameOf(const GenericFeature& feature) { return feature.Node()->GetName().c_str(); }

class KorvaCatalogue : public ::testing::Test {
 protected:
  void SetUp() override {
    camera_.hostCallback = &Record;
    camera_.hostContext = reinterpret_cast<HostContext>(&host_);
    camera_.AttachNodeMap(std::move(map_.reference));
    ASSERT_TRUE(camera_.HasFeatureTree());
  }
  CameraFeature& Tree() { return *camera_.FeatureTree(); }
  GenApi::INode* Node(const char* name) { return camera_.NodeMap()->_GetNode(name); }

  KorvaXml xml_;
  LoadedNodeMap map_{xml_.Text()};
  HostRecord host_;
  GenericCamera camera_{ParameterRecordList()};
};

TEST_F(KorvaCatalogue, IndicesPathsAddressesAndLookUpsMatchTheDescription) {
  const std::vector<ExpectedFeature> expected = ExpectedCatalogue(xml_, *camera_.NodeMap());
  std::uint32_t count = 0;
  Tree().GetFeatureCount(count);
  ASSERT_EQ(count, expected.size());
  std::vector<std::int64_t> addresses;
  ForEachFeatureEntry(Tree().Root(),
                      [&](const FeatureNode& entry) { addresses.push_back(entry.address); });
  ASSERT_EQ(addresses.size(), expected.size());
  for (std::uint32_t index = 0; index < count; ++index) {
    const ExpectedFeature& feature = expected[index];
    SCOPED_TRACE(feature.name);
    GenericFeature found;
    ASSERT_EQ(Tree().GetFeatureByIndex(index, found), 1);
    EXPECT_EQ(NameOf(found), feature.name);
    std::vector<GenICam::gcstring> path;
    ASSERT_EQ(Tree().GetFeatureCategory(index, path), 1);
    EXPECT_EQ(std::vector<std::string>(path.begin(), path.end()), feature.path);
    EXPECT_EQ(addresses[index], feature.address);
    // Look-ups find the first entry in walk order.
    const auto sameName = [&](const ExpectedFeature& f) { return f.name == feature.name; };
    const auto sameAddress = [&](const ExpectedFeature& f) { return f.address == feature.address; };
    std::uint32_t first = 0xFFFFFFFF;
    ASSERT_EQ(Tree().GetFeatureIndex(feature.name.c_str(), first), 1);
    EXPECT_EQ(first, std::find_if(expected.begin(), expected.end(), sameName) - expected.begin());
    ASSERT_EQ(Tree().GetFeatureByName(feature.name.c_str(), found), 1);
    EXPECT_EQ(NameOf(found), feature.name);
    ASSERT_EQ(Tree().GetFeatureByAddress(feature.address, found), 1);
    EXPECT_EQ(NameOf(found), std::find_if(expected.begin(), expected.end(), sameAddress)->name);
  }
  // Names go case-sensitively and never find categories, registers outside
  // the catalogue or features the node map does not implement.
  for (const char* miss : {"width", "AcquisitionControl", "Acquisition Control", "Root", "WidthReg",
                           "ExposureAuto", ""}) {
    std::uint32_t index = 77;
    GenericFeature feature;
    EXPECT_EQ(Tree().GetFeatureIndex(miss, index) + Tree().GetFeatureByName(miss, feature), 0)
        << miss;
    EXPECT_EQ(index, 77u);
  }
  std::uint32_t index = 77;
  EXPECT_EQ(Tree().GetFeatureIndex(nullptr, index), 0);
  GenericFeature feature;
  EXPECT_EQ(Tree().GetFeatureByAddress(0x7FFFFFF0, feature), 0);
}

// Records every node GenApi reports as changed.
struct ChangedNodes {
  std::vector<GenApi::INode*> nodes;
  void OnChange(GenApi::INode* node) { nodes.push_back(node); }
};

TEST_F(KorvaCatalogue, WritesNotifyTheHostOncePerDependentFeatureEntry) {
  // GenApi's own report of what a write changes, taken with callbacks on every node.
  ChangedNodes changed;
  GenApi::NodeList_t all;
  camera_.NodeMap()->_GetNodes(all);
  for (GenApi::INode* node : all) GenApi::Register(node, changed, &ChangedNodes::OnChange);

  for (const char* written : {"OffsetX", "BinningHorizontal", "Gain", "PixelFormat"}) {
    changed.nodes.clear();
    host_.changed.clear();
    GenApi::INode* node = Node(written);
    if (auto* integer = dynamic_cast<GenApi::IInteger*>(node))
      integer->SetValue(integer->GetMin());
    else if (auto* number = dynamic_cast<GenApi::IFloat*>(node))
      number->SetValue(2.0);
    else if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(node))
      enumeration->SetIntValue(0x01100003);

    // Each changed node that has entries in the tree (Gain and PixelFormat
    // have two) is reported once per entry, always with the index of its
    // first entry in walk order.
    std::vector<std::uint32_t> expected;
    std::sort(changed.nodes.begin(), changed.nodes.end());
    changed.nodes.erase(std::unique(changed.nodes.begin(), changed.nodes.end()),
                        changed.nodes.end());
    for (GenApi::INode* node : changed.nodes) {
      std::uint32_t first = 0;
      if (!Tree().GetFeatureIndex(node->GetName().c_str(), first)) continue;
      ForEachFeatureEntry(Tree().Root(), [&](const FeatureNode& entry) {
        if (entry.node == node) expected.push_back(first);
      });
    }
    std::sort(expected.begin(), expected.end());
    std::sort(host_.changed.begin(), host_.changed.end());
    EXPECT_FALSE(host_.changed.empty()) << written;
    EXPECT_EQ(host_.changed, expected) << written;
  }
}

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

TEST(CameraObject, TreeBuildFailingPartWayReleasesTheNodeMap) {
  // "First" gets its change callback before "Second"'s address read fails.
  const std::string xml =
      Description(R"(
  <Category Name="Root"><pFeature>First</pFeature><pFeature>Second</pFeature></Category>
  <IntReg Name="Second"><pAddress>Base</pAddress><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>)" +
                  IntRegNode("First", 0x100, 4) + IntRegNode("Base", 0x200, 4, "RO"));
  LoadedNodeMap map{xml, std::make_unique<FailingPort>()};
  GenericCamera camera{ParameterRecordList()};
  HostRecord host;
  camera.hostCallback = &Record;
  camera.hostContext = reinterpret_cast<HostContext>(&host);
  EXPECT_THROW(camera.AttachNodeMap(std::move(map.reference)), GenICam::AccessException);
  EXPECT_FALSE(camera.HasFeatureTree());
  EXPECT_EQ(camera.NodeMap(), nullptr);
  EXPECT_EQ(host.calls, 0);
}

}  // namespace
}  // namespace vq::test
