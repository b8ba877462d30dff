// Links between nodes (all six link types), selectors, properties and the
// presentation queries of INode.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;
using Names = std::set<std::string>;

Names Children(INode* n, ELinkType type) {
  NodeList_t list;
  n->GetChildren(list, type);
  Names names;
  for (INode* c : list) names.insert(c->GetName().c_str());
  return names;
}

TEST(Links, AllSixLinkTypes) {
  Loaded m(R"(
    <Integer Name="TheNode"><pInvalidator>G</pInvalidator><pValue>A</pValue><pMin>B</pMin>
    </Integer>
    <Integer Name="A"><pValue>C</pValue></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="C"><Value>0</Value></Integer>
    <Integer Name="D"><pValue>TheNode</pValue></Integer>
    <Integer Name="E"><pValue>D</pValue></Integer>
    <Integer Name="F"><pInvalidator>TheNode</pInvalidator><Value>0</Value></Integer>
    <Integer Name="G"><pInvalidator>H</pInvalidator><Value>0</Value></Integer>
    <Integer Name="H"><Value>0</Value></Integer>)");
  INode* n = m.Node("TheNode");
  EXPECT_EQ(Children(n, ctWritingChildren), (Names{"A"}));
  EXPECT_EQ(Children(n, ctReadingChildren), (Names{"A", "B"}));
  EXPECT_EQ(Children(n, ctInvalidatingChildren), (Names{"A", "B", "G"}));
  EXPECT_EQ(Children(n, ctTerminalNodes), (Names{"C"}));
  EXPECT_EQ(Children(n, ctDependingNodes), (Names{"D", "E", "F"}));
  EXPECT_EQ(Children(n, ctParentNodes), (Names{"D"}));
  NodeList_t parents;
  n->GetParents(parents);
  EXPECT_EQ(parents.size(), 1u);
  NodeList_t reading;
  n->GetChildren(reading);  // default link type
  EXPECT_EQ(reading.size(), 2u);
}

TEST(Links, TheValueSourceComesFirst) {
  Loaded m(R"(
    <Integer Name="G"><Value>1</Value></Integer>
    <Integer Name="I"><pIsImplemented>G</pIsImplemented><pValue>R</pValue></Integer>
    <IntReg Name="R"><Address>0x44</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>)");
  NodeList_t children;
  m.Node("I")->GetChildren(children, ctInvalidatingChildren);
  ASSERT_EQ(children.size(), 2u);
  CRegisterPtr first = children[0];
  ASSERT_TRUE(first.IsValid());
  EXPECT_EQ(first->GetAddress(), 0x44);
}

TEST(Links, DependentAndTerminalProperties) {
  Loaded m(R"(
    <String Name="A"><Value>x</Value></String>
    <String Name="B"><pValue>A</pValue></String>
    <String Name="C"><pValue>B</pValue></String>
    <String Name="D"><pValue>A</pValue></String>
    <String Name="E"><pValue>D</pValue></String>
    <String Name="F"><pValue>A</pValue></String>)");
  GenICam::gcstring value, attribute;
  EXPECT_TRUE(m.Node("A")->GetProperty("pDependent", value, attribute));
  std::string text = value.c_str();
  Names names;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t tab = text.find('\t', start);
    names.insert(text.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
  EXPECT_EQ(names, (Names{"B", "C", "D", "E", "F"}));
  m.Node("C")->GetProperty("pTerminal", value, attribute);
  EXPECT_EQ(std::string(value.c_str()), "A");
}

TEST(Links, Selectors) {
  Loaded m(R"(
    <Integer Name="Sel"><Value>0</Value><pSelected>X</pSelected><pSelected>Y</pSelected></Integer>
    <Integer Name="X"><Value>0</Value></Integer>
    <Integer Name="Y"><Value>0</Value></Integer>)");
  CSelectorPtr sel = m.ref._GetNode("Sel");
  ASSERT_TRUE(sel.IsValid());
  EXPECT_TRUE(sel->IsSelector());
  FeatureList_t selected;
  sel->GetSelectedFeatures(selected);
  EXPECT_EQ(selected.size(), 2u);
  CSelectorPtr x = m.ref._GetNode("X");
  EXPECT_FALSE(x->IsSelector());
  FeatureList_t selecting;
  x->GetSelectingFeatures(selecting);
  ASSERT_EQ(selecting.size(), 1u);
  EXPECT_EQ(std::string(selecting[0]->GetNode()->GetName().c_str()), "Sel");
}

TEST(Links, PropertiesCarryValueAndAttribute) {
  Loaded m(R"(
    <IntSwissKnife Name="K" NameSpace="Standard"><ToolTip>tip</ToolTip>
      <pVariable Name="A">X</pVariable><pVariable Name="B">Y</pVariable><Formula>A+B</Formula>
    </IntSwissKnife>
    <Integer Name="X"><Value>1</Value></Integer>
    <Integer Name="Y"><Value>2</Value></Integer>)");
  INode* k = m.Node("K");
  GenICam::gcstring value, attribute;
  EXPECT_TRUE(k->GetProperty("pVariable", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "X\tY");
  EXPECT_EQ(std::string(attribute.c_str()), "A\tB");
  EXPECT_TRUE(k->GetProperty("ToolTip", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "tip");
  EXPECT_TRUE(k->GetProperty("Name", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "K");
  EXPECT_TRUE(k->GetProperty("NameSpace", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "Standard");
  EXPECT_TRUE(k->GetProperty("DeviceName", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "Device");
  EXPECT_FALSE(k->GetProperty("NoSuchProperty", value, attribute));
  GenICam::gcstring_vector names;
  k->GetPropertyNames(names);
  bool hasFormula = false;
  for (size_t i = 0; i < names.size(); ++i) hasFormula |= names[i] == "Formula";
  EXPECT_TRUE(hasFormula);
}

TEST(Links, PresentationQueries) {
  Loaded m(R"(
    <Integer Name="I"><Extension><Anything/></Extension><ToolTip>short</ToolTip>
      <Description>long</Description><DisplayName>Nice I</DisplayName>
      <Visibility>Guru</Visibility><DocuURL>http://x/I</DocuURL><IsDeprecated>Yes</IsDeprecated>
      <EventID>1A2B</EventID><pAlias>J</pAlias><pCastAlias>J</pCastAlias>
      <Streamable>Yes</Streamable><Value>0</Value></Integer>
    <Integer Name="J"><Value>0</Value></Integer>)");
  INode* i = m.Node("I");
  EXPECT_EQ(std::string(i->GetToolTip().c_str()), "short");
  EXPECT_EQ(std::string(i->GetDescription().c_str()), "long");
  EXPECT_EQ(std::string(i->GetDisplayName().c_str()), "Nice I");
  EXPECT_EQ(std::string(m.Node("J")->GetDisplayName().c_str()), "J");
  EXPECT_EQ(i->GetVisibility(), Guru);
  EXPECT_EQ(m.Node("J")->GetVisibility(), Beginner);
  i->ImposeVisibility(Invisible);
  EXPECT_EQ(i->GetVisibility(), Invisible);
  EXPECT_EQ(std::string(i->GetDocuURL().c_str()), "http://x/I");
  EXPECT_TRUE(i->IsDeprecated());
  EXPECT_EQ(std::string(i->GetEventID().c_str()), "1A2B");
  EXPECT_EQ(i->GetAlias(), m.Node("J"));
  EXPECT_EQ(i->GetCastAlias(), m.Node("J"));
  EXPECT_TRUE(i->IsStreamable());
  EXPECT_EQ(i->GetNodeMap(), m.ref._Ptr);
  EXPECT_EQ(std::string(i->GetDeviceName().c_str()), "Device");
  EXPECT_TRUE(i->IsFeature());
  EXPECT_EQ(i->GetNameSpace(), Custom);
}

TEST(Links, PrincipalInterfaceTypes) {
  Loaded m(R"(
    <Integer Name="I"><Value>0</Value></Integer>
    <Float Name="F"><Value>0</Value></Float>
    <Boolean Name="B"><Value>0</Value></Boolean>
    <String Name="S"><Value>s</Value></String>
    <Command Name="C"><Value>0</Value><CommandValue>1</CommandValue></Command>
    <Enumeration Name="E"><Value>0</Value><EnumEntry Name="Z"><Value>0</Value></EnumEntry>
    </Enumeration>
    <Category Name="Cat"><pFeature>I</pFeature></Category>
    <Register Name="R"><Address>0</Address><Length>4</Length><pPort>Device</pPort></Register>
    <Node Name="N"/>)");
  const std::pair<const char*, EInterfaceType> expected[] = {
      {"I", intfIInteger}, {"F", intfIFloat},         {"B", intfIBoolean},
      {"S", intfIString},  {"C", intfICommand},        {"E", intfIEnumeration},
      {"Cat", intfICategory}, {"R", intfIRegister},    {"N", intfIValue},
      {"Device", intfIPort}, {"EnumEntry_E_Z", intfIEnumEntry}};
  for (const auto& e : expected)
    EXPECT_EQ(m.Node(e.first)->GetPrincipalInterfaceType(), e.second) << e.first;
  EXPECT_FALSE(m.Node("Device")->IsFeature());
}

}  // namespace
