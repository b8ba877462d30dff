// The KORVA area-scan example description over a zero-filled register image:
// the catalogue matches the description, and writes reach the host as code-9
// notices. (Value texts, categories and attributes through the host interface:
// KorvaHostTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "camera/GenericCamera.h"
#include "features/FeatureCodes.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

const std::string kExample = std::string(VQ_SOURCE_DIR) + "/examples/korva-area/";

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// What the description says the catalogue must hold, read with an XML parser
// of its own: features in category list order, depth first.
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

class ExpectedCatalogue {
 public:
  explicit ExpectedCatalogue(const std::string& text) {
    document_.load_string(text.c_str());
    for (pugi::xml_node element : document_.document_element().children()) {
      if (element.attribute("Name")) byName_[element.attribute("Name").value()] = element;
    }
  }

  std::vector<ExpectedFeature> Walk(GenApi::CNodeMapRef& map) {
    std::vector<ExpectedFeature> features;
    WalkCategory(byName_["Root"], {}, map, features);
    return features;
  }

 private:
  std::string DisplayName(const pugi::xml_node& element) {
    pugi::xml_node display = element.child("DisplayName");
    return display ? display.text().get() : element.attribute("Name").value();
  }

  // Registers carry their address in the description. Other features take the
  // address of their first invalidating child when it is a register; which
  // child comes first is the node map's business, so that is asked there.
  std::int64_t AddressOf(const pugi::xml_node& element, GenApi::INode* node) {
    if (IsRegisterElement(element)) return element.child("Address").text().as_llong();
    GenApi::NodeList_t children;
    node->GetChildren(children, GenApi::ctInvalidatingChildren);
    if (children.empty()) return 0;
    const pugi::xml_node first = byName_[children[0]->GetName().c_str()];
    return IsRegisterElement(first) ? first.child("Address").text().as_llong() : 0;
  }

  void WalkCategory(const pugi::xml_node& category, std::vector<std::string> path,
                    GenApi::CNodeMapRef& map, std::vector<ExpectedFeature>& features) {
    path.push_back(DisplayName(category));
    for (pugi::xml_node listed : category.children("pFeature")) {
      const std::string name = listed.text().get();
      const pugi::xml_node element = byName_[name];
      if (std::string(element.name()) == "Category") {
        WalkCategory(element, path, map, features);
      } else if (GenApi::INode* node = map._GetNode(name.c_str());
                 node->GetAccessMode() != GenApi::NI) {
        features.push_back({name, path, AddressOf(element, node)});
      }
    }
  }

  pugi::xml_document document_;
  std::map<std::string, pugi::xml_node> byName_;
};

struct HostLog {
  std::vector<std::uint32_t> changed;
};

std::int32_t Host(std::uint32_t code, std::uint32_t detail, void*, HostContext context) {
  if (code == HOST_FEATURE_CHANGED) reinterpret_cast<HostLog*>(context)->changed.push_back(detail);
  return 1;
}

class KorvaCatalogue : public ::testing::Test {
 protected:
  void SetUp() override {
    xml_ = ReadFile(kExample + "KORVA_AreaScan.xml");
    ASSERT_FALSE(xml_.empty()) << "example description missing";
    auto reference = CreateNodeMapReference();
    LoadNodeMapFromText(*reference, xml_.c_str());
    ASSERT_TRUE(ConnectNodeMap(*reference, &port_));
    camera_.hostCallback = &Host;
    camera_.hostContext = reinterpret_cast<HostContext>(&log_);
    camera_.AttachNodeMap(std::move(reference));
    ASSERT_TRUE(camera_.HasFeatureTree());
  }

  CameraFeature& Tree() { return *camera_.FeatureTree(); }
  GenericFeature Feature(const char* name) {
    GenericFeature feature;
    EXPECT_EQ(Tree().GetFeatureByName(name, feature), 1) << name;
    return feature;
  }

  std::string xml_;
  MemoryPort port_;
  HostLog log_;
  GenericCamera camera_{ParameterRecordList()};
};

TEST_F(KorvaCatalogue, IndicesPathsAndAddressesMatchTheDescription) {
  ExpectedCatalogue description(xml_);
  const std::vector<ExpectedFeature> expected = description.Walk(*camera_.NodeMap());
  std::uint32_t count = 0;
  Tree().GetFeatureCount(count);
  ASSERT_EQ(count, expected.size());
  for (std::uint32_t index = 0; index < count; ++index) {
    GenericFeature feature;
    ASSERT_EQ(Tree().GetFeatureByIndex(index, feature), 1);
    EXPECT_EQ(std::string(feature.Node()->GetName().c_str()), expected[index].name) << index;
    std::vector<GenICam::gcstring> path;
    ASSERT_EQ(Tree().GetFeatureCategory(index, path), 1);
    std::vector<std::string> got;
    for (const auto& part : path) got.emplace_back(part.c_str());
    EXPECT_EQ(got, expected[index].path) << expected[index].name;
  }
  std::vector<std::int64_t> addresses;
  std::function<void(const FeatureNode&)> walk = [&](const FeatureNode& entry) {
    if (entry.kind == FEATURE_NODE_FEATURE) addresses.push_back(entry.address);
    for (const FeatureNode& child : entry.children) walk(child);
  };
  walk(Tree().Root());
  ASSERT_EQ(addresses.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(addresses[i], expected[i].address) << expected[i].name;
  }
}

TEST_F(KorvaCatalogue, AttachingAnotherDescriptionReplacesTreeAndCategoryTable) {
  MemoryPort otherPort;
  auto other = CreateNodeMapReference();
  LoadNodeMapFromText(*other, Description(R"(
  <Category Name="Root"><pFeature>Only</pFeature></Category>
  <Category Name="Only"><pFeature>Value</pFeature></Category>
  <Integer Name="Value"><Value>1</Value></Integer>)")
                                  .c_str());
  ASSERT_TRUE(ConnectNodeMap(*other, &otherPort));
  camera_.AttachNodeMap(std::move(other));
  std::uint32_t count = 0;
  Tree().GetFeatureCount(count);
  EXPECT_EQ(count, 1u);
  ASSERT_EQ(camera_.GetCategoryCount(), 1u);
  EXPECT_STREQ(camera_.GetCategoryName(0), "Only");
  log_.changed.clear();
  dynamic_cast<GenApi::IInteger*>(camera_.NodeMap()->_GetNode("Value"))->SetValue(4);
  EXPECT_EQ(log_.changed, std::vector<std::uint32_t>{0});
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
    log_.changed.clear();
    GenApi::INode* node = camera_.NodeMap()->_GetNode(written);
    if (auto* integer = dynamic_cast<GenApi::IInteger*>(node))
      integer->SetValue(integer->GetMin());
    else if (auto* number = dynamic_cast<GenApi::IFloat*>(node))
      number->SetValue(2.0);
    else if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(node))
      enumeration->SetIntValue(0x01100003);

    // Each changed node that has entries in the tree is reported once per
    // entry, always with the index of its first entry in walk order.
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
    std::sort(log_.changed.begin(), log_.changed.end());
    EXPECT_FALSE(log_.changed.empty()) << written;
    EXPECT_EQ(log_.changed, expected) << written;
  }
}

TEST_F(KorvaCatalogue, FeatureListedTwiceIsReportedTwiceWithItsFirstIndex) {
  std::uint32_t first = 0;
  ASSERT_EQ(Tree().GetFeatureIndex("Gain", first), 1);
  EXPECT_LT(first, 3u);  // Quick Setup comes first
  log_.changed.clear();
  dynamic_cast<GenApi::IFloat*>(camera_.NodeMap()->_GetNode("Gain"))->SetValue(3.0);
  EXPECT_EQ(log_.changed, (std::vector<std::uint32_t>{first, first}));
}

}  // namespace
}  // namespace vq::test
