// SwissKnife, IntSwissKnife, Converter and IntConverter nodes.
#include <gtest/gtest.h>

#include <cfloat>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

TEST(SwissKnife, ComputesFromVariablesConstantsAndExpressions) {
  Loaded m(R"(
    <Integer Name="A"><Value>6</Value><Min>1</Min><Max>9</Max></Integer>
    <Float Name="B"><Value>0.5</Value></Float>
    <IntSwissKnife Name="K"><pVariable Name="A">A</pVariable><Constant Name="C">10</Constant>
      <Expression Name="TWICE">A*2</Expression><Formula>TWICE + C + A.Max - 010</Formula>
    </IntSwissKnife>
    <SwissKnife Name="F"><pVariable Name="A">A</pVariable><pVariable Name="B">B</pVariable>
      <Formula>A * B + ROUND(2.345, 2)</Formula></SwissKnife>)");
  IInteger* k = m.As<IInteger>("K");
  EXPECT_EQ(k->GetValue(), 12 + 10 + 9 - 10);
  EXPECT_EQ(k->GetNode()->GetAccessMode(), RO);
  EXPECT_THROW(k->SetValue(1), GenICam::AccessException);
  EXPECT_EQ(k->GetMin(), INT64_MIN);
  IFloat* f = m.As<IFloat>("F");
  EXPECT_NEAR(f->GetValue(), 3.0 + 2.35, 1e-9);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  m.As<IInteger>("A")->SetValue(2);
  EXPECT_EQ(k->GetValue(), 4 + 10 + 9 - 10);
  EXPECT_NEAR(f->GetValue(), 1.0 + 2.35, 1e-9);
}

TEST(SwissKnife, AccessModeFollowsVariables) {
  Loaded m(R"(
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="V"><pIsImplemented>G</pIsImplemented><Value>1</Value></Integer>
    <Integer Name="U"><pIsAvailable>G</pIsAvailable><Value>1</Value></Integer>
    <IntSwissKnife Name="KNI"><pVariable Name="V">V</pVariable><Formula>V</Formula></IntSwissKnife>
    <IntSwissKnife Name="KNA"><pVariable Name="U">U</pVariable><Formula>U</Formula></IntSwissKnife>)");
  EXPECT_EQ(m.Node("KNI")->GetAccessMode(), NI);
  EXPECT_EQ(m.Node("KNA")->GetAccessMode(), NA);
  m.As<IInteger>("G")->SetValue(1);
  EXPECT_EQ(m.Node("KNI")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("KNA")->GetAccessMode(), RO);
}

TEST(SwissKnife, EvaluationErrorsAreLogicalErrorsNamingTheNode) {
  Loaded m(R"(
    <Integer Name="Z"><Value>0</Value></Integer>
    <IntSwissKnife Name="K"><pVariable Name="Z">Z</pVariable><Formula>10 / Z</Formula>
    </IntSwissKnife>)");
  try {
    m.As<IInteger>("K")->GetValue();
    FAIL();
  } catch (const GenICam::LogicalErrorException& e) {
    EXPECT_NE(std::string(e.GetDescription()).find("'K'"), std::string::npos);
  }
}

TEST(SwissKnife, EqualityAndPropertySuffixes) {
  Loaded m(R"(
    <Integer Name="A"><Value>3</Value></Integer>
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="H"><pIsImplemented>G</pIsImplemented><Value>3</Value></Integer>
    <IntSwissKnife Name="Eq"><pVariable Name="A">A</pVariable><Formula>(A = 3) + (A &lt;&gt; 3)</Formula>
    </IntSwissKnife>
    <IntSwissKnife Name="Mode"><pVariable Name="A">A</pVariable>
      <Formula>A.AccessMode * 10 + A.Visibility</Formula></IntSwissKnife>
    <IntSwissKnife Name="Hidden"><pVariable Name="H">H</pVariable><Formula>H</Formula>
    </IntSwissKnife>
    <SwissKnife Name="Frac"><Formula>FRAC(2.75)</Formula></SwissKnife>)");
  EXPECT_EQ(m.As<IInteger>("Eq")->GetValue(), 1);
  EXPECT_EQ(m.As<IInteger>("Mode")->GetValue(), RW * 10 + Beginner);
  EXPECT_EQ(m.Node("Hidden")->GetAccessMode(), NI);  // a knife over an NI variable is NI
  EXPECT_DOUBLE_EQ(m.As<IFloat>("Frac")->GetValue(), 0.75);
}

const char* kConverter = R"(
  <Float Name="C"><pValue>Conv</pValue></Float>
  <Converter Name="Conv"><pVariable Name="TIMEBASE">TB</pVariable>
    <FormulaTo>FROM / TIMEBASE</FormulaTo><FormulaFrom>TO * TIMEBASE</FormulaFrom>
    <pValue>Raw</pValue><Slope>Increasing</Slope></Converter>
  <Integer Name="TB"><Value>100</Value></Integer>
  <IntReg Name="Raw"><Address>0</Address><Length>2</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Unit>ticks</Unit></IntReg>
  <IntConverter Name="IC"><pVariable Name="K">TB</pVariable>
    <FormulaTo>K - FROM</FormulaTo><FormulaFrom>K - TO</FormulaFrom>
    <pValue>Raw</pValue><Slope>Decreasing</Slope></IntConverter>)";

TEST(Converter, FromAndToDirections) {
  Loaded m(kConverter);
  m.port.Poke(0, {3, 0});
  IFloat* conv = m.As<IFloat>("Conv");
  EXPECT_DOUBLE_EQ(conv->GetValue(), 300.0);
  conv->SetValue(400.0);
  EXPECT_EQ(m.port.Peek(0, 2), (std::vector<uint8_t>{4, 0}));
  EXPECT_DOUBLE_EQ(conv->GetMin(), 0.0);
  EXPECT_DOUBLE_EQ(conv->GetMax(), 65535.0 * 100);
  EXPECT_EQ(std::string(conv->GetUnit().c_str()), "ticks");
  EXPECT_DOUBLE_EQ(m.As<IFloat>("C")->GetValue(), 400.0);
}

TEST(Converter, IntConverterWithDecreasingSlope) {
  Loaded m(kConverter);
  IInteger* ic = m.As<IInteger>("IC");
  m.port.Poke(0, {30, 0});
  EXPECT_EQ(ic->GetValue(), 70);
  ic->SetValue(40);
  EXPECT_THROW(ic->SetValue(160), GenICam::OutOfRangeException);
  EXPECT_EQ(m.port.Peek(0, 2), (std::vector<uint8_t>{60, 0}));
  EXPECT_EQ(ic->GetMin(), 100 - 65535);
  EXPECT_EQ(ic->GetMax(), 100);
}

}  // namespace
