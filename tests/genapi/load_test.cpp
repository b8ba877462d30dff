// Loading: schema versions and namespaces, pre-processing (Group, StructReg,
// EnumEntry, ConfRom), ZIP archives, and rejection of malformed input.
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"
#include "ZipWriter.h"

namespace {

using namespace GenApi;
using genapi_test::Describe;
using genapi_test::Loaded;

const char* kIntReg = R"(
  <IntReg Name="Reg"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></IntReg>)";

TEST(Load, BothSchemaNamespacesLoad) {
  for (bool schema10 : {true, false}) {
    Loaded m(kIntReg, schema10);
    EXPECT_NE(m.ref._GetNode("Reg"), nullptr) << schema10;
  }
}

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

TEST(Load, GroupsAreFlattenedAtAnyDepth) {
  Loaded m(std::string("<Group Comment=\"a\"><Group Comment=\"b\">") + kIntReg +
           "</Group><Integer Name=\"I\"><Value>5</Value></Integer></Group>");
  EXPECT_NE(m.ref._GetNode("Reg"), nullptr);
  EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 5);
  EXPECT_EQ(m.ref._GetNode("Group"), nullptr);
}

TEST(Load, StructRegBecomesMaskedIntRegsWithEntryOverrides) {
  Loaded m(R"(
    <StructReg Comment="S">
      <ToolTip>shared</ToolTip><Address>0x20</Address><Length>2</Length>
      <AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>
      <StructEntry Name="B0"><Bit>0</Bit></StructEntry>
      <StructEntry Name="B1"><Bit>1</Bit><AccessMode>RO</AccessMode></StructEntry>
      <StructEntry Name="B2"><ToolTip>own</ToolTip><Bit>2</Bit></StructEntry>
    </StructReg>)");
  m.port.Poke(0x20, {0xFF, 0xFF});
  for (const char* name : {"B0", "B1", "B2"}) {
    CIntegerPtr bit = m.ref._GetNode(name);
    ASSERT_TRUE(bit.IsValid()) << name;
    EXPECT_EQ(bit->GetValue(), 1) << name;
    EXPECT_EQ(bit->GetMax(), 1) << name;
  }
  EXPECT_EQ(m.Node("B0")->GetAccessMode(), RW);
  EXPECT_EQ(m.Node("B1")->GetAccessMode(), RO);
  EXPECT_EQ(std::string(m.Node("B0")->GetToolTip().c_str()), "shared");
  EXPECT_EQ(std::string(m.Node("B2")->GetToolTip().c_str()), "own");
  EXPECT_NE(dynamic_cast<IRegister*>(m.Node("B0")), nullptr);
}

TEST(Load, EnumEntriesAreNodesNamedAfterTheirEnumeration) {
  Loaded m(R"(
    <Enumeration Name="Mode">
      <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="On"><Value>1</Value><Symbolic>Enabled</Symbolic></EnumEntry>
      <Value>1</Value>
    </Enumeration>)");
  CEnumEntryPtr on = m.ref._GetNode("EnumEntry_Mode_On");
  ASSERT_TRUE(on.IsValid());
  EXPECT_EQ(std::string(on->GetSymbolic().c_str()), "Enabled");
  EXPECT_EQ(std::string(m.As<IEnumeration>("Mode")->ToString().c_str()), "Enabled");
}

TEST(Load, Schema10ExplicitEntryPointers) {
  Loaded m(R"(
    <Enumeration Name="Mode"><pEnumEntry>E0</pEnumEntry><pEnumEntry>E1</pEnumEntry>
      <Value>1</Value></Enumeration>
    <EnumEntry Name="E0"><Value>0</Value></EnumEntry>
    <EnumEntry Name="E1"><Value>1</Value></EnumEntry>)",
           true);
  EXPECT_EQ(std::string(m.As<IEnumeration>("Mode")->ToString().c_str()), "E1");
}

TEST(Load, EmbeddedIntSwissKnifeAddsToTheAddress) {
  Loaded m(R"(
    <Integer Name="Sel"><Value>2</Value></Integer>
    <IntReg Name="R"><Address>0x100</Address>
      <IntSwissKnife><pVariable Name="S">Sel</pVariable><Formula>S*4</Formula></IntSwissKnife>
      <Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>)");
  EXPECT_EQ(m.As<IRegister>("R")->GetAddress(), 0x108);
}

TEST(Load, ConfRomKeysBecomeNodes) {
  Loaded m(R"(
    <ConfRom Name="Rom"><Address>0x400</Address><Length>64</Length><pPort>Device</pPort>
      <IntKey Name="Vendor"><Key>0x03</Key></IntKey>
      <TextDesc Name="Text"><Key>0x81</Key></TextDesc></ConfRom>)");
  m.port.PokeBE32(0x400, 0x03123456);
  EXPECT_EQ(m.As<IInteger>("Vendor")->GetValue(), 0x123456);
  EXPECT_NE(m.As<IString>("Text"), nullptr);
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
             c.value + "</Value><VendorNote>" + c.toolTip + "</VendorNote></Integer>"
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
  EXPECT_EQ(std::string(info->GetModelName().c_str()), "TestModel");
  EXPECT_EQ(std::string(info->GetVendorName().c_str()), "TestVendor");
  EXPECT_EQ(std::string(info->GetToolTip().c_str()), "Test");
  EXPECT_EQ(std::string(info->GetStandardNameSpace().c_str()), "None");
  EXPECT_EQ(std::string(info->GetProductGuid().c_str()), "01234567-89ab-cdef-0123-456789abcdef");
  Version_t v{};
  info->GetDeviceVersion(v);
  EXPECT_EQ(v.Major, 2);
  EXPECT_EQ(v.Minor, 3);
  EXPECT_EQ(v.SubMinor, 4);
  info->GetSchemaVersion(v);
  EXPECT_EQ(v.Minor, 1);
}

TEST(Load, ZippedDescriptionsLoadStoredAndDeflated) {
  const std::string xml = Describe(kIntReg);
  for (bool deflate : {false, true}) {
    const auto zip = genapi_test::MakeZip("camera.xml", xml, deflate);
    CNodeMapRef ref;
    ref._LoadXMLFromZIPData(zip.data(), zip.size());
    EXPECT_NE(ref._GetNode("Reg"), nullptr) << deflate;
  }
}

TEST(Load, DamagedZipIsAnException) {
  const auto zip = genapi_test::MakeZip("camera.xml", Describe(kIntReg), true);
  std::vector<std::vector<uint8_t>> bad = {
      {}, {'P', 'K', 3, 4}, std::vector<uint8_t>(zip.begin(), zip.begin() + zip.size() / 2)};
  auto corrupt = zip;
  corrupt[40] ^= 0xFF;
  bad.push_back(corrupt);
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
  const std::string good = Describe(std::string(kIntReg) + R"(
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
        case 0: text[pos] = alphabet[next() % (sizeof alphabet - 1)]; break;
        case 1: text.erase(pos, 1 + next() % 8); break;
        default: text.resize(pos); break;
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
  try {
    ref._GetNode("X");
    FAIL();
  } catch (const GenICam::AccessException& e) {
    EXPECT_STREQ(e.GetDescription(), "Feature not present (reference not valid)");
  }
  genapi_test::MemoryPort port;
  EXPECT_THROW(ref._Connect(&port, "Device"), GenICam::AccessException);
  EXPECT_THROW(ref._Connect(&port), GenICam::AccessException);
  ref._LoadXMLFromString(Describe(kIntReg).c_str());
  try {
    ref._LoadXMLFromString(Describe(kIntReg).c_str());
    FAIL();
  } catch (const GenICam::RuntimeException& e) {
    EXPECT_STREQ(e.GetDescription(), "DLL already loaded");
  }
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
}

}  // namespace
