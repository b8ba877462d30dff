// The feature catalogue of the KORVA area-scan example over a zero-filled
// register image, against the description read with an XML parser of its own:
// indices, category paths, register addresses, the look-ups by name and by
// address, and the change notices a write causes. (Value texts and attributes
// through the host interface: KorvaHostTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "camera/GenericCamera.h"
#include "support/KorvaXml.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

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

std::int32_t Host(std::uint32_t code, std::uint32_t detail, void*, HostContext context) {
  auto* changed = reinterpret_cast<std::vector<std::uint32_t>*>(context);
  if (code == HOST_FEATURE_CHANGED) changed->push_back(detail);
  return 1;
}

std::string NameOf(const GenericFeature& feature) { return feature.Node()->GetName().c_str(); }

class KorvaCatalogue : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(xml_.Text().empty()) << "example description missing";
    auto reference = CreateNodeMapReference();
    LoadNodeMapFromText(*reference, xml_.Text().c_str());
    ASSERT_TRUE(ConnectNodeMap(*reference, &port_));
    camera_.hostCallback = &Host;
    camera_.hostContext = reinterpret_cast<HostContext>(&changed_);
    camera_.AttachNodeMap(std::move(reference));
    ASSERT_TRUE(camera_.HasFeatureTree());
  }
  CameraFeature& Tree() { return *camera_.FeatureTree(); }
  GenApi::INode* Node(const char* name) { return camera_.NodeMap()->_GetNode(name); }

  KorvaXml xml_;
  MemoryPort port_;
  std::vector<std::uint32_t> changed_;
  GenericCamera camera_{ParameterRecordList()};
};

TEST_F(KorvaCatalogue, IndicesPathsAddressesAndLookUpsMatchTheDescription) {
  const std::vector<ExpectedFeature> expected = ExpectedCatalogue(xml_, *camera_.NodeMap());
  std::uint32_t count = 0;
  Tree().GetFeatureCount(count);
  ASSERT_EQ(count, expected.size());
  std::vector<std::int64_t> addresses;
  std::function<void(const FeatureNode&)> walk = [&](const FeatureNode& entry) {
    if (entry.kind == FEATURE_NODE_FEATURE) addresses.push_back(entry.address);
    for (const FeatureNode& child : entry.children) walk(child);
  };
  walk(Tree().Root());
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
    changed_.clear();
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
      std::function<void(const FeatureNode&)> count = [&](const FeatureNode& entry) {
        if (entry.kind == FEATURE_NODE_FEATURE && entry.node == node) expected.push_back(first);
        for (const FeatureNode& child : entry.children) count(child);
      };
      count(Tree().Root());
    }
    std::sort(expected.begin(), expected.end());
    std::sort(changed_.begin(), changed_.end());
    EXPECT_FALSE(changed_.empty()) << written;
    EXPECT_EQ(changed_, expected) << written;
  }
}

}  // namespace
}  // namespace vq::test
