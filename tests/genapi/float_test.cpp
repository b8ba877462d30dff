// Float nodes: bounds, increments, display notation, pointer forms.
#include <gtest/gtest.h>

#include <cfloat>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

TEST(Float, DefaultsAndRangeTexts) {
  Loaded m(R"(<Float Name="F"><Value>1.5</Value></Float>
              <Float Name="G"><Value>0.5</Value><Min>0</Min><Max>1</Max></Float>)");
  IFloat* f = m.As<IFloat>("F");
  EXPECT_EQ(f->GetMin(), -DBL_MAX);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  EXPECT_FALSE(f->HasInc());
  EXPECT_EQ(f->GetIncMode(), noIncrement);
  EXPECT_EQ(f->GetDisplayPrecision(), 6);
  EXPECT_EQ(f->GetDisplayNotation(), fnAutomatic);
  EXPECT_EQ(f->GetRepresentation(), PureNumber);
  try {
    f->GetInc();
    FAIL();
  } catch (const GenICam::RuntimeException& e) {
    EXPECT_STREQ(e.GetDescription(), "node does not have an increment.");
  }
  IFloat* g = m.As<IFloat>("G");
  try {
    g->SetValue(1.5);
    FAIL();
  } catch (const GenICam::OutOfRangeException& e) {
    EXPECT_STREQ(e.GetDescription(), "Value 1.500000 must be smaller than or equal 1.000000.");
  }
  try {
    g->SetValue(-1);
    FAIL();
  } catch (const GenICam::OutOfRangeException& e) {
    EXPECT_STREQ(e.GetDescription(), "Value -1.000000 must be greater than or equal 0.000000.");
  }
  g->SetValue(0.25);
  EXPECT_DOUBLE_EQ(g->GetValue(), 0.25);
}

TEST(Float, IncrementIsNotVerified) {
  Loaded m(R"(<Float Name="F"><Value>0</Value><Min>0</Min><Max>10</Max><Inc>0.5</Inc></Float>)");
  IFloat* f = m.As<IFloat>("F");
  EXPECT_TRUE(f->HasInc());
  EXPECT_DOUBLE_EQ(f->GetInc(), 0.5);
  f->SetValue(0.3);
  EXPECT_DOUBLE_EQ(f->GetValue(), 0.3);
}

TEST(Float, DisplayNotationShapesTheText) {
  Loaded m(R"(
    <Float Name="A"><Value>1234.5</Value></Float>
    <Float Name="X"><Value>1234.5</Value><DisplayNotation>Fixed</DisplayNotation>
      <DisplayPrecision>2</DisplayPrecision></Float>
    <Float Name="S"><Value>1234.5</Value><DisplayNotation>Scientific</DisplayNotation>
      <DisplayPrecision>3</DisplayPrecision></Float>)");
  EXPECT_EQ(std::string(m.As<IFloat>("A")->ToString().c_str()), "1234.5");
  EXPECT_EQ(std::string(m.As<IFloat>("X")->ToString().c_str()), "1234.50");
  EXPECT_EQ(std::string(m.As<IFloat>("S")->ToString().c_str()), "1.234e+03");
  IFloat* a = m.As<IFloat>("A");
  a->FromString("2.75");
  EXPECT_DOUBLE_EQ(a->GetValue(), 2.75);
  EXPECT_THROW(a->FromString("two"), GenICam::InvalidArgumentException);
}

TEST(Float, PointerToIntegerAndEnumeration) {
  Loaded m(R"(
    <Float Name="F"><pValue>I</pValue></Float>
    <Integer Name="I"><Value>3</Value><Min>0</Min><Max>10</Max></Integer>
    <Float Name="E"><pValue>Gain</pValue></Float>
    <Enumeration Name="Gain"><Value>0</Value>
      <EnumEntry Name="Low"><Value>0</Value><NumericValue>1.0</NumericValue></EnumEntry>
      <EnumEntry Name="High"><Value>1</Value><NumericValue>4.0</NumericValue></EnumEntry>
    </Enumeration>)");
  IFloat* f = m.As<IFloat>("F");
  EXPECT_DOUBLE_EQ(f->GetValue(), 3.0);
  f->SetValue(6.6);
  EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 7);
  EXPECT_DOUBLE_EQ(f->GetMax(), 10.0);
  IFloat* e = m.As<IFloat>("E");
  EXPECT_DOUBLE_EQ(e->GetValue(), 1.0);
  e->SetValue(3.5);  // nearest NumericValue wins
  EXPECT_EQ(m.As<IEnumeration>("Gain")->GetIntValue(), 1);
  EXPECT_DOUBLE_EQ(e->GetValue(), 4.0);
}

TEST(Float, IntegerReadsFloatRounded) {
  Loaded m(R"(<Integer Name="I"><pValue>F</pValue></Integer>
              <Float Name="F"><Value>2.6</Value></Float>)");
  EXPECT_EQ(m.As<IInteger>("I")->GetValue(), 3);
}

}  // namespace
