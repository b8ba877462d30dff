// String, Boolean and Command nodes.
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

TEST(String, FloatingAndPointerForms) {
  Loaded m(R"(
    <String Name="S"><Value>hello</Value></String>
    <String Name="P"><pValue>Reg</pValue></String>
    <StringReg Name="Reg"><Address>0</Address><Length>16</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></StringReg>)");
  IString* s = m.As<IString>("S");
  EXPECT_EQ(std::string(s->GetValue().c_str()), "hello");
  *s = "world";
  EXPECT_EQ(std::string((*s)().c_str()), "world");
  EXPECT_EQ(s->GetNode()->GetAccessMode(), RW);
  IString* p = m.As<IString>("P");
  p->SetValue("abc");
  EXPECT_EQ(std::string(m.As<IString>("Reg")->GetValue().c_str()), "abc");
  EXPECT_EQ(p->GetMaxLength(), 16);
  EXPECT_EQ(p->IsValueCacheValid(), m.As<IString>("Reg")->IsValueCacheValid());
}

TEST(Boolean, OnAndOffValues) {
  Loaded m(R"(
    <Boolean Name="B"><pValue>R</pValue><OnValue>5</OnValue><OffValue>2</OffValue></Boolean>
    <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>
    <Boolean Name="F"><Value>true</Value></Boolean>)");
  IBoolean* b = m.As<IBoolean>("B");
  b->SetValue(true);
  EXPECT_EQ(m.port.PeekLE32(0), 5u);
  EXPECT_TRUE(b->GetValue());
  EXPECT_EQ(std::string(b->ToString().c_str()), "true");
  b->FromString("false");
  EXPECT_EQ(m.port.PeekLE32(0), 2u);
  EXPECT_FALSE((*b)());
  EXPECT_THROW(b->FromString("maybe"), GenICam::InvalidArgumentException);
  m.port.PokeLE32(0, 9);
  m.Node("R")->InvalidateNode();
  EXPECT_FALSE(b->GetValue());
  EXPECT_THROW(b->GetValue(true), GenICam::OutOfRangeException);
  EXPECT_TRUE(m.As<IBoolean>("F")->GetValue());
}

const char* kCommand = R"(
  <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue></Command>
  <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></IntReg>
  <Command Name="W"><pValue>WR</pValue><CommandValue>3</CommandValue></Command>
  <IntReg Name="WR"><Address>8</Address><Length>4</Length><AccessMode>WO</AccessMode>
    <pPort>Device</pPort></IntReg>
  <Command Name="Floating"><Value>0</Value><CommandValue>1</CommandValue></Command>
  <Command Name="RoCmd"><pValue>R</pValue><CommandValue>1</CommandValue>
    <ImposedAccessMode>RO</ImposedAccessMode></Command>)";

TEST(Command, ExecuteWritesAndIsDoneReadsBack) {
  Loaded m(kCommand);
  ICommand* c = m.As<ICommand>("C");
  c->Execute();
  EXPECT_EQ(m.port.PeekLE32(0), 1u);
  EXPECT_FALSE(c->IsDone());
  EXPECT_EQ(std::string(c->ToString().c_str()), "1");
  m.port.PokeLE32(0, 0);  // the device clears the register when done
  EXPECT_TRUE(c->IsDone());
  EXPECT_EQ(std::string(c->ToString().c_str()), "0");
  c->FromString("1");
  EXPECT_FALSE(c->IsDone());
  EXPECT_THROW(c->FromString("0"), GenICam::InvalidArgumentException);
}

TEST(Command, WriteOnlyAndFloatingCommandsAreDoneAtOnce) {
  Loaded m(kCommand);
  ICommand* w = m.As<ICommand>("W");
  w->Execute();
  EXPECT_EQ(m.port.PeekLE32(8), 3u);
  EXPECT_TRUE(w->IsDone());
  ICommand* f = m.As<ICommand>("Floating");
  f->Execute();
  EXPECT_TRUE(f->IsDone());
}

TEST(Command, ReadOnlyCommandRefusesToExecute) {
  Loaded m(kCommand);
  EXPECT_THROW(m.As<ICommand>("RoCmd")->Execute(), GenICam::AccessException);
}

TEST(Command, CommandValuePointer) {
  Loaded m(R"(
    <Integer Name="Key"><Value>0x55</Value></Integer>
    <Command Name="C"><pValue>R</pValue><pCommandValue>Key</pCommandValue></Command>
    <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="HiddenKey"><pIsImplemented>G</pIsImplemented><Value>1</Value></Integer>
    <Command Name="N"><pValue>R</pValue><pCommandValue>HiddenKey</pCommandValue></Command>)");
  m.As<ICommand>("C")->Execute();
  EXPECT_EQ(m.port.PeekLE32(0), 0x55u);
  EXPECT_EQ(m.Node("N")->GetAccessMode(), NI);
  try {
    m.As<ICommand>("N")->IsDone();
    FAIL();
  } catch (const GenICam::AccessException& e) {
    EXPECT_STREQ(e.GetDescription(), "Node is not implemented.");
  }
}

}  // namespace
