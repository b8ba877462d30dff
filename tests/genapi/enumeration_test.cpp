// Enumerations: entry rules, availability, symbolics and integer access.
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

const char* kEnum = R"(
  <Integer Name="Avail"><Value>0</Value></Integer>
  <Integer Name="Impl"><Value>0</Value></Integer>
  <Enumeration Name="E"><pValue>R</pValue>
    <EnumEntry Name="Zero"><Value>0</Value></EnumEntry>
    <EnumEntry Name="One"><pIsAvailable>Avail</pIsAvailable><Value>1</Value></EnumEntry>
    <EnumEntry Name="Two"><Value>2</Value><Symbolic>Deux</Symbolic></EnumEntry>
    <EnumEntry Name="Three"><pIsImplemented>Impl</pIsImplemented><Value>3</Value></EnumEntry>
  </Enumeration>
  <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort></IntReg>)";

TEST(Enumeration, EntriesSymbolicsAndLookups) {
  Loaded m(kEnum);
  IEnumeration* e = m.As<IEnumeration>("E");
  NodeList_t entries;
  e->GetEntries(entries);
  EXPECT_EQ(entries.size(), 4u);
  GenICam::gcstring_vector symbolics;
  e->GetSymbolics(symbolics);
  ASSERT_EQ(symbolics.size(), 2u);  // only implemented and available entries
  EXPECT_EQ(std::string(symbolics[0].c_str()), "Zero");
  EXPECT_EQ(std::string(symbolics[1].c_str()), "Deux");
  EXPECT_NE(e->GetEntryByName("Deux"), nullptr);
  EXPECT_EQ(e->GetEntryByName("Two"), nullptr);  // by symbolic, not by XML name
  EXPECT_EQ(e->GetEntry(2)->GetValue(), 2);
  EXPECT_EQ(e->GetEntry(9), nullptr);
  EXPECT_EQ(e->GetEntry(3)->GetNode()->GetAccessMode(), NI);
  EXPECT_EQ(e->GetEntry(1)->GetNode()->GetAccessMode(), NA);
  EXPECT_EQ(e->GetEntry(0)->GetNode()->GetAccessMode(), RO);
  EXPECT_DOUBLE_EQ(e->GetEntry(2)->GetNumericValue(), 2.0);
}

TEST(Enumeration, WritesByIntAndSymbol) {
  Loaded m(kEnum);
  IEnumeration* e = m.As<IEnumeration>("E");
  e->FromString("Deux");
  EXPECT_EQ(m.port.PeekLE32(0), 2u);
  EXPECT_EQ(std::string(e->ToString().c_str()), "Deux");
  EXPECT_EQ(std::string(e->GetCurrentEntry()->GetSymbolic().c_str()), "Deux");
  e->SetIntValue(0);
  EXPECT_EQ(e->GetIntValue(), 0);
  *e = "Deux";
  EXPECT_EQ(e->GetIntValue(), 2);
}

TEST(Enumeration, UnknownValuesAndUnavailableEntries) {
  Loaded m(kEnum);
  IEnumeration* e = m.As<IEnumeration>("E");
  EXPECT_THROW(e->SetIntValue(7), GenICam::InvalidArgumentException);
  EXPECT_THROW(e->SetIntValue(7, false), GenICam::InvalidArgumentException);
  EXPECT_THROW(e->SetIntValue(1), GenICam::AccessException);
  EXPECT_THROW(e->FromString("One"), GenICam::AccessException);  // exists, not available
  try {
    e->FromString("deux");  // case matters
    FAIL();
  } catch (const GenICam::InvalidArgumentException& ex) {
    EXPECT_STREQ(ex.GetDescription(),
                 "Feature 'E' : cannot convert value 'deux', the value is invalid.");
  }
  m.port.PokeLE32(0, 5);
  m.Node("R")->InvalidateNode();
  EXPECT_EQ(e->GetIntValue(), 5);  // raw value without verification
  EXPECT_THROW(e->ToString(), GenICam::InvalidArgumentException);
  EXPECT_THROW(e->GetIntValue(true), GenICam::GenericException);
  m.port.PokeLE32(0, 1);
  m.Node("R")->InvalidateNode();
  EXPECT_THROW(e->GetIntValue(true), GenICam::AccessException);
  m.As<IInteger>("Avail")->SetValue(1);
  e->SetIntValue(1);
  EXPECT_EQ(e->GetIntValue(true), 1);
}

TEST(Enumeration, AccessModeFollowsItsEntries) {
  Loaded m(R"(
    <Integer Name="G"><Value>0</Value></Integer>
    <Enumeration Name="AllNI"><Value>0</Value>
      <EnumEntry Name="A"><pIsImplemented>G</pIsImplemented><Value>0</Value></EnumEntry>
    </Enumeration>
    <Enumeration Name="AllNA"><Value>0</Value>
      <EnumEntry Name="A"><pIsAvailable>G</pIsAvailable><Value>0</Value></EnumEntry>
      <EnumEntry Name="B"><pIsImplemented>G</pIsImplemented><Value>1</Value></EnumEntry>
    </Enumeration>)");
  EXPECT_EQ(m.Node("AllNI")->GetAccessMode(), NI);
  EXPECT_EQ(m.Node("AllNA")->GetAccessMode(), NA);
  m.As<IInteger>("G")->SetValue(1);
  EXPECT_EQ(m.Node("AllNI")->GetAccessMode(), RW);
  EXPECT_EQ(m.Node("AllNA")->GetAccessMode(), RW);
}

TEST(Enumeration, IntegerAndSwissKnifeViews) {
  Loaded m(R"(
    <Enumeration Name="E"><Value>1</Value>
      <EnumEntry Name="A"><Value>1</Value><NumericValue>10.5</NumericValue></EnumEntry>
      <EnumEntry Name="B"><Value>2</Value></EnumEntry></Enumeration>
    <Integer Name="I"><pValue>E</pValue></Integer>
    <IntSwissKnife Name="K"><pVariable Name="X">E</pVariable>
      <Formula>(X = X.Entry.B) ? 100 : 200</Formula></IntSwissKnife>)");
  EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 1);
  EXPECT_EQ(m.As<IInteger>("K")->GetValue(), 200);
  m.As<IInteger>("I")->SetValue(2);
  EXPECT_EQ(m.As<IInteger>("K")->GetValue(), 100);
  EXPECT_THROW(m.As<IInteger>("I")->SetValue(3), GenICam::OutOfRangeException);
  EXPECT_THROW(m.As<IInteger>("I")->SetValue(3, false), GenICam::InvalidArgumentException);
}

}  // namespace
