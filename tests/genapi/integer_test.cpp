// Integer nodes: value sources, bounds, verification texts, representations.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

const char* kRange = R"(
  <Integer Name="I"><Value>10</Value><Min>0</Min><Max>100</Max><Inc>5</Inc></Integer>)";

std::string Description(const std::function<void()>& call) {
  try {
    call();
  } catch (const GenICam::GenericException& e) {
    return e.GetDescription();
  }
  return "no exception";
}

TEST(Integer, FloatingValueWithRangeChecks) {
  Loaded m(kRange);
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetValue(), 10);
  EXPECT_EQ(i->GetMin(), 0);
  EXPECT_EQ(i->GetMax(), 100);
  EXPECT_EQ(i->GetInc(), 5);
  EXPECT_EQ(i->GetIncMode(), fixedIncrement);
  i->SetValue(55);
  EXPECT_EQ(i->GetValue(), 55);
  EXPECT_EQ(Description([&] { i->SetValue(-5); }),
            "Value = -5 must be equal or greater than Min = 0.");
  EXPECT_EQ(Description([&] { i->SetValue(105); }),
            "Value = 105 must be equal or smaller than Max = 100.");
  EXPECT_EQ(Description([&] { i->SetValue(7); }),
            "The difference between Value = 7 and Min = 0 must be dividable without rest by "
            "Inc = 5.");
  EXPECT_THROW(i->SetValue(7), GenICam::OutOfRangeException);
  i->SetValue(7, false);  // no verification: accepted as is
  EXPECT_EQ(i->GetValue(), 7);
  EXPECT_THROW(i->GetValue(true), GenICam::OutOfRangeException);
}

TEST(Integer, ZeroIncrementIsALogicalErrorOnVerify) {
  Loaded m(R"(<Integer Name="I"><Value>3</Value><Inc>0</Inc></Integer>)");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetValue(), 3);
  EXPECT_EQ(Description([&] { i->GetValue(true); }), "Increment must be larger than 0.");
  EXPECT_THROW(i->GetValue(true), GenICam::LogicalErrorException);
}

TEST(Integer, PointerValueAndBoundsComeFromTheirNodes) {
  Loaded m(R"(
    <Integer Name="I"><pValue>R</pValue><pMin>Lo</pMin><pMax>Hi</pMax><pInc>St</pInc></Integer>
    <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort><Unit>us</Unit></IntReg>
    <Integer Name="Lo"><Value>2</Value></Integer>
    <Integer Name="Hi"><Value>20</Value></Integer>
    <Integer Name="St"><Value>2</Value></Integer>)");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetMin(), 2);
  EXPECT_EQ(i->GetMax(), 20);
  EXPECT_EQ(i->GetInc(), 2);
  i->SetValue(8);
  EXPECT_EQ(m.port.PeekLE32(0), 8u);
  EXPECT_EQ(std::string(i->GetUnit().c_str()), "us");
  m.As<IInteger>("Hi")->SetValue(6);
  EXPECT_EQ(i->GetMax(), 6);
  EXPECT_THROW(i->SetValue(8), GenICam::OutOfRangeException);
}

TEST(Integer, BoundsFallBackToThePointedNode) {
  Loaded m(R"(
    <Integer Name="I"><pValue>R</pValue></Integer>
    <IntReg Name="R"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort><Sign>Signed</Sign></IntReg>)");
  EXPECT_EQ(m.As<IInteger>("I")->GetMin(), -128);
  EXPECT_EQ(m.As<IInteger>("I")->GetMax(), 127);
}

TEST(Integer, ValueCopiesAreWrittenAfterTheValue) {
  Loaded m(R"(
    <Integer Name="I"><pValueCopy>C1</pValueCopy><pValue>V</pValue><pValueCopy>C2</pValueCopy>
    </Integer>
    <Integer Name="V"><Value>0</Value></Integer>
    <Integer Name="C1"><Value>0</Value></Integer>
    <Integer Name="C2"><Value>0</Value></Integer>)");
  m.As<IInteger>("I")->SetValue(42);
  for (const char* n : {"V", "C1", "C2"}) EXPECT_EQ(m.As<IInteger>(n)->GetValue(), 42) << n;
}

TEST(Integer, IndexedValues) {
  Loaded m(R"(
    <Integer Name="Sel"><Value>0</Value></Integer>
    <Integer Name="I"><pIndex>Sel</pIndex>
      <ValueIndexed Index="0">10</ValueIndexed>
      <pValueIndexed Index="1">Target</pValueIndexed>
      <ValueDefault>99</ValueDefault></Integer>
    <Integer Name="Target"><Value>20</Value></Integer>)");
  IInteger* i = m.As<IInteger>("I");
  IInteger* sel = m.As<IInteger>("Sel");
  EXPECT_EQ(i->GetValue(), 10);
  sel->SetValue(1);
  EXPECT_EQ(i->GetValue(), 20);
  i->SetValue(21);
  EXPECT_EQ(m.As<IInteger>("Target")->GetValue(), 21);
  sel->SetValue(7);
  EXPECT_EQ(i->GetValue(), 99);
  GenICam::gcstring value, attribute;
  EXPECT_TRUE(i->GetNode()->GetProperty("ValueIndexed", value, attribute));
  EXPECT_EQ(std::string(value.c_str()), "10");
  EXPECT_EQ(std::string(attribute.c_str()), "0");
}

TEST(Integer, ValidValueSetMakesAListIncrement) {
  Loaded m(R"(<Integer Name="I"><Value>1</Value><ValidValueSet>1;2;4;8</ValidValueSet>
      <Max>4</Max></Integer>)");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetIncMode(), listIncrement);
  EXPECT_EQ(i->GetListOfValidValues(), (int64_autovector_t{1, 2, 4}));
  EXPECT_EQ(i->GetListOfValidValues(false).size(), 4u);
  i->SetValue(4);
  EXPECT_THROW(i->SetValue(3), GenICam::OutOfRangeException);
}

struct ReprCase {
  const char* representation;
  int64_t value;
  const char* text;
};

TEST(Integer, RepresentationTextForms) {
  const ReprCase cases[] = {
      {"HexNumber", 0x123456789abcdefLL, "0x123456789abcdef"},
      {"IPV4Address", 0x56789abcLL, "86.120.154.188"},
      {"MACAddress", 0x123456789abcLL, "12:34:56:78:9a:bc"},
      {"Boolean", 1, "true"},
      {"PureNumber", -42, "-42"},
      {"Linear", 1234, "1234"},
  };
  for (const ReprCase& c : cases) {
    Loaded m(std::string("<Integer Name=\"I\"><Value>0</Value><Representation>") +
             c.representation + "</Representation></Integer>");
    IInteger* i = m.As<IInteger>("I");
    i->SetValue(c.value);
    EXPECT_EQ(std::string(i->ToString().c_str()), c.text) << c.representation;
    i->SetValue(0);
    i->FromString(c.text);
    EXPECT_EQ(i->GetValue(), c.value) << c.representation;
  }
}

TEST(Integer, FromStringAcceptsDecimalAndHexOnly) {
  Loaded m("<Integer Name=\"I\"><Value>0</Value></Integer>");
  IInteger* i = m.As<IInteger>("I");
  i->FromString("0X1f");
  EXPECT_EQ(i->GetValue(), 31);
  i->FromString("-17");
  EXPECT_EQ(i->GetValue(), -17);
  for (const char* bad : {"&h1f", "12abc", "", "1.5"}) {
    EXPECT_THROW(i->FromString(bad), GenICam::InvalidArgumentException) << bad;
  }
  EXPECT_EQ(Description([&] { i->FromString("xyz"); }),
            "Node 'I' : cannot convert string 'xyz' to int.");
}

TEST(Integer, ImposedBoundsNarrowTheRange) {
  Loaded m(kRange);
  IInteger* i = m.As<IInteger>("I");
  i->ImposeMax(50);
  i->ImposeMin(10);
  EXPECT_EQ(i->GetMax(), 50);
  EXPECT_EQ(i->GetMin(), 10);
  i->ImposeMax(500);
  EXPECT_EQ(i->GetMax(), 100);
}

TEST(Integer, OperatorsForwardToGetAndSet) {
  Loaded m(kRange);
  CIntegerPtr i = m.ref._GetNode("I");
  *i = 20;
  EXPECT_EQ((*i)(), 20);
  EXPECT_EQ(**i, 20);
}

TEST(Integer, ErrorEnumerationIsCheckedAfterVerifiedWrites) {
  Loaded m(R"(
    <Integer Name="I"><pError>Err</pError><Value>0</Value></Integer>
    <Enumeration Name="Err"><pValue>ErrReg</pValue>
      <EnumEntry Name="Ok"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Bad"><ToolTip>value refused</ToolTip><DisplayName>Refused</DisplayName>
        <Value>3</Value></EnumEntry></Enumeration>
    <IntReg Name="ErrReg"><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>
      <pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>)");
  IInteger* i = m.As<IInteger>("I");
  i->SetValue(1);
  m.port.PokeLE32(0, 3);
  try {
    i->SetValue(2);
    FAIL();
  } catch (const GenICam::GenericException& e) {
    EXPECT_STREQ(e.GetDescription(), "Refused : value refused");
  }
  i->SetValue(4, false);  // no verification, no error check
}

}  // namespace
