// Loading: schema versions and namespaces, pre-processing (Group, StructReg,
// EnumEntry, ConfRom), ZIP archives, rejection of malformed input, and the
// defects the reference refuses a whole document for against those that only
// break the node that has them (the document loads, the other features read,
// the node throws when read).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Corpus.h"
#include "TestPort.h"
#include "ZipWriter.h"

namespace {

using namespace GenApi;
using genapi_test::Describe;
using genapi_test::Loaded;
using genapi_test::Outcome;
using ::testing::HasSubstr;

const std::string kIntReg = genapi_test::IntReg("Reg", 0x100);

TEST(Load, PrefixedNamespaceAndElementsInAnyOrder) {
  const std::string xml =
      "<g:RegisterDescription xmlns:g=\"http://www.genicam.org/GenApi/Version_1_1\" "
      "ModelName=\"M\" VendorName=\"V\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
      "SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" "
      "SubMinorVersion=\"0\" ProductGuid=\"\" VersionGuid=\"\">"
      "<g:IntReg Name=\"Reg\"><g:pPort>Device</g:pPort><g:Length>2</g:Length>"
      "<g:AccessMode>RW</g:AccessMode><g:Address>0x10</g:Address>"
      "<g:ToolTip>late tooltip</g:ToolTip></g:IntReg><g:Port Name=\"Device\"/>"
      "</g:RegisterDescription>";
  CNodeMapRef ref;
  ref._LoadXMLFromString(xml.c_str());
  genapi_test::MemoryPort port;
  ASSERT_TRUE(ref._Connect(&port));
  CIntegerPtr reg = ref._GetNode("Reg");
  ASSERT_TRUE(reg.IsValid());
  reg->SetValue(0x1234);
  EXPECT_EQ(port.Peek(0x10, 2), (std::vector<uint8_t>{0x34, 0x12}));
  EXPECT_EQ(std::string(reg->GetNode()->GetToolTip().c_str()), "late tooltip");
}

// Groups are flattened at any depth, a StructReg becomes masked IntRegs with
// per-entry overrides, EnumEntries become nodes named after their
// enumeration, an embedded IntSwissKnife adds to the address, ConfRom keys
// become nodes.
TEST(Load, PreProcessingBuildsNodes) {
  Loaded m("<Group Comment=\"a\"><Group Comment=\"b\">" + kIntReg +
           "</Group><Integer Name=\"I\"><Value>5</Value></Integer></Group>" + R"(
    <StructReg Comment="S">
      <ToolTip>shared</ToolTip><Address>0x20</Address><Length>2</Length>
      <AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>
      <StructEntry Name="B0"><Bit>0</Bit></StructEntry>
      <StructEntry Name="B1"><Bit>1</Bit><AccessMode>RO</AccessMode></StructEntry>
      <StructEntry Name="B2"><ToolTip>own</ToolTip><Bit>2</Bit></StructEntry>
    </StructReg>
    <Enumeration Name="Mode">
      <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="On"><Value>1</Value><Symbolic>Enabled</Symbolic></EnumEntry>
      <Value>1</Value>
    </Enumeration>
    <Integer Name="Sel"><Value>2</Value></Integer>
    <IntReg Name="R"><Address>0x100</Address>
      <IntSwissKnife><pVariable Name="S">Sel</pVariable><Formula>S*4</Formula></IntSwissKnife>
      <Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
    <ConfRom Name="Rom"><Address>0x400</Address><Length>64</Length><pPort>Device</pPort>
      <IntKey Name="Vendor"><Key>0x03</Key></IntKey>
      <TextDesc Name="Text"><Key>0x81</Key></TextDesc></ConfRom>)");
  EXPECT_NE(m.ref._GetNode("Reg"), nullptr);
  EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 5);
  EXPECT_EQ(m.ref._GetNode("Group"), nullptr);
  m.port.Poke(0x20, {0xFF, 0xFF});
  for (const char* name : {"B0", "B1", "B2"}) {
    CIntegerPtr bit = m.ref._GetNode(name);
    ASSERT_TRUE(bit.IsValid()) << name;
    EXPECT_EQ(bit->GetValue(), 1) << name;
    EXPECT_EQ(bit->GetMax(), 1) << name;
  }
  EXPECT_EQ(m.Modes("B0 B1"), "RW RO");
  EXPECT_STREQ(m.Node("B0")->GetToolTip().c_str(), "shared");
  EXPECT_STREQ(m.Node("B2")->GetToolTip().c_str(), "own");
  EXPECT_NE(dynamic_cast<IRegister*>(m.Node("B0")), nullptr);
  CEnumEntryPtr on = m.ref._GetNode("EnumEntry_Mode_On");
  ASSERT_TRUE(on.IsValid());
  EXPECT_STREQ(on->GetSymbolic().c_str(), "Enabled");
  EXPECT_STREQ(m.As<IEnumeration>("Mode")->ToString().c_str(), "Enabled");
  EXPECT_EQ(m.As<IRegister>("R")->GetAddress(), 0x108);
  m.port.PokeBE32(0x400, 0x03123456);
  EXPECT_EQ(m.As<IInteger>("Vendor")->GetValue(), 0x123456);
  EXPECT_NE(m.As<IString>("Text"), nullptr);
}

TEST(Load, Schema10ExplicitEntryPointers) {
  Loaded m(R"(
    <Enumeration Name="Mode"><pEnumEntry>E0</pEnumEntry><pEnumEntry>E1</pEnumEntry>
      <Value>1</Value></Enumeration>
    <EnumEntry Name="E0"><Value>0</Value></EnumEntry>
    <EnumEntry Name="E1"><Value>1</Value></EnumEntry>)",
           true);
  EXPECT_STREQ(m.As<IEnumeration>("Mode")->ToString().c_str(), "E1");
}

// An element's text reads the same however the description writes it: white
// space around it, entity references, CDATA sections, text split by comments.
// An element the engine does not know is kept as a property.
TEST(Load, ElementTextsWhateverTheirMarkup) {
  struct Case {
    const char* value;    // text of a Value that means 7
    const char* toolTip;  // text of a ToolTip
    const char* shown;    // the ToolTip as read
  };
  const Case cases[] = {
      {"  7  ", "  spaced  ", "spaced"},
      {"<![CDATA[7]]>", "a &amp; b &lt;c&gt;", "a & b <c>"},
      {" <![CDATA[ 7 ]]> ", "one<![CDATA[ <two> ]]>three", "one <two> three"},
      {"0x<!-- hex -->7", "split<!-- c --> text", "split text"},
      {"<!-- c -->7", "<![CDATA[cdata]]> after", "cdata after"},
  };
  for (const Case& c : cases) {
    Loaded m(std::string("<Integer Name=\"I\"><ToolTip>") + c.toolTip + "</ToolTip><Value>" +
             c.value + "</Value><VendorNote>" + c.toolTip +
             "</VendorNote></Integer>"
             "<Integer Name=\"P\"><pValue> <![CDATA[I]]> </pValue></Integer>");
    EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 7) << c.value;
    EXPECT_EQ(m.As<IInteger>("P")->GetValue(), 7) << c.value;
    EXPECT_EQ(std::string(m.Node("I")->GetToolTip().c_str()), c.shown) << c.toolTip;
    GenICam::gcstring note, attribute;
    EXPECT_TRUE(m.Node("I")->GetProperty("VendorNote", note, attribute));
    EXPECT_EQ(std::string(note.c_str()), c.shown) << c.toolTip;
  }
}

TEST(Load, DeviceInfoComesFromTheRootAttributes) {
  Loaded m(kIntReg);
  CDeviceInfoPtr info(m.ref._Ptr);
  ASSERT_TRUE(info.IsValid());
  EXPECT_STREQ(info->GetModelName().c_str(), "TestModel");
  EXPECT_STREQ(info->GetVendorName().c_str(), "TestVendor");
  EXPECT_STREQ(info->GetToolTip().c_str(), "Test");
  EXPECT_STREQ(info->GetStandardNameSpace().c_str(), "None");
  EXPECT_STREQ(info->GetProductGuid().c_str(), "01234567-89ab-cdef-0123-456789abcdef");
  Version_t v{}, schema{};
  info->GetDeviceVersion(v);
  info->GetSchemaVersion(schema);
  EXPECT_EQ((std::vector<int>{v.Major, v.Minor, v.SubMinor, schema.Minor}),
            (std::vector<int>{2, 3, 4, 1}));
}

TEST(Load, ZipArchivesStoredDeflatedOrDamaged) {
  const std::string xml = Describe(kIntReg);
  for (bool deflate : {false, true}) {
    const auto zip = genapi_test::MakeZip("camera.xml", xml, deflate);
    CNodeMapRef ref;
    ref._LoadXMLFromZIPData(zip.data(), zip.size());
    EXPECT_NE(ref._GetNode("Reg"), nullptr) << deflate;
  }
  const auto zip = genapi_test::MakeZip("camera.xml", xml, true);
  auto corrupt = zip;
  corrupt[40] ^= 0xFF;
  const std::vector<std::vector<uint8_t>> bad = {
      {},
      {'P', 'K', 3, 4},
      std::vector<uint8_t>(zip.begin(), zip.begin() + zip.size() / 2),
      corrupt};
  for (const auto& data : bad) {
    CNodeMapRef ref;
    EXPECT_THROW(ref._LoadXMLFromZIPData(data.empty() ? nullptr : data.data(), data.size()),
                 GenICam::GenericException);
  }
}

TEST(Load, HostileSizesAreHandledWithoutCrash) {
  // Deep Group nesting.
  std::string deep;
  for (int i = 0; i < 20000; ++i) deep += "<Group>";
  deep += kIntReg;
  for (int i = 0; i < 20000; ++i) deep += "</Group>";
  {
    CNodeMapRef ref;
    try {
      ref._LoadXMLFromString(Describe(deep).c_str());
    } catch (const GenICam::GenericException&) {
    }
  }
  // A very long pointer chain loads, and reading through it fails cleanly.
  std::string chain = "<Integer Name=\"N0\"><Value>7</Value></Integer>";
  for (int i = 1; i < 3000; ++i)
    chain += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
             "</pValue></Integer>";
  Loaded m(chain);
  EXPECT_EQ(m.As<IInteger>("N10")->GetValue(), 7);
  CIntegerPtr last = m.ref._GetNode("N2999");
  EXPECT_NO_FATAL_FAILURE({
    try {
      (void)last->GetAccessMode();
      (void)last->GetValue();
    } catch (const GenICam::GenericException&) {
    }
  });
  // Absurd register lengths are refused at access time.
  Loaded big(R"(<Register Name="R"><Address>0</Address><Length>0x7fffffffffff</Length>
      <AccessMode>RO</AccessMode><pPort>Device</pPort></Register>)");
  std::vector<uint8_t> buffer(16);
  EXPECT_THROW(big.As<IRegister>("R")->Get(buffer.data(), 16), GenICam::GenericException);
}

// Random byte damage to a valid description: loading and walking may fail,
// but only with GenICam exceptions.
TEST(Load, DamagedDescriptionsNeverCrash) {
  const std::string good = Describe(kIntReg + R"(
    <Integer Name="I"><pValue>Reg</pValue><pMin>K</pMin></Integer>
    <IntSwissKnife Name="K"><pVariable Name="R">Reg</pVariable><Formula>R*2</Formula></IntSwissKnife>
    <Enumeration Name="E"><pValue>Reg</pValue><EnumEntry Name="A"><Value>0</Value></EnumEntry>
    </Enumeration>
    <Category Name="Root"><pFeature>I</pFeature><pFeature>E</pFeature></Category>)");
  uint32_t seed = 12345;
  auto next = [&] {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) & 0x7fff;
  };
  const char alphabet[] = "<>/=\"aZ09 \n&;";
  int loaded = 0;
  for (int round = 0; round < 400; ++round) {
    std::string text = good;
    const int edits = 1 + next() % 4;
    for (int k = 0; k < edits; ++k) {
      const size_t pos = next() % text.size();
      switch (next() % 3) {
        case 0:
          text[pos] = alphabet[next() % (sizeof alphabet - 1)];
          break;
        case 1:
          text.erase(pos, 1 + next() % 8);
          break;
        default:
          text.resize(pos);
          break;
      }
      if (text.empty()) text = "<";
    }
    CNodeMapRef ref;
    genapi_test::MemoryPort port;
    try {
      ref._LoadXMLFromString(text.c_str());
      ++loaded;
      ref._Connect(&port);
      NodeList_t nodes;
      ref._GetNodes(nodes);
      for (INode* n : nodes) {
        try {
          if (IsReadable(n))
            if (auto* v = dynamic_cast<IValue*>(n)) v->ToString();
        } catch (const GenICam::GenericException&) {
        }
      }
    } catch (const GenICam::GenericException&) {
    }
  }
  EXPECT_GT(loaded, 0);
}

TEST(NodeMapRef, ReferenceLifecycle) {
  CNodeMapRef ref;
  EXPECT_EQ(Outcome([&] { ref._GetNode("X"); }),
            "AccessException: Feature not present (reference not valid)");
  genapi_test::MemoryPort port;
  EXPECT_THROW(ref._Connect(&port, "Device"), GenICam::AccessException);
  EXPECT_THROW(ref._Connect(&port), GenICam::AccessException);
  ref._LoadXMLFromString(Describe(kIntReg).c_str());
  EXPECT_EQ(Outcome([&] { ref._LoadXMLFromString(Describe(kIntReg).c_str()); }),
            "RuntimeException: DLL already loaded");
  EXPECT_NE(ref._GetNode("Reg"), nullptr);  // the first map stays
  EXPECT_EQ(std::string(ref._GetDeviceName().c_str()), "Device");
  EXPECT_FALSE(ref._Connect(&port, "NoSuchPort"));
  EXPECT_TRUE(ref._Connect(&port, "Device"));
  ref._Destroy();
  EXPECT_THROW(ref._GetNode("Reg"), GenICam::AccessException);
  CNodeMapRef never;
  never._Destroy();
}

TEST(NodeMapRef, LoaderIsFoundByVendorAndModel) {
  INodeMap* map = _InternalLoadDLL("Generic", "XMLLoader", "Cam");
  ASSERT_NE(map, nullptr);
  EXPECT_EQ(std::string(map->GetDeviceName().c_str()), "Cam");
  CastToINodeMapDyn(map)->LoadXMLFromString(Describe(kIntReg).c_str());
  EXPECT_EQ(map->GetNumNodes(), 2u);
  GenICam::gcstring_vector versions;
  CastToINodeMapDyn(map)->GetSupportedSchemaVersions(versions);
  EXPECT_EQ(versions.size(), 2u);
  CastToIDestroy(map)->Destroy();
  EXPECT_THROW(_InternalLoadDLL("Other", "XMLLoader", "Device"), GenICam::RuntimeException);
}

TEST(NodeMapRef, QualifiedNames) {
  Loaded m(R"(<Integer Name="W" NameSpace="Standard"><Value>1</Value></Integer>
              <Integer Name="C"><Value>1</Value></Integer>)");
  EXPECT_NE(m.ref._GetNode("Std::W"), nullptr);
  EXPECT_EQ(m.ref._GetNode("Cust::W"), nullptr);
  EXPECT_NE(m.ref._GetNode("Cust::C"), nullptr);
  EXPECT_EQ(std::string(m.Node("W")->GetName(true).c_str()), "Std::W");
  EXPECT_EQ(m.ref._GetNode("Nope"), nullptr);
  EXPECT_EQ(m.ref._GetNode(""), nullptr);
}

TEST(Defects, RejectTheDocumentWithAMessageNamingTheCause) {
  struct Case {
    const char* title;
    const char* mention;  // the cause, as the message must name it
    std::string xml;      // a node list
    bool whole = false;   // xml is the whole document
  };
  const std::string good = Describe(kIntReg);
  const Case cases[] = {
      {"truncated", "XML", good.substr(0, good.size() / 2), true},
      {"empty", "empty", "", true},
      {"wrong root", "RegisterDescription", "<Foo/>", true},
      {"missing name", "Integer", "<Integer><Value>1</Value></Integer>"},
      {"duplicate", "'A'", R"(<Integer Name="A"><Value>1</Value></Integer>
                              <Integer Name="A"><Value>2</Value></Integer>)"},
      {"dangling", "Nowhere", R"(<Integer Name="A"><pValue>Nowhere</pValue></Integer>)"},
      {"cycle", "cycle", R"(<Integer Name="A"><pValue>B</pValue></Integer>
                            <Integer Name="B"><pValue>A</pValue></Integer>)"},
      {"bad number", "Value", R"(<Integer Name="A"><Value>12abc</Value></Integer>)"},
      {"masked without bits", "'M'", R"(<MaskedIntReg Name="M"><Address>0</Address>
          <Length>4</Length><pPort>Device</pPort></MaskedIntReg>)"},
      {"converter without pValue", "pValue", R"(<Converter Name="C"><FormulaTo>FROM</FormulaTo>
          <FormulaFrom>TO</FormulaFrom></Converter>)"},
      {"pPort to an integer", "pPort", R"(<Integer Name="I"><Value>1</Value></Integer>
          <IntReg Name="R"><Address>0</Address><Length>4</Length><pPort>I</pPort></IntReg>)"},
      {"integer pValue to a string", "'S'", R"(<String Name="S"><Value>x</Value></String>
          <Integer Name="I"><pValue>S</pValue></Integer>)"},
      {"pVariable to a category", "pVariable", R"(<Category Name="Cat"/><IntSwissKnife Name="K">
          <pVariable Name="C">Cat</pVariable><Formula>C</Formula></IntSwissKnife>)"},
      {"pError to an integer", "pError", R"(<Integer Name="E"><Value>0</Value></Integer>
          <Integer Name="I"><pError>E</pError><Value>1</Value></Integer>)"},
      {"pEnumEntry to an integer", "pEnumEntry", R"(<Integer Name="X"><Value>0</Value></Integer>
          <Enumeration Name="E"><pEnumEntry>X</pEnumEntry><Value>0</Value></Enumeration>)"},
  };
  for (const Case& c : cases) {
    const std::string xml = c.whole ? c.xml : Describe(c.xml);
    CNodeMapRef ref;
    EXPECT_THAT(Outcome([&] { ref._LoadXMLFromString(xml.c_str()); }), HasSubstr(c.mention))
        << c.title;
  }
}

struct NodeDefect {
  const char* title;
  const char* nodes;        // a defective node, read through "Bad"
  const char* brokenNode;   // the node the message names
  const char* mustMention;  // the identifier or text at fault
};

// Formula defects (and evaluation errors) break only their node: the reference reports them when
// the node is evaluated. The healthy "Good" beside them must read as usual.
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
  for (int read = 0; read < 2; ++read)  // the kept error, every time
    EXPECT_THAT(Outcome([&] { bad->ToString(); }),
                ::testing::AllOf(::testing::StartsWith("LogicalErrorException: "),
                                 HasSubstr(std::string("'") + c.brokenNode + "'"),
                                 HasSubstr(c.mustMention)));
}

std::string Title(const ::testing::TestParamInfo<NodeDefect>& info) {
  return genapi_test::TestName(info.param.title);
}

INSTANTIATE_TEST_SUITE_P(Formulas, NodeDefects, ::testing::ValuesIn(kNodeDefects), Title);

}  // namespace
