// Defects in a description: those the reference refuses the whole document
// for, and those that only break the node that has them (the document loads,
// the other features read, the node throws when read).
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Describe;

const char* kIntReg = R"(
  <IntReg Name="Reg"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></IntReg>)";

struct DocumentDefect {
  const char* title;
  std::string xml;
  const char* mustMention;
};

std::string Wrap(const char* nodes) { return Describe(nodes); }

TEST(Defects, RejectTheDocumentWithAMessageNamingTheCause) {
  const std::string good = Describe(kIntReg);
  const DocumentDefect cases[] = {
      {"truncated", good.substr(0, good.size() / 2), "XML"},
      {"empty", "", "empty"},
      {"wrong root", "<Foo/>", "RegisterDescription"},
      {"missing name", Wrap("<Integer><Value>1</Value></Integer>"), "Integer"},
      {"duplicate",
       Wrap("<Integer Name=\"A\"><Value>1</Value></Integer>"
            "<Integer Name=\"A\"><Value>2</Value></Integer>"),
       "'A'"},
      {"dangling", Wrap("<Integer Name=\"A\"><pValue>Nowhere</pValue></Integer>"), "Nowhere"},
      {"cycle",
       Wrap("<Integer Name=\"A\"><pValue>B</pValue></Integer>"
            "<Integer Name=\"B\"><pValue>A</pValue></Integer>"),
       "cycle"},
      {"bad number", Wrap("<Integer Name=\"A\"><Value>12abc</Value></Integer>"), "Value"},
      {"masked without bits",
       Wrap("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length>"
            "<pPort>Device</pPort></MaskedIntReg>"),
       "'M'"},
      {"converter without pValue",
       Wrap("<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
            "</Converter>"),
       "pValue"},
      {"pPort to an integer",
       Wrap("<Integer Name=\"I\"><Value>1</Value></Integer><IntReg Name=\"R\"><Address>0</Address>"
            "<Length>4</Length><pPort>I</pPort></IntReg>"),
       "pPort"},
      {"integer pValue to a string",
       Wrap("<String Name=\"S\"><Value>x</Value></String>"
            "<Integer Name=\"I\"><pValue>S</pValue></Integer>"),
       "'S'"},
      {"pVariable to a category",
       Wrap(
           "<Category Name=\"Cat\"/><IntSwissKnife Name=\"K\"><pVariable Name=\"C\">Cat</pVariable>"
           "<Formula>C</Formula></IntSwissKnife>"),
       "pVariable"},
      {"pError to an integer",
       Wrap("<Integer Name=\"E\"><Value>0</Value></Integer>"
            "<Integer Name=\"I\"><pError>E</pError><Value>1</Value></Integer>"),
       "pError"},
      {"pEnumEntry to an integer",
       Wrap("<Integer Name=\"X\"><Value>0</Value></Integer>"
            "<Enumeration Name=\"E\"><pEnumEntry>X</pEnumEntry><Value>0</Value></Enumeration>"),
       "pEnumEntry"},
  };
  for (const DocumentDefect& c : cases) {
    CNodeMapRef ref;
    try {
      ref._LoadXMLFromString(c.xml.c_str());
      ADD_FAILURE() << c.title << ": loaded";
    } catch (const GenICam::GenericException& e) {
      EXPECT_NE(std::string(e.GetDescription()).find(c.mustMention), std::string::npos)
          << c.title << ": " << e.GetDescription();
    }
  }
}

struct NodeDefect {
  const char* title;
  const char* nodes;        // a defective node, read through "Bad"
  const char* brokenNode;   // the node the message names
  const char* mustMention;  // the identifier or text at fault
};

// Formula defects (and evaluation errors) break only their node: the reference reports them when the
// node is evaluated. The healthy "Good" beside them must read as usual.
const NodeDefect kNodeDefects[] = {
    {"undeclared identifier",
     R"(<IntSwissKnife Name="Bad"><pVariable Name="A">Good</pVariable>
        <Formula>A + MISSING</Formula></IntSwissKnife>)",
     "Bad", "MISSING"},
    {"undeclared in a float knife",
     R"(<SwissKnife Name="Bad"><Formula>2 * GAIN</Formula></SwissKnife>)", "Bad", "GAIN"},
    {"does not parse", R"(<IntSwissKnife Name="Bad"><Formula>1 +* (</Formula></IntSwissKnife>)",
     "Bad", "Formula"},
    {"double equals",
     R"(<IntSwissKnife Name="Bad"><pVariable Name="A">Good</pVariable><Formula>A==1</Formula>
        </IntSwissKnife>)",
     "Bad", "'=='"},
    {"lower-case TO",
     R"(<Converter Name="Bad"><FormulaTo>FROM</FormulaTo><FormulaFrom>to</FormulaFrom>
        <pValue>Good</pValue></Converter>)",
     "Bad", "'to'"},
    {"empty formula", R"(<IntSwissKnife Name="Bad"><Formula> </Formula></IntSwissKnife>)", "Bad",
     "empty formula"},
    {"unknown function", R"(<SwissKnife Name="Bad"><Formula>FOO(1)</Formula></SwissKnife>)", "Bad",
     "FOO"},
    {"expression naming an unknown",
     R"(<IntSwissKnife Name="Bad"><Expression Name="E">X+1</Expression><Formula>E</Formula>
        </IntSwissKnife>)",
     "Bad", "'X'"},
    {"division by zero when evaluated",
     R"(<IntSwissKnife Name="Bad"><pVariable Name="Z">Zero</pVariable><Formula>10 / Z</Formula>
        </IntSwissKnife><Integer Name="Zero"><Value>0</Value></Integer>)",
     "Bad", "division by zero"},
    {"integer over a broken knife",
     R"(<Integer Name="Bad"><pValue>Knife</pValue></Integer>
        <IntSwissKnife Name="Knife"><Formula>NOPE</Formula></IntSwissKnife>)",
     "Knife", "NOPE"},
};

class NodeDefects : public ::testing::TestWithParam<NodeDefect> {};

TEST_P(NodeDefects, LoadAndThrowOnlyWhenTheNodeIsRead) {
  const NodeDefect& c = GetParam();
  genapi_test::Loaded m(std::string(c.nodes) + "<Integer Name=\"Good\"><Value>5</Value></Integer>");
  EXPECT_EQ(m.As<IInteger>("Good")->GetValue(), 5);
  IValue* bad = m.As<IValue>("Bad");
  ASSERT_NE(bad, nullptr);
  EXPECT_TRUE(IsReadable(bad->GetNode()));
  for (int read = 0; read < 2; ++read) {  // the kept error, every time
    try {
      bad->ToString();
      ADD_FAILURE() << c.title << ": read";
    } catch (const GenICam::LogicalErrorException& e) {
      const std::string text = e.GetDescription();
      EXPECT_NE(text.find(std::string("'") + c.brokenNode + "'"), std::string::npos) << text;
      EXPECT_NE(text.find(c.mustMention), std::string::npos) << text;
    }
  }
}

std::string Title(const ::testing::TestParamInfo<NodeDefect>& info) {
  std::string name = info.param.title;
  for (char& ch : name)
    if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Formulas, NodeDefects, ::testing::ValuesIn(kNodeDefects), Title);

}  // namespace
