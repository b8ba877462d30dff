// The public helpers: CPointer, node and value vectors, interface casts
// through the shared library, and the node map's own interfaces.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

const char* kNodes = R"(
  <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></IntReg>
  <Float Name="F"><Value>2.5</Value></Float>)";

TEST(CPointer, NullDereferenceIsALogicalError) {
  CIntegerPtr empty;
  EXPECT_FALSE(empty.IsValid());
  EXPECT_FALSE(empty);
  EXPECT_TRUE(empty == 0);
  try {
    empty->GetValue();
    FAIL();
  } catch (const GenICam::LogicalErrorException& e) {
    EXPECT_STREQ(e.GetDescription(), "NULL pointer dereferenced");
  }
  EXPECT_THROW(*empty, GenICam::LogicalErrorException);
  EXPECT_THROW((void)(empty == 1), GenICam::LogicalErrorException);
}

TEST(CPointer, CastsToTheInterfacesANodeImplements) {
  Loaded m(kNodes);
  INode* r = m.Node("R");
  CIntegerPtr asInt = r;
  CRegisterPtr asReg = r;
  CValuePtr asValue = r;
  CFloatPtr asFloat = r;
  CPortPtr port = m.Node("Device");
  EXPECT_TRUE(asInt.IsValid());
  EXPECT_TRUE(asReg.IsValid());
  EXPECT_TRUE(asValue.IsValid());
  EXPECT_FALSE(asFloat.IsValid());
  EXPECT_TRUE(port.IsValid());
  CNodePtr back(asInt);
  EXPECT_EQ(static_cast<INode*>(back), r);
  CFloatPtr f = m.Node("F");
  EXPECT_EQ(f.GetIntValue(), 3);
  CNodeMapPtr map(m.ref._Ptr);
  EXPECT_TRUE(map.IsValid());
  EXPECT_NE(dynamic_cast<INodeMapDyn*>(m.ref._Ptr), nullptr);
  EXPECT_NE(dynamic_cast<IDestroy*>(m.ref._Ptr), nullptr);
}

TEST(NodeVector, BehavesLikeAVector) {
  Loaded m(kNodes);
  NodeList_t nodes;
  m.ref._GetNodes(nodes);
  EXPECT_EQ(nodes.size(), 3u);
  size_t count = 0;
  for (INode* n : nodes) count += n != nullptr;
  EXPECT_EQ(count, 3u);
  nodes.push_back(nodes[0]);
  EXPECT_EQ(nodes.size(), 4u);
  nodes.erase(nodes.begin());
  nodes.clear();
  EXPECT_TRUE(nodes.empty());
  EXPECT_EQ(m.ref._Ptr->GetNumNodes(), 3u);
}

TEST(NodeMap, PortDelegatesRegisterTraffic) {
  Loaded m(kNodes);
  IPort* port = dynamic_cast<IPort*>(m.Node("Device"));
  ASSERT_NE(port, nullptr);
  const uint8_t bytes[2] = {7, 8};
  port->Write(bytes, 0x20, 2);
  uint8_t back[2] = {};
  port->Read(back, 0x20, 2);
  EXPECT_EQ(back[1], 8);
  EXPECT_THROW(port->Read(nullptr, 0, 4), GenICam::GenericException);
  EXPECT_EQ(port->GetAccessMode(), RW);
}

// Descriptions of transport-layer modules name their port after the module;
// Connect(port, name) attaches exactly that port.
TEST(NodeMap, ConnectAttachesTheNamedPort) {
  for (const char* portName : {"TLPort", "InterfacePort", "DevicePort", "StreamPort"}) {
    const std::string nodes = std::string("<Port Name=\"") + portName + "\"/>" +
                              "<IntReg Name=\"R\"><Address>0x10</Address><Length>4</Length>"
                              "<AccessMode>RW</AccessMode><pPort>" +
                              portName + "</pPort></IntReg>";
    CNodeMapRef ref;
    ref._LoadXMLFromString(genapi_test::Describe(nodes).c_str());
    genapi_test::MemoryPort device, module;
    module.PokeLE32(0x10, 42);
    EXPECT_TRUE(ref._Connect(&device));  // the "Device" port the test frame adds
    EXPECT_EQ(ref._GetNode("R")->GetAccessMode(), NA) << portName;
    EXPECT_FALSE(ref._Connect(&module, "R")) << "not a port";
    EXPECT_FALSE(ref._Connect(&module, "NoSuchPort"));
    EXPECT_TRUE(ref._Connect(&module, portName));
    CIntegerPtr r = ref._GetNode("R");
    EXPECT_EQ(r->GetValue(), 42) << portName;
    r->SetValue(43);
    EXPECT_EQ(module.PeekLE32(0x10), 43u);
    EXPECT_EQ(device.writes, 0);
  }
}

TEST(NodeMap, ConcurrentReadersAndWritersStayConsistent) {
  Loaded m(kNodes);
  IInteger* r = m.As<IInteger>("R");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([r, t] {
      for (int i = 0; i < 200; ++i) {
        r->SetValue(t * 1000 + i);
        const int64_t v = r->GetValue();
        EXPECT_GE(v, 0);
        EXPECT_LT(v, 4000);
      }
    });
  }
  for (auto& th : threads) th.join();
}

}  // namespace
