// Value caching: the three caching modes, inheritance, per-(address,length)
// caches, invalidation paths and polling.
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

std::string Reg(const char* name, const char* caching, int address = 0) {
  return std::string("<IntReg Name=\"") + name + "\"><Address>" + std::to_string(address) +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" +
         (caching ? std::string("<Cachable>") + caching + "</Cachable>" : std::string()) +
         "</IntReg>";
}

TEST(Caching, WriteThroughKeepsTheWrittenValue) {
  Loaded m(Reg("R", "WriteThrough"));
  IInteger* r = m.As<IInteger>("R");
  EXPECT_EQ(r->GetNode()->GetCachingMode(), WriteThrough);
  r->SetValue(5);
  const int reads = m.port.reads;
  m.port.PokeLE32(0, 9);  // the device changes behind our back
  EXPECT_EQ(r->GetValue(), 5);
  EXPECT_EQ(m.port.reads, reads);
  EXPECT_TRUE(r->IsValueCacheValid());
  EXPECT_EQ(r->GetValue(false, true), 9);  // IgnoreCache reads through
  r->GetNode()->InvalidateNode();
  EXPECT_EQ(r->GetValue(), 9);
}

TEST(Caching, WriteAroundReadsAfterEveryWrite) {
  Loaded m(Reg("R", "WriteAround"));
  IInteger* r = m.As<IInteger>("R");
  r->SetValue(5);
  EXPECT_FALSE(r->IsValueCacheValid());
  m.port.PokeLE32(0, 4);  // the device rounds the written value
  EXPECT_EQ(r->GetValue(), 4);
  const int reads = m.port.reads;
  EXPECT_EQ(r->GetValue(), 4);
  EXPECT_EQ(m.port.reads, reads);  // cached after that read
}

TEST(Caching, NoCacheAlwaysReads) {
  Loaded m(Reg("R", "NoCache"));
  IInteger* r = m.As<IInteger>("R");
  r->GetValue();
  const int reads = m.port.reads;
  r->GetValue();
  r->GetValue();
  EXPECT_EQ(m.port.reads, reads + 2);
  EXPECT_FALSE(r->IsValueCacheValid());
}

TEST(Caching, ModesAreInheritedThroughReadingLinks) {
  Loaded m(Reg("Live", "NoCache", 0) + Reg("Cached", nullptr, 4) +
           "<Integer Name=\"I\"><pValue>Live</pValue></Integer>"
           "<IntSwissKnife Name=\"K\"><pVariable Name=\"L\">Live</pVariable><Formula>L</Formula>"
           "</IntSwissKnife>"
           "<IntReg Name=\"Indirect\"><pAddress>Live</pAddress><Length>4</Length>"
           "<AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>WriteAround</Cachable>"
           "</IntReg>"
           "<FloatReg Name=\"F\"><Address>8</Address><Length>4</Length>"
           "<AccessMode>RO</AccessMode><pPort>Device</pPort></FloatReg>");
  EXPECT_EQ(m.Node("Cached")->GetCachingMode(), WriteThrough);
  EXPECT_EQ(m.Node("I")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("K")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("Indirect")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("F")->GetCachingMode(), WriteAround);  // FloatReg default
  EXPECT_FALSE(m.Node("I")->IsCachable());
}

TEST(Caching, RegisterCachesAreKeyedByAddressAndLength) {
  Loaded m(R"(
    <Integer Name="Sel"><Value>0</Value></Integer>
    <IntReg Name="R"><Address>0x100</Address><pIndex Offset="4">Sel</pIndex><Length>4</Length>
      <AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>)");
  m.port.PokeLE32(0x100, 11);
  m.port.PokeLE32(0x104, 22);
  IInteger* r = m.As<IInteger>("R");
  IInteger* sel = m.As<IInteger>("Sel");
  EXPECT_EQ(r->GetValue(), 11);
  sel->SetValue(1);
  EXPECT_EQ(r->GetValue(), 22);
  r->SetValue(33);
  sel->SetValue(0);
  EXPECT_EQ(r->GetValue(), 11);
  sel->SetValue(1);
  EXPECT_EQ(r->GetValue(), 33);
}

TEST(Caching, InvalidationGoesToDependentsNeverToChildren) {
  Loaded m(Reg("R", nullptr) + "<Integer Name=\"I\"><pValue>R</pValue></Integer>");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetValue(), 0);
  m.port.PokeLE32(0, 7);
  i->GetNode()->InvalidateNode();
  EXPECT_EQ(i->GetValue(), 0);  // the register keeps its cache
  m.Node("R")->InvalidateNode();
  EXPECT_EQ(i->GetValue(), 7);
}

TEST(Caching, InvalidatorsSelectorsAndPorts) {
  Loaded m(Reg("A", nullptr, 0) + Reg("Trigger", nullptr, 4) +
           "<IntReg Name=\"B\"><pInvalidator>Trigger</pInvalidator><Address>8</Address>"
           "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
           "<Integer Name=\"Selector\"><Value>0</Value><pSelected>A</pSelected></Integer>");
  IInteger* a = m.As<IInteger>("A");
  IInteger* b = m.As<IInteger>("B");
  a->GetValue();
  b->GetValue();
  m.port.PokeLE32(0, 1);
  m.port.PokeLE32(8, 2);
  m.As<IInteger>("Trigger")->SetValue(1);
  EXPECT_EQ(b->GetValue(), 2);
  EXPECT_EQ(a->GetValue(), 0);
  m.As<IInteger>("Selector")->SetValue(1);
  EXPECT_EQ(a->GetValue(), 1);
  m.port.PokeLE32(0, 5);
  m.port.PokeLE32(8, 6);
  m.Node("Device")->InvalidateNode();
  EXPECT_EQ(a->GetValue(), 5);
  EXPECT_EQ(b->GetValue(), 6);
  m.port.PokeLE32(0, 8);
  m.ref._InvalidateNodes();
  EXPECT_EQ(a->GetValue(), 8);
}

TEST(Caching, FailedWriteDropsTheCache) {
  Loaded m(Reg("R", nullptr));
  IInteger* r = m.As<IInteger>("R");
  r->SetValue(3);
  m.port.failWrites = true;
  EXPECT_THROW(r->SetValue(4), GenICam::RuntimeException);
  m.port.failWrites = false;
  m.port.PokeLE32(0, 9);
  EXPECT_EQ(r->GetValue(), 9);
}

TEST(Caching, PollingInvalidatesAfterThePollingTime) {
  Loaded m(R"(<IntReg Name="Temp"><Address>0</Address><Length>4</Length>
      <AccessMode>RO</AccessMode><pPort>Device</pPort><PollingTime>100</PollingTime></IntReg>
      <Integer Name="Block"><Value>0</Value></Integer>
      <IntReg Name="Blocked"><pBlockPolling>Block</pBlockPolling><Address>4</Address>
      <Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
      <PollingTime>100</PollingTime></IntReg>)");
  IInteger* t = m.As<IInteger>("Temp");
  IInteger* blocked = m.As<IInteger>("Blocked");
  EXPECT_EQ(t->GetNode()->GetPollingTime(), 100);
  m.As<IInteger>("Block")->SetValue(1);
  EXPECT_EQ(t->GetValue(), 0);
  EXPECT_EQ(blocked->GetValue(), 0);
  m.port.PokeLE32(0, 40);
  m.port.PokeLE32(4, 41);
  m.ref._Poll(60);
  EXPECT_EQ(t->GetValue(), 0);
  m.ref._Poll(60);
  EXPECT_EQ(t->GetValue(), 40);
  EXPECT_EQ(blocked->GetValue(), 0);  // polling blocked
}

TEST(Caching, CommandsPollWhileBusySelfClearingEntriesReadThrough) {
  Loaded m(R"(
    <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue>
      <PollingTime>10</PollingTime></Command>
    <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>
    <Enumeration Name="E"><pValue>S</pValue><PollingTime>10</PollingTime>
      <EnumEntry Name="Idle"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Run"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    </Enumeration>
    <IntReg Name="S"><Address>4</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>)");
  int fired = 0;
  Register(m.Node("C"), [&](INode*) { ++fired; });
  m.ref._Poll(100);
  EXPECT_EQ(fired, 0);  // idle command: no polling
  m.As<ICommand>("C")->Execute();
  fired = 0;
  m.ref._Poll(100);
  EXPECT_EQ(fired, 1);
  IEnumeration* e = m.As<IEnumeration>("E");
  e->FromString("Run");
  EXPECT_EQ(std::string(e->ToString().c_str()), "Run");
  m.port.PokeLE32(4, 0);  // the device clears the entry; reads bypass the cache meanwhile
  EXPECT_EQ(std::string(e->ToString().c_str()), "Idle");
  const int reads = m.port.reads;
  e->ToString();
  EXPECT_EQ(m.port.reads, reads);  // an ordinary entry is cached again
}

}  // namespace
