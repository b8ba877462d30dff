// Access modes: register and port modes, guards, imposed modes, categories,
// the access-mode cache and cycles.
#include <gtest/gtest.h>

#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

std::string Reg(const char* name, const char* mode, int address, const char* extra = "") {
  return std::string("<IntReg Name=\"") + name + "\">" + extra + "<Address>" +
         std::to_string(address) + "</Address><Length>4</Length><AccessMode>" + mode +
         "</AccessMode><pPort>Device</pPort></IntReg>";
}

TEST(Access, CombineTable) {
  const EAccessMode all[] = {NI, NA, WO, RO, RW};
  const EAccessMode expected[5][5] = {
      {NI, NI, NI, NI, NI}, {NI, NA, NA, NA, NA}, {NI, NA, WO, NA, WO},
      {NI, NA, NA, RO, RO}, {NI, NA, WO, RO, RW}};
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) EXPECT_EQ(Combine(all[a], all[b]), expected[a][b]) << a << b;
  EXPECT_EQ(Combine(NoCache, WriteThrough), NoCache);
  EXPECT_EQ(Combine(WriteAround, WriteThrough), WriteAround);
  EXPECT_EQ(Combine(Beginner, Guru), Guru);
}

TEST(Access, RegisterModeCombinesWithThePort) {
  Loaded m(Reg("RW", "RW", 0) + Reg("RO", "RO", 4) + Reg("WO", "WO", 8) + Reg("Def", "", 12));
  EXPECT_EQ(m.Node("RW")->GetAccessMode(), RW);
  EXPECT_EQ(m.Node("RO")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("WO")->GetAccessMode(), WO);
  EXPECT_EQ(m.Node("Def")->GetAccessMode(), RO);  // default AccessMode
  m.port.mode = RO;
  m.ref._InvalidateNodes();
  EXPECT_EQ(m.Node("RW")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("WO")->GetAccessMode(), NA);
  CNodeMapRef unconnected;
  unconnected._LoadXMLFromString(genapi_test::Describe(Reg("RW", "RW", 0)).c_str());
  EXPECT_EQ(unconnected._GetNode("RW")->GetAccessMode(), NA);
  EXPECT_THROW(CIntegerPtr(unconnected._GetNode("RW"))->GetValue(), GenICam::AccessException);
}

TEST(Access, ReadAndWriteChecksUseTheReferenceTexts) {
  Loaded m(Reg("RO", "RO", 0) + Reg("WO", "WO", 4));
  try {
    m.As<IInteger>("RO")->SetValue(1);
    FAIL();
  } catch (const GenICam::AccessException& e) {
    EXPECT_STREQ(e.GetDescription(), "Node is not writable.");
  }
  try {
    m.As<IInteger>("WO")->GetValue();
    FAIL();
  } catch (const GenICam::AccessException& e) {
    EXPECT_STREQ(e.GetDescription(), "Node is not readable.");
  }
  m.As<IInteger>("RO")->SetValue(1, false);  // Verify=false skips the access check
  EXPECT_EQ(m.port.PeekLE32(0), 1u);
}

struct GuardCase {
  const char* element;
  int64_t guardValue;
  EAccessMode rw, ro, wo;
};

TEST(Access, GuardsForEveryValueAndMode) {
  const GuardCase cases[] = {
      {"pIsImplemented", 0, NI, NI, NI}, {"pIsImplemented", 1, RW, RO, WO},
      {"pIsAvailable", 0, NA, NA, NA},   {"pIsAvailable", 2, RW, RO, WO},
      {"pIsLocked", 1, RO, RO, NA},      {"pIsLocked", 0, RW, RO, WO},
  };
  for (const GuardCase& c : cases) {
    SCOPED_TRACE(std::string(c.element) + "=" + std::to_string(c.guardValue));
    const std::string guard = std::string("<") + c.element + ">G</" + c.element + ">";
    Loaded m("<Integer Name=\"G\"><Value>" + std::to_string(c.guardValue) + "</Value></Integer>" +
             Reg("A", "RW", 0, guard.c_str()) + Reg("B", "RO", 4, guard.c_str()) +
             Reg("C", "WO", 8, guard.c_str()));
    EXPECT_EQ(m.Node("A")->GetAccessMode(), c.rw);
    EXPECT_EQ(m.Node("B")->GetAccessMode(), c.ro);
    EXPECT_EQ(m.Node("C")->GetAccessMode(), c.wo);
  }
}

TEST(Access, GuardsOfEveryValueKind) {
  Loaded m(R"(
    <Boolean Name="Bo"><Value>false</Value></Boolean>
    <Enumeration Name="En"><Value>0</Value><EnumEntry Name="Z"><Value>0</Value></EnumEntry>
      <EnumEntry Name="O"><Value>1</Value></EnumEntry></Enumeration>
    <Float Name="Fl"><Value>0</Value></Float>
    <Integer Name="A"><pIsAvailable>Bo</pIsAvailable><Value>1</Value></Integer>
    <Integer Name="B"><pIsAvailable>En</pIsAvailable><Value>1</Value></Integer>
    <Integer Name="C"><pIsAvailable>Fl</pIsAvailable><Value>1</Value></Integer>)");
  for (const char* n : {"A", "B", "C"}) EXPECT_EQ(m.Node(n)->GetAccessMode(), NA) << n;
  m.As<IBoolean>("Bo")->SetValue(true);
  m.As<IEnumeration>("En")->FromString("O");
  m.As<IFloat>("Fl")->SetValue(1.0);
  for (const char* n : {"A", "B", "C"}) EXPECT_EQ(m.Node(n)->GetAccessMode(), RW) << n;
}

TEST(Access, ImposedModes) {
  Loaded m(Reg("A", "RW", 0, "<ImposedAccessMode>RO</ImposedAccessMode>") + Reg("B", "RW", 4));
  EXPECT_EQ(m.Node("A")->GetAccessMode(), RO);
  m.Node("B")->ImposeAccessMode(RO);
  EXPECT_EQ(m.Node("B")->GetAccessMode(), RO);
  m.Node("B")->ImposeAccessMode(WO);
  EXPECT_EQ(m.Node("B")->GetAccessMode(), WO);
  m.Node("B")->ImposeAccessMode(NI);
  EXPECT_EQ(m.Node("B")->GetAccessMode(), NI);
}

TEST(Access, PointerNodesTakeTheModeOfTheirTarget) {
  Loaded m(Reg("R", "RO", 0) +
           "<Integer Name=\"I\"><pValue>R</pValue></Integer>"
           "<Float Name=\"F\"><pValue>R</pValue></Float>"
           "<Integer Name=\"Floating\"><Value>1</Value></Integer>");
  EXPECT_EQ(m.Node("I")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("F")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("Floating")->GetAccessMode(), RW);
}

TEST(Access, CategoriesAreReadOnlyOrNotImplemented) {
  Loaded m(R"(
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="X"><pIsImplemented>G</pIsImplemented><Value>1</Value></Integer>
    <Category Name="Hidden"><pFeature>X</pFeature></Category>
    <Category Name="Root"><pFeature>Hidden</pFeature><pFeature>G</pFeature></Category>
    <Category Name="Guarded"><pIsImplemented>G</pIsImplemented><pFeature>G</pFeature></Category>)");
  EXPECT_EQ(m.Node("Hidden")->GetAccessMode(), NI);
  EXPECT_EQ(m.Node("Root")->GetAccessMode(), RO);
  EXPECT_EQ(m.Node("Guarded")->GetAccessMode(), NI);
  FeatureList_t features;
  m.As<ICategory>("Root")->GetFeatures(features);
  ASSERT_EQ(features.size(), 2u);
  EXPECT_EQ(std::string(features[0]->GetNode()->GetName().c_str()), "Hidden");
}

TEST(Access, CacheableOnlyWithoutNoCacheGuards) {
  Loaded m(Reg("CachedGuard", "RO", 0) +
           Reg("LiveGuard", "RO", 4, "<Cachable>NoCache</Cachable>") +
           Reg("A", "RW", 8, "<pIsAvailable>CachedGuard</pIsAvailable>") +
           Reg("B", "RW", 12, "<pIsAvailable>LiveGuard</pIsAvailable>"));
  EXPECT_EQ(m.Node("A")->IsAccessModeCacheable(), Yes);
  EXPECT_EQ(m.Node("B")->IsAccessModeCacheable(), No);
  EXPECT_EQ(m.Node("A")->GetAccessMode(), NA);
  EXPECT_EQ(m.Node("B")->GetAccessMode(), NA);
  m.port.PokeLE32(0, 1);
  m.port.PokeLE32(4, 1);
  EXPECT_EQ(m.Node("A")->GetAccessMode(), NA);  // cached until invalidated
  EXPECT_EQ(m.Node("B")->GetAccessMode(), RW);  // recomputed every time
  m.Node("CachedGuard")->InvalidateNode();
  EXPECT_EQ(m.Node("A")->GetAccessMode(), RW);
}

// A guard that is not readable makes the node unavailable. A guard that
// cannot be read (a silent device, a formula that cannot be evaluated) is an
// error that reaches the caller, as in the reference: a feature tree shows it.
// Nothing is cached then, so the mode is right once the cause is gone.
TEST(Access, GuardsThatCannotBeRead) {
  struct Case {
    const char* guard;
    const char* guardNode;
    bool silentDevice;
    const char* exceptionType;  // null: the node is NA
  };
  const std::string kWriteOnly = Reg("G", "WO", 0x40);
  const std::string kRegister = Reg("G", "RO", 0x40, "<Cachable>NoCache</Cachable>");
  const std::string kBrokenKnife =
      "<IntSwissKnife Name=\"G\"><Formula>1/0</Formula></IntSwissKnife>";
  const Case cases[] = {
      {"pIsImplemented", kWriteOnly.c_str(), false, nullptr},
      {"pIsAvailable", kWriteOnly.c_str(), false, nullptr},
      {"pIsImplemented", kRegister.c_str(), true, "TimeoutException"},
      {"pIsAvailable", kRegister.c_str(), true, "TimeoutException"},
      {"pIsLocked", kRegister.c_str(), true, "TimeoutException"},
      {"pIsAvailable", kBrokenKnife.c_str(), false, "LogicalErrorException"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.guard) + " over " + c.guardNode);
    const std::string guard = std::string("<") + c.guard + ">G</" + c.guard + ">";
    Loaded m(c.guardNode + Reg("A", "RW", 0, guard.c_str()));
    m.port.PokeLE32(0x40, 1);
    m.port.failReads = c.silentDevice;
    if (!c.exceptionType) {
      EXPECT_EQ(m.Node("A")->GetAccessMode(), NA);
      continue;
    }
    try {
      m.Node("A")->GetAccessMode();
      ADD_FAILURE() << "no exception";
    } catch (const GenICam::GenericException& e) {
      EXPECT_STREQ(e.GetExceptionType(), c.exceptionType) << e.what();
    }
    if (!c.silentDevice) continue;
    m.port.failReads = false;
    EXPECT_EQ(m.Node("A")->GetAccessMode(), c.guard == std::string("pIsLocked") ? RO : RW);
  }
}

TEST(Access, GuardCyclesDoNotHang) {
  Loaded m(R"(
    <Integer Name="A"><pIsAvailable>B</pIsAvailable><Value>1</Value></Integer>
    <Integer Name="B"><pIsAvailable>A</pIsAvailable><Value>1</Value></Integer>)");
  EXPECT_TRUE(IsAvailable(m.Node("A")));
  EXPECT_TRUE(IsAvailable(m.Node("B")));
}

TEST(Access, HelpersOnModesAndPointers) {
  EXPECT_TRUE(IsReadable(RO));
  EXPECT_TRUE(IsReadable(RW));
  EXPECT_FALSE(IsReadable(WO));
  EXPECT_TRUE(IsWritable(WO));
  EXPECT_FALSE(IsWritable(RO));
  EXPECT_FALSE(IsImplemented(NI));
  EXPECT_TRUE(IsImplemented(NA));
  EXPECT_FALSE(IsAvailable(NA));
  EXPECT_FALSE(IsAvailable(NI));
  const IBase* none = nullptr;
  EXPECT_FALSE(IsReadable(none));
  EXPECT_FALSE(IsWritable(none));
  EXPECT_FALSE(IsAvailable(none));
  EXPECT_FALSE(IsImplemented(none));
  CIntegerPtr empty;
  EXPECT_FALSE(IsReadable(empty));
  EXPECT_FALSE(IsWritable(empty));
  Loaded m(Reg("R", "RW", 0));
  CIntegerPtr r = m.ref._GetNode("R");
  EXPECT_TRUE(IsReadable(r));
  EXPECT_TRUE(IsWritable(r));
  EXPECT_TRUE(IsAvailable(r));
  EXPECT_TRUE(IsImplemented(r));
  EXPECT_TRUE(IsVisible(Beginner, Expert));
  EXPECT_FALSE(IsVisible(Guru, Expert));
}

}  // namespace
