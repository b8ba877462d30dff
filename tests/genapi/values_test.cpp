// Value nodes: Integer, Float, Enumeration, String, Boolean, Command and the
// formula nodes (SwissKnife, IntSwissKnife, Converter, IntConverter).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::IntReg;
using genapi_test::Loaded;
using genapi_test::Outcome;
using Ints = std::vector<int64_t>;

const char* kIntegers = R"(
  <Integer Name="I"><Value>10</Value><Min>0</Min><Max>100</Max><Inc>5</Inc></Integer>
  <Integer Name="Z"><Value>3</Value><Inc>0</Inc></Integer>
  <Integer Name="L"><Value>1</Value><ValidValueSet>1;2;4;8</ValidValueSet><Max>4</Max></Integer>)";

TEST(Integer, FloatingValueRangesAndIncrements) {
  Loaded m(kIntegers);
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ((Ints{i->GetValue(), i->GetMin(), i->GetMax(), i->GetInc()}), (Ints{10, 0, 100, 5}));
  EXPECT_EQ(i->GetIncMode(), fixedIncrement);
  IInteger& ref = *CIntegerPtr(i);  // the interface's operators forward to Set/GetValue
  ref = 55;
  EXPECT_EQ(ref(), 55);
  EXPECT_EQ(*ref, 55);
  EXPECT_EQ(Outcome([&] { i->SetValue(-5); }),
            "OutOfRangeException: Value = -5 must be equal or greater than Min = 0.");
  EXPECT_EQ(Outcome([&] { i->SetValue(105); }),
            "OutOfRangeException: Value = 105 must be equal or smaller than Max = 100.");
  EXPECT_EQ(Outcome([&] { i->SetValue(7); }),
            "OutOfRangeException: The difference between Value = 7 and Min = 0 must be dividable "
            "without rest by Inc = 5.");
  i->SetValue(7, false);  // no verification: accepted as is
  EXPECT_EQ(i->GetValue(), 7);
  EXPECT_THROW(i->GetValue(true), GenICam::OutOfRangeException);
  i->ImposeMax(50);
  i->ImposeMin(10);
  EXPECT_EQ((Ints{i->GetMin(), i->GetMax()}), (Ints{10, 50}));
  i->ImposeMax(500);
  EXPECT_EQ(i->GetMax(), 100);

  IInteger* z = m.As<IInteger>("Z");
  EXPECT_EQ(z->GetValue(), 3);
  EXPECT_EQ(Outcome([&] { z->GetValue(true); }),
            "LogicalErrorException: Increment must be larger than 0.");

  IInteger* l = m.As<IInteger>("L");
  EXPECT_EQ(l->GetIncMode(), listIncrement);
  EXPECT_EQ(l->GetListOfValidValues(), (int64_autovector_t{1, 2, 4}));
  EXPECT_EQ(l->GetListOfValidValues(false).size(), 4u);
  l->SetValue(4);
  EXPECT_THROW(l->SetValue(3), GenICam::OutOfRangeException);
}

TEST(Integer, PointerValueBoundsAndCopies) {
  Loaded m(IntReg("R", 0, "RW", "<Unit>us</Unit>") +
           IntReg("S8", 8, "RW", "<Sign>Signed</Sign>", 1) +
           R"(
    <Integer Name="I"><pValue>R</pValue><pMin>Lo</pMin><pMax>Hi</pMax><pInc>St</pInc></Integer>
    <Integer Name="Lo"><Value>2</Value></Integer>
    <Integer Name="Hi"><Value>20</Value></Integer>
    <Integer Name="St"><Value>2</Value></Integer>
    <Integer Name="S"><pValue>S8</pValue></Integer>
    <Integer Name="C"><pValueCopy>C1</pValueCopy><pValue>V</pValue><pValueCopy>C2</pValueCopy>
    </Integer>
    <Integer Name="V"><Value>0</Value></Integer>
    <Integer Name="C1"><Value>0</Value></Integer>
    <Integer Name="C2"><Value>0</Value></Integer>)");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ((Ints{i->GetMin(), i->GetMax(), i->GetInc()}), (Ints{2, 20, 2}));
  i->SetValue(8);
  EXPECT_EQ(m.port.PeekLE32(0), 8u);
  EXPECT_STREQ(i->GetUnit().c_str(), "us");
  m.As<IInteger>("Hi")->SetValue(6);
  EXPECT_EQ(i->GetMax(), 6);
  EXPECT_THROW(i->SetValue(8), GenICam::OutOfRangeException);
  // Without bounds of its own, the pointed node's bounds apply.
  EXPECT_EQ((Ints{m.As<IInteger>("S")->GetMin(), m.As<IInteger>("S")->GetMax()}),
            (Ints{-128, 127}));
  m.As<IInteger>("C")->SetValue(42);  // copies are written after the value
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
  EXPECT_EQ(genapi_test::Property(i->GetNode(), "ValueIndexed"), "10 @ 0");
}

TEST(Integer, TextFormsByRepresentation) {
  const struct {
    const char* representation;
    int64_t value;
    const char* text;
  } cases[] = {
      {"HexNumber", 0x123456789abcdefLL, "0x123456789abcdef"},
      {"IPV4Address", 0x56789abcLL, "86.120.154.188"},
      {"MACAddress", 0x123456789abcLL, "12:34:56:78:9a:bc"},
      {"Boolean", 1, "true"},
      {"PureNumber", -42, "-42"},
      {"Linear", 1234, "1234"},
  };
  for (const auto& c : cases) {
    Loaded m(std::string("<Integer Name=\"I\"><Value>0</Value><Representation>") +
             c.representation + "</Representation></Integer>");
    IInteger* i = m.As<IInteger>("I");
    i->SetValue(c.value);
    EXPECT_STREQ(i->ToString().c_str(), c.text) << c.representation;
    i->SetValue(0);
    i->FromString(c.text);
    EXPECT_EQ(i->GetValue(), c.value) << c.representation;
  }
  // Any representation reads decimal and 0x-hex, nothing else.
  Loaded m("<Integer Name=\"I\"><Value>0</Value></Integer>");
  IInteger* i = m.As<IInteger>("I");
  i->FromString("0X1f");
  EXPECT_EQ(i->GetValue(), 31);
  i->FromString("-17");
  EXPECT_EQ(i->GetValue(), -17);
  for (const char* bad : {"&h1f", "12abc", "", "1.5"})
    EXPECT_THROW(i->FromString(bad), GenICam::InvalidArgumentException) << bad;
  EXPECT_EQ(Outcome([&] { i->FromString("xyz"); }),
            "InvalidArgumentException: Node 'I' : cannot convert string 'xyz' to int.");
}

TEST(Integer, ErrorEnumerationIsCheckedAfterVerifiedWrites) {
  Loaded m(IntReg("ErrReg", 0, "RO", "<Cachable>NoCache</Cachable>") + R"(
    <Integer Name="I"><pError>Err</pError><Value>0</Value></Integer>
    <Enumeration Name="Err"><pValue>ErrReg</pValue>
      <EnumEntry Name="Ok"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Bad"><ToolTip>value refused</ToolTip><DisplayName>Refused</DisplayName>
        <Value>3</Value></EnumEntry></Enumeration>)");
  IInteger* i = m.As<IInteger>("I");
  i->SetValue(1);
  m.port.PokeLE32(0, 3);
  EXPECT_THAT(Outcome([&] { i->SetValue(2); }), ::testing::EndsWith(": Refused : value refused"));
  i->SetValue(4, false);  // no verification, no error check
}

TEST(Float, DefaultsRangesAndIncrement) {
  Loaded m(R"(<Float Name="F"><Value>1.5</Value></Float>
              <Float Name="G"><Value>0.5</Value><Min>0</Min><Max>1</Max></Float>
              <Float Name="H"><Value>0</Value><Min>0</Min><Max>10</Max><Inc>0.5</Inc></Float>)");
  IFloat* f = m.As<IFloat>("F");
  EXPECT_EQ(f->GetMin(), -DBL_MAX);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  EXPECT_FALSE(f->HasInc());
  EXPECT_EQ(f->GetIncMode(), noIncrement);
  EXPECT_EQ(f->GetDisplayPrecision(), 6);
  EXPECT_EQ(f->GetDisplayNotation(), fnAutomatic);
  EXPECT_EQ(f->GetRepresentation(), PureNumber);
  EXPECT_EQ(Outcome([&] { f->GetInc(); }), "RuntimeException: node does not have an increment.");
  IFloat* g = m.As<IFloat>("G");
  EXPECT_EQ(Outcome([&] { g->SetValue(1.5); }),
            "OutOfRangeException: Value 1.500000 must be smaller than or equal 1.000000.");
  EXPECT_EQ(Outcome([&] { g->SetValue(-1); }),
            "OutOfRangeException: Value -1.000000 must be greater than or equal 0.000000.");
  g->SetValue(0.25);
  EXPECT_DOUBLE_EQ(g->GetValue(), 0.25);
  IFloat* h = m.As<IFloat>("H");  // the increment is not verified
  EXPECT_TRUE(h->HasInc());
  EXPECT_DOUBLE_EQ(h->GetInc(), 0.5);
  h->SetValue(0.3);
  EXPECT_DOUBLE_EQ(h->GetValue(), 0.3);
}

TEST(Float, DisplayNotationShapesTheText) {
  Loaded m(R"(
    <Float Name="A"><Value>1234.5</Value></Float>
    <Float Name="X"><Value>1234.5</Value><DisplayNotation>Fixed</DisplayNotation>
      <DisplayPrecision>2</DisplayPrecision></Float>
    <Float Name="S"><Value>1234.5</Value><DisplayNotation>Scientific</DisplayNotation>
      <DisplayPrecision>3</DisplayPrecision></Float>)");
  EXPECT_STREQ(m.As<IFloat>("A")->ToString().c_str(), "1234.5");
  EXPECT_STREQ(m.As<IFloat>("X")->ToString().c_str(), "1234.50");
  EXPECT_STREQ(m.As<IFloat>("S")->ToString().c_str(), "1.234e+03");
  IFloat* a = m.As<IFloat>("A");
  a->FromString("2.75");
  EXPECT_DOUBLE_EQ(a->GetValue(), 2.75);
  EXPECT_THROW(a->FromString("two"), GenICam::InvalidArgumentException);
}

TEST(Float, PointersToIntegerAndEnumerationAndBack) {
  Loaded m(R"(
    <Float Name="F"><pValue>I</pValue></Float>
    <Integer Name="I"><Value>3</Value><Min>0</Min><Max>10</Max></Integer>
    <Float Name="E"><pValue>Gain</pValue></Float>
    <Enumeration Name="Gain"><Value>0</Value>
      <EnumEntry Name="Low"><Value>0</Value><NumericValue>1.0</NumericValue></EnumEntry>
      <EnumEntry Name="High"><Value>1</Value><NumericValue>4.0</NumericValue></EnumEntry>
    </Enumeration>
    <Integer Name="R"><pValue>G</pValue></Integer>
    <Float Name="G"><Value>2.6</Value></Float>)");
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
  EXPECT_EQ(m.As<IInteger>("R")->GetValue(), 3);  // an integer reads a float rounded
}

const std::string kEnum = IntReg("R", 0) + R"(
  <Integer Name="Avail"><Value>0</Value></Integer>
  <Integer Name="Impl"><Value>0</Value></Integer>
  <Enumeration Name="E"><pValue>R</pValue>
    <EnumEntry Name="Zero"><Value>0</Value></EnumEntry>
    <EnumEntry Name="One"><pIsAvailable>Avail</pIsAvailable><Value>1</Value></EnumEntry>
    <EnumEntry Name="Two"><Value>2</Value><Symbolic>Deux</Symbolic></EnumEntry>
    <EnumEntry Name="Three"><pIsImplemented>Impl</pIsImplemented><Value>3</Value></EnumEntry>
  </Enumeration>)";

TEST(Enumeration, EntriesSymbolicsAndWrites) {
  Loaded m(kEnum);
  IEnumeration* e = m.As<IEnumeration>("E");
  NodeList_t entries;
  e->GetEntries(entries);
  EXPECT_EQ(entries.size(), 4u);
  GenICam::gcstring_vector symbolics;
  e->GetSymbolics(symbolics);
  ASSERT_EQ(symbolics.size(), 2u);  // only implemented and available entries
  EXPECT_STREQ(symbolics[0].c_str(), "Zero");
  EXPECT_STREQ(symbolics[1].c_str(), "Deux");
  EXPECT_NE(e->GetEntryByName("Deux"), nullptr);
  EXPECT_EQ(e->GetEntryByName("Two"), nullptr);  // by symbolic, not by XML name
  EXPECT_EQ(e->GetEntry(2)->GetValue(), 2);
  EXPECT_EQ(e->GetEntry(9), nullptr);
  EXPECT_EQ(e->GetEntry(3)->GetNode()->GetAccessMode(), NI);
  EXPECT_EQ(e->GetEntry(1)->GetNode()->GetAccessMode(), NA);
  EXPECT_EQ(e->GetEntry(0)->GetNode()->GetAccessMode(), RO);
  EXPECT_DOUBLE_EQ(e->GetEntry(2)->GetNumericValue(), 2.0);
  e->FromString("Deux");
  EXPECT_EQ(m.port.PeekLE32(0), 2u);
  EXPECT_STREQ(e->ToString().c_str(), "Deux");
  EXPECT_STREQ(e->GetCurrentEntry()->GetSymbolic().c_str(), "Deux");
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
  EXPECT_EQ(Outcome([&] { e->FromString("deux"); }),             // case matters
            "InvalidArgumentException: Feature 'E' : cannot convert value 'deux', the value is "
            "invalid.");
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
  EXPECT_EQ(m.Modes("AllNI AllNA"), "NI NA");
  m.As<IInteger>("G")->SetValue(1);
  EXPECT_EQ(m.Modes("AllNI AllNA"), "RW RW");
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

TEST(StringAndBoolean, FloatingAndPointerForms) {
  Loaded m(IntReg("R", 0) + genapi_test::Reg("StringReg", "Reg", 0x40, "RW", "", 16) + R"(
    <String Name="S"><Value>hello</Value></String>
    <String Name="P"><pValue>Reg</pValue></String>
    <Boolean Name="B"><pValue>R</pValue><OnValue>5</OnValue><OffValue>2</OffValue></Boolean>
    <Boolean Name="F"><Value>true</Value></Boolean>)");
  IString* s = m.As<IString>("S");
  EXPECT_STREQ(s->GetValue().c_str(), "hello");
  *s = "world";
  EXPECT_STREQ((*s)().c_str(), "world");
  EXPECT_EQ(s->GetNode()->GetAccessMode(), RW);
  IString* p = m.As<IString>("P");
  p->SetValue("abc");
  EXPECT_STREQ(m.As<IString>("Reg")->GetValue().c_str(), "abc");
  EXPECT_EQ(p->GetMaxLength(), 16);
  EXPECT_EQ(p->IsValueCacheValid(), m.As<IString>("Reg")->IsValueCacheValid());

  IBoolean* b = m.As<IBoolean>("B");
  b->SetValue(true);
  EXPECT_EQ(m.port.PeekLE32(0), 5u);
  EXPECT_TRUE(b->GetValue());
  EXPECT_STREQ(b->ToString().c_str(), "true");
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

TEST(Command, ExecuteIsDoneAndRefusals) {
  Loaded m(IntReg("R", 0) + IntReg("WR", 8, "WO") + IntReg("KR", 16) + R"(
    <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue></Command>
    <Command Name="W"><pValue>WR</pValue><CommandValue>3</CommandValue></Command>
    <Command Name="Floating"><Value>0</Value><CommandValue>1</CommandValue></Command>
    <Command Name="RoCmd"><pValue>R</pValue><CommandValue>1</CommandValue>
      <ImposedAccessMode>RO</ImposedAccessMode></Command>
    <Integer Name="Key"><Value>0x55</Value></Integer>
    <Command Name="K"><pValue>KR</pValue><pCommandValue>Key</pCommandValue></Command>
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="HiddenKey"><pIsImplemented>G</pIsImplemented><Value>1</Value></Integer>
    <Command Name="N"><pValue>KR</pValue><pCommandValue>HiddenKey</pCommandValue></Command>)");
  ICommand* c = m.As<ICommand>("C");
  c->Execute();
  EXPECT_EQ(m.port.PeekLE32(0), 1u);
  EXPECT_FALSE(c->IsDone());
  EXPECT_STREQ(c->ToString().c_str(), "1");
  m.port.PokeLE32(0, 0);  // the device clears the register when done
  EXPECT_TRUE(c->IsDone());
  EXPECT_STREQ(c->ToString().c_str(), "0");
  c->FromString("1");
  EXPECT_FALSE(c->IsDone());
  EXPECT_THROW(c->FromString("0"), GenICam::InvalidArgumentException);
  // Write-only and floating commands are done at once.
  ICommand* w = m.As<ICommand>("W");
  w->Execute();
  EXPECT_EQ(m.port.PeekLE32(8), 3u);
  EXPECT_TRUE(w->IsDone());
  ICommand* f = m.As<ICommand>("Floating");
  f->Execute();
  EXPECT_TRUE(f->IsDone());
  EXPECT_THROW(m.As<ICommand>("RoCmd")->Execute(), GenICam::AccessException);
  m.As<ICommand>("K")->Execute();
  EXPECT_EQ(m.port.PeekLE32(16), 0x55u);
  EXPECT_EQ(m.Node("N")->GetAccessMode(), NI);
  EXPECT_EQ(Outcome([&] { m.As<ICommand>("N")->IsDone(); }),
            "AccessException: Node is not implemented.");
}

TEST(SwissKnife, ComputesFromVariablesConstantsExpressionsAndProperties) {
  Loaded m(R"(
    <Integer Name="A"><Value>6</Value><Min>1</Min><Max>9</Max></Integer>
    <Float Name="B"><Value>0.5</Value></Float>
    <IntSwissKnife Name="K"><pVariable Name="A">A</pVariable><Constant Name="C">10</Constant>
      <Expression Name="TWICE">A*2</Expression><Formula>TWICE + C + A.Max - 010</Formula>
    </IntSwissKnife>
    <SwissKnife Name="F"><pVariable Name="A">A</pVariable><pVariable Name="B">B</pVariable>
      <Formula>A * B + ROUND(2.345, 2)</Formula></SwissKnife>
    <IntSwissKnife Name="Mode"><pVariable Name="A">A</pVariable>
      <Formula>A.AccessMode * 10 + A.Visibility</Formula></IntSwissKnife>)");
  IInteger* k = m.As<IInteger>("K");
  EXPECT_EQ(k->GetValue(), 12 + 10 + 9 - 10);
  EXPECT_EQ(k->GetNode()->GetAccessMode(), RO);
  EXPECT_THROW(k->SetValue(1), GenICam::AccessException);
  EXPECT_EQ(k->GetMin(), INT64_MIN);
  IFloat* f = m.As<IFloat>("F");
  EXPECT_NEAR(f->GetValue(), 3.0 + 2.35, 1e-9);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  EXPECT_EQ(m.As<IInteger>("Mode")->GetValue(), RW * 10 + Beginner);
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
  EXPECT_EQ(m.Modes("KNI KNA"), "NI NA");
  m.As<IInteger>("G")->SetValue(1);
  EXPECT_EQ(m.Modes("KNI KNA"), "RO RO");
}

TEST(Converter, BothDirectionsAndSlopes) {
  Loaded m(IntReg("Raw", 0, "RW", "<Unit>ticks</Unit>", 2) + R"(
    <Float Name="C"><pValue>Conv</pValue></Float>
    <Converter Name="Conv"><pVariable Name="TIMEBASE">TB</pVariable>
      <FormulaTo>FROM / TIMEBASE</FormulaTo><FormulaFrom>TO * TIMEBASE</FormulaFrom>
      <pValue>Raw</pValue><Slope>Increasing</Slope></Converter>
    <Integer Name="TB"><Value>100</Value></Integer>
    <IntConverter Name="IC"><pVariable Name="K">TB</pVariable>
      <FormulaTo>K - FROM</FormulaTo><FormulaFrom>K - TO</FormulaFrom>
      <pValue>Raw</pValue><Slope>Decreasing</Slope></IntConverter>)");
  m.port.Poke(0, {3, 0});
  IFloat* conv = m.As<IFloat>("Conv");
  EXPECT_DOUBLE_EQ(conv->GetValue(), 300.0);
  conv->SetValue(400.0);
  EXPECT_EQ(m.port.Peek(0, 2), (std::vector<uint8_t>{4, 0}));
  EXPECT_DOUBLE_EQ(conv->GetMin(), 0.0);
  EXPECT_DOUBLE_EQ(conv->GetMax(), 65535.0 * 100);
  EXPECT_STREQ(conv->GetUnit().c_str(), "ticks");
  EXPECT_DOUBLE_EQ(m.As<IFloat>("C")->GetValue(), 400.0);
  IInteger* ic = m.As<IInteger>("IC");  // decreasing: the bounds swap
  m.port.Poke(0, {30, 0});
  m.Node("Raw")->InvalidateNode();
  EXPECT_EQ(ic->GetValue(), 70);
  ic->SetValue(40);
  EXPECT_THROW(ic->SetValue(160), GenICam::OutOfRangeException);
  EXPECT_EQ(m.port.Peek(0, 2), (std::vector<uint8_t>{60, 0}));
  EXPECT_EQ((Ints{ic->GetMin(), ic->GetMax()}), (Ints{100 - 65535, 100}));
}

}  // namespace
