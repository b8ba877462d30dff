// Node semantics: access modes (register and port modes, guards, imposed
// modes, categories, the access-mode cache, cycles), value caching and
// invalidation, callbacks (which nodes fire, de-duplication, the two phases
// relative to the lock, client exceptions), links between nodes, selectors,
// properties and the presentation queries of INode; the public helpers
// (CPointer, node vectors, interface casts), named ports and threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::IntReg;
using genapi_test::Loaded;
using genapi_test::Outcome;
using genapi_test::Property;
using genapi_test::Reg;
using Names = std::set<std::string>;

const char* kNoCache = "<Cachable>NoCache</Cachable>";

TEST(Access, CombineTable) {
  const EAccessMode all[] = {NI, NA, WO, RO, RW};
  const EAccessMode expected[5][5] = {{NI, NI, NI, NI, NI},
                                      {NI, NA, NA, NA, NA},
                                      {NI, NA, WO, NA, WO},
                                      {NI, NA, NA, RO, RO},
                                      {NI, NA, WO, RO, RW}};
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) EXPECT_EQ(Combine(all[a], all[b]), expected[a][b]) << a << b;
  EXPECT_EQ(Combine(NoCache, WriteThrough), NoCache);
  EXPECT_EQ(Combine(WriteAround, WriteThrough), WriteAround);
  EXPECT_EQ(Combine(Beginner, Guru), Guru);
}

TEST(Access, RegisterModeCombinesWithThePort) {
  Loaded m(IntReg("RW", 0) + IntReg("RO", 4, "RO") + IntReg("WO", 8, "WO") + IntReg("Def", 12, ""));
  EXPECT_EQ(m.Modes("RW RO WO Def"), "RW RO WO RO");  // RO: the default AccessMode
  m.port.mode = RO;
  m.ref._InvalidateNodes();
  EXPECT_EQ(m.Modes("RW WO"), "RO NA");
  CNodeMapRef unconnected;
  unconnected._LoadXMLFromString(genapi_test::Describe(IntReg("RW", 0)).c_str());
  EXPECT_EQ(unconnected._GetNode("RW")->GetAccessMode(), NA);
  EXPECT_THROW(CIntegerPtr(unconnected._GetNode("RW"))->GetValue(), GenICam::AccessException);
}

TEST(Access, ReadAndWriteChecksUseTheReferenceTexts) {
  Loaded m(IntReg("RO", 0, "RO") + IntReg("WO", 4, "WO"));
  EXPECT_EQ(Outcome([&] { m.As<IInteger>("RO")->SetValue(1); }),
            "AccessException: Node is not writable.");
  EXPECT_EQ(Outcome([&] { m.As<IInteger>("WO")->GetValue(); }),
            "AccessException: Node is not readable.");
  m.As<IInteger>("RO")->SetValue(1, false);  // Verify=false skips the access check
  EXPECT_EQ(m.port.PeekLE32(0), 1u);
}

TEST(Access, GuardsForEveryValueAndMode) {
  const struct {
    const char* element;
    int64_t guardValue;
    const char* modes;  // of an RW, an RO and a WO register
  } cases[] = {
      {"pIsImplemented", 0, "NI NI NI"}, {"pIsImplemented", 1, "RW RO WO"},
      {"pIsAvailable", 0, "NA NA NA"},   {"pIsAvailable", 2, "RW RO WO"},
      {"pIsLocked", 1, "RO RO NA"},      {"pIsLocked", 0, "RW RO WO"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.element) + "=" + std::to_string(c.guardValue));
    const std::string guard = std::string("<") + c.element + ">G</" + c.element + ">";
    Loaded m("<Integer Name=\"G\"><Value>" + std::to_string(c.guardValue) + "</Value></Integer>" +
             IntReg("A", 0, "RW", guard) + IntReg("B", 4, "RO", guard) +
             IntReg("C", 8, "WO", guard));
    EXPECT_EQ(m.Modes("A B C"), c.modes);
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
  EXPECT_EQ(m.Modes("A B C"), "NA NA NA");
  m.As<IBoolean>("Bo")->SetValue(true);
  m.As<IEnumeration>("En")->FromString("O");
  m.As<IFloat>("Fl")->SetValue(1.0);
  EXPECT_EQ(m.Modes("A B C"), "RW RW RW");
}

TEST(Access, ImposedModes) {
  Loaded m(IntReg("A", 0, "RW", "<ImposedAccessMode>RO</ImposedAccessMode>") + IntReg("B", 4));
  EXPECT_EQ(m.Node("A")->GetAccessMode(), RO);
  for (EAccessMode imposed : {RO, WO, NI}) {  // each imposition replaces the one before
    m.Node("B")->ImposeAccessMode(imposed);
    EXPECT_EQ(m.Node("B")->GetAccessMode(), imposed);
  }
}

TEST(Access, PointerNodesTakeTheModeOfTheirTarget) {
  Loaded m(IntReg("R", 0, "RO") +
           "<Integer Name=\"I\"><pValue>R</pValue></Integer>"
           "<Float Name=\"F\"><pValue>R</pValue></Float>"
           "<Integer Name=\"Floating\"><Value>1</Value></Integer>");
  EXPECT_EQ(m.Modes("I F Floating"), "RO RO RW");
}

TEST(Access, CategoriesAreReadOnlyOrNotImplemented) {
  Loaded m(R"(
    <Integer Name="G"><Value>0</Value></Integer>
    <Integer Name="X"><pIsImplemented>G</pIsImplemented><Value>1</Value></Integer>
    <Category Name="Hidden"><pFeature>X</pFeature></Category>
    <Category Name="Root"><pFeature>Hidden</pFeature><pFeature>G</pFeature></Category>
    <Category Name="Guarded"><pIsImplemented>G</pIsImplemented><pFeature>G</pFeature></Category>)");
  EXPECT_EQ(m.Modes("Hidden Root Guarded"), "NI RO NI");
  FeatureList_t features;
  m.As<ICategory>("Root")->GetFeatures(features);
  ASSERT_EQ(features.size(), 2u);
  EXPECT_EQ(features[0]->GetNode()->GetName(), "Hidden");
}

TEST(Access, CacheableOnlyWithoutNoCacheGuards) {
  Loaded m(IntReg("CachedGuard", 0, "RO") + IntReg("LiveGuard", 4, "RO", kNoCache) +
           IntReg("A", 8, "RW", "<pIsAvailable>CachedGuard</pIsAvailable>") +
           IntReg("B", 12, "RW", "<pIsAvailable>LiveGuard</pIsAvailable>"));
  EXPECT_EQ(m.Node("A")->IsAccessModeCacheable(), Yes);
  EXPECT_EQ(m.Node("B")->IsAccessModeCacheable(), No);
  EXPECT_EQ(m.Modes("A B"), "NA NA");
  m.port.PokeLE32(0, 1);
  m.port.PokeLE32(4, 1);
  EXPECT_EQ(m.Modes("A B"), "NA RW");  // A's is cached until invalidated, B's recomputed
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
  const std::string kWriteOnly = IntReg("G", 0x40, "WO");
  const std::string kRegister = IntReg("G", 0x40, "RO", kNoCache);
  const std::string kBrokenKnife =
      "<IntSwissKnife Name=\"G\"><Formula>1/0</Formula></IntSwissKnife>";
  const Case cases[] = {
      {"pIsImplemented", kWriteOnly.c_str(), false, nullptr},
      {"pIsAvailable", kWriteOnly.c_str(), false, nullptr},
      {"pIsLocked", kWriteOnly.c_str(), false, nullptr},
      {"pIsImplemented", kRegister.c_str(), true, "TimeoutException"},
      {"pIsAvailable", kRegister.c_str(), true, "TimeoutException"},
      {"pIsLocked", kRegister.c_str(), true, "TimeoutException"},
      {"pIsAvailable", kBrokenKnife.c_str(), false, "LogicalErrorException"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.guard) + " over " + c.guardNode);
    const std::string guard = std::string("<") + c.guard + ">G</" + c.guard + ">";
    Loaded m(c.guardNode + IntReg("A", 0, "RW", guard));
    m.port.PokeLE32(0x40, 1);
    m.port.failReads = c.silentDevice;
    if (!c.exceptionType) {
      EXPECT_EQ(m.Node("A")->GetAccessMode(), NA);
      continue;
    }
    EXPECT_THAT(Outcome([&] { m.Node("A")->GetAccessMode(); }),
                ::testing::StartsWith(std::string(c.exceptionType) + ": "));
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
  const EAccessMode modes[] = {NI, NA, WO, RO, RW};
  const bool readable[] = {false, false, false, true, true},
             writable[] = {false, false, true, false, true};
  for (int k = 0; k < 5; ++k) {
    EXPECT_EQ(IsReadable(modes[k]), readable[k]) << k;
    EXPECT_EQ(IsWritable(modes[k]), writable[k]) << k;
    EXPECT_EQ(IsImplemented(modes[k]), k > 0) << k;
    EXPECT_EQ(IsAvailable(modes[k]), k > 1) << k;
  }
  const IBase* none = nullptr;
  EXPECT_FALSE(IsReadable(none) || IsWritable(none) || IsAvailable(none) || IsImplemented(none));
  CIntegerPtr empty;
  EXPECT_FALSE(IsReadable(empty) || IsWritable(empty));
  Loaded m(IntReg("R", 0));
  CIntegerPtr r = m.ref._GetNode("R");
  EXPECT_TRUE(IsReadable(r) && IsWritable(r) && IsAvailable(r) && IsImplemented(r));
  EXPECT_TRUE(IsVisible(Beginner, Expert));
  EXPECT_FALSE(IsVisible(Guru, Expert));
}

// After a write and a change on the device: what a read gives, and how many
// of two reads reach the device. IgnoreCache and invalidation always read.
TEST(Caching, EachModeAfterAWriteAndAnExternalChange) {
  const struct {
    ECachingMode mode;
    const char* element;
    bool cachedAfterWrite;
    int64_t read;  // the written 5, or the device's 9
    int deviceReads;
  } cases[] = {
      {WriteThrough, "WriteThrough", true, 5, 0},
      {WriteAround, "WriteAround", false, 9, 1},  // reads after every write, then caches
      {NoCache, "NoCache", false, 9, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.element);
    Loaded m(IntReg("R", 0, "RW", std::string("<Cachable>") + c.element + "</Cachable>"));
    IInteger* r = m.As<IInteger>("R");
    EXPECT_EQ(r->GetNode()->GetCachingMode(), c.mode);
    r->SetValue(5);
    EXPECT_EQ(r->IsValueCacheValid(), c.cachedAfterWrite);
    m.port.PokeLE32(0, 9);  // the device changes (or rounds) the value
    const int reads = m.port.reads;
    EXPECT_EQ(r->GetValue(), c.read);
    EXPECT_EQ(r->GetValue(), c.read);
    EXPECT_EQ(m.port.reads - reads, c.deviceReads);
    EXPECT_EQ(r->IsValueCacheValid(), c.mode != NoCache);
    EXPECT_EQ(r->GetValue(false, true), 9);
    m.port.PokeLE32(0, 10);
    r->GetNode()->InvalidateNode();
    EXPECT_EQ(r->GetValue(), 10);
  }
}

TEST(Caching, ModesAreInheritedThroughReadingLinks) {
  Loaded m(IntReg("Live", 0, "RW", kNoCache) + IntReg("Cached", 4) + Reg("FloatReg", "F", 8, "RO") +
           "<Integer Name=\"I\"><pValue>Live</pValue></Integer>"
           "<IntSwissKnife Name=\"K\"><pVariable Name=\"L\">Live</pVariable><Formula>L</Formula>"
           "</IntSwissKnife>"
           "<IntReg Name=\"Indirect\"><pAddress>Live</pAddress><Length>4</Length>"
           "<AccessMode>RO</AccessMode><pPort>Device</pPort><Cachable>WriteAround</Cachable>"
           "</IntReg>");
  EXPECT_EQ(m.Node("Cached")->GetCachingMode(), WriteThrough);
  EXPECT_EQ(m.Node("I")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("K")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("Indirect")->GetCachingMode(), NoCache);
  EXPECT_EQ(m.Node("F")->GetCachingMode(), WriteAround);  // FloatReg default
  EXPECT_FALSE(m.Node("I")->IsCachable());
}

TEST(Caching, RegisterCachesAreKeyedByAddressAndLength) {
  Loaded m("<Integer Name=\"Sel\"><Value>0</Value></Integer>" +
           IntReg("R", 0x100, "RW", "<pIndex Offset=\"4\">Sel</pIndex>"));
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
  Loaded m(IntReg("R", 0) + "<Integer Name=\"I\"><pValue>R</pValue></Integer>");
  IInteger* i = m.As<IInteger>("I");
  EXPECT_EQ(i->GetValue(), 0);
  m.port.PokeLE32(0, 7);
  i->GetNode()->InvalidateNode();
  EXPECT_EQ(i->GetValue(), 0);  // the register keeps its cache
  m.Node("R")->InvalidateNode();
  EXPECT_EQ(i->GetValue(), 7);
}

TEST(Caching, InvalidatorsSelectorsAndPorts) {
  Loaded m(IntReg("A", 0) + IntReg("Trigger", 4) +
           IntReg("B", 8, "RW", "<pInvalidator>Trigger</pInvalidator>") +
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
  Loaded m(IntReg("R", 0));
  IInteger* r = m.As<IInteger>("R");
  r->SetValue(3);
  m.port.failWrites = true;
  EXPECT_THROW(r->SetValue(4), GenICam::RuntimeException);
  m.port.failWrites = false;
  m.port.PokeLE32(0, 9);
  EXPECT_EQ(r->GetValue(), 9);
}

TEST(Caching, PollingInvalidatesAfterThePollingTime) {
  Loaded m(IntReg("Temp", 0, "RO", "<PollingTime>100</PollingTime>") +
           "<Integer Name=\"Block\"><Value>0</Value></Integer>" +
           IntReg("Blocked", 4, "RO",
                  "<pBlockPolling>Block</pBlockPolling><PollingTime>100</PollingTime>"));
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
  Loaded m(IntReg("R", 0) + IntReg("S", 4) + R"(
    <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue>
      <PollingTime>10</PollingTime></Command>
    <Enumeration Name="E"><pValue>S</pValue><PollingTime>10</PollingTime>
      <EnumEntry Name="Idle"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Run"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    </Enumeration>)");
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

// Records the names of nodes whose callbacks fired.
struct Recorder {
  void OnChange(INode* node) { fired.push_back(node->GetName().c_str()); }
  std::set<std::string> Take() {
    std::set<std::string> s(fired.begin(), fired.end());
    fired.clear();
    return s;
  }
  std::vector<std::string> fired;
};

void RegisterAll(Loaded& m, Recorder& r) {
  NodeList_t nodes;
  m.ref._GetNodes(nodes);
  for (INode* n : nodes) Register(n, r, &Recorder::OnChange);
}

const char* kAvailableIfE = "<pIsAvailable>E</pIsAvailable>";
const std::string kFloatFamily =
    Reg("FloatReg", "B", 0, "RW", kAvailableIfE) + Reg("FloatReg", "C", 4, "RW", kAvailableIfE) +
    Reg("FloatReg", "D", 8, "RW", kAvailableIfE) +
    "<Integer Name=\"E\"><Value>1</Value></Integer>"
    "<Float Name=\"A\"><pValue>B</pValue><pMin>C</pMin><pMax>D</pMax></Float>";

TEST(Callbacks, WritesAndInvalidationsFireTheNodeAndItsDependents) {
  Loaded m(kFloatFamily);
  m.As<IFloat>("D")->SetValue(100);
  Recorder r;
  RegisterAll(m, r);
  m.As<IFloat>("C")->SetValue(0);
  EXPECT_EQ(r.Take(), (Names{"C", "A"}));
  m.As<IFloat>("D")->SetValue(10);
  EXPECT_EQ(r.Take(), (Names{"D", "A"}));
  m.As<IFloat>("B")->SetValue(1);
  EXPECT_EQ(r.Take(), (Names{"B", "A"}));
  m.As<IFloat>("A")->SetValue(2);
  EXPECT_EQ(r.Take(), (Names{"A", "B"}));
  m.As<IInteger>("E")->SetValue(1);  // unchanged value still fires
  EXPECT_EQ(r.Take(), (Names{"A", "B", "C", "D", "E"}));
  m.As<IFloat>("A")->GetValue();
  m.As<IFloat>("A")->ToString();
  EXPECT_TRUE(r.Take().empty());  // reads never fire
  m.Node("A")->InvalidateNode();  // invalidation fires the node and its dependents only
  EXPECT_EQ(r.Take(), (Names{"A"}));
  m.Node("B")->InvalidateNode();
  EXPECT_EQ(r.Take(), (Names{"B", "A"}));
  m.Node("Device")->InvalidateNode();
  EXPECT_EQ(r.Take(), (Names{"A", "B", "C", "D", "Device"}));
}

TEST(Callbacks, InvalidatorsAndSelectorsAreFollowed) {
  Loaded m(R"(
    <MaskedIntReg Name="D"><pInvalidator>E</pInvalidator><pSelected>F</pSelected>
      <Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
      <Bit>0</Bit></MaskedIntReg>
    <MaskedIntReg Name="E"><pInvalidator>D</pInvalidator><Address>4</Address><Length>4</Length>
      <AccessMode>RW</AccessMode><pPort>Device</pPort><Bit>0</Bit></MaskedIntReg>
    <Integer Name="A"><pValue>D</pValue></Integer>
    <Integer Name="B"><pValue>F</pValue></Integer>
    <Integer Name="F"><Value>0</Value></Integer>
    <Integer Name="G"><pInvalidator>E</pInvalidator><Value>0</Value></Integer>)");
  Recorder r;
  RegisterAll(m, r);
  m.As<IInteger>("A")->SetValue(1);
  EXPECT_EQ(r.Take(), (Names{"A", "B", "D", "E", "F", "G"}));
  m.As<IInteger>("B")->SetValue(1);
  EXPECT_EQ(r.Take(), (Names{"B", "F"}));
  m.As<IInteger>("G")->SetValue(1);
  EXPECT_EQ(r.Take(), (Names{"G"}));
}

TEST(Callbacks, EachCallbackFiresOncePerWrite) {
  Loaded m(R"(
    <Integer Name="X"><Value>0</Value></Integer>
    <IntSwissKnife Name="K"><pVariable Name="A">X</pVariable><pVariable Name="B">X</pVariable>
      <Formula>A+B</Formula></IntSwissKnife>
    <IntConverter Name="C"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>
      <pValue>X</pValue></IntConverter>
    <Integer Name="Y"><pInvalidator>X</pInvalidator><pInvalidator>K</pInvalidator>
      <pInvalidator>C</pInvalidator><Value>0</Value></Integer>)");
  Recorder r;
  RegisterAll(m, r);
  // A write through C writes X too: nodes depending on both still fire once.
  for (const char* written : {"X", "C"}) {
    r.fired.clear();
    m.As<IInteger>(written)->SetValue(3);
    std::vector<std::string> fired = r.fired;
    std::sort(fired.begin(), fired.end());
    EXPECT_EQ(fired, (std::vector<std::string>{"C", "K", "X", "Y"})) << written;
  }
}

TEST(Callbacks, InsideLockPhaseHoldsTheLockOutsidePhaseDoesNot) {
  Loaded m("<Integer Name=\"I\"><Value>0</Value></Integer>");
  INodeMap* map = m.ref._Ptr;
  std::vector<std::pair<ECallbackType, bool>> seen;
  auto probe = [&](ECallbackType type) {
    return [&, type](INode*) {
      bool lockedByOther = false;
      std::thread t([&] {
        lockedByOther = !map->GetLock().TryLock();
        if (!lockedByOther) map->GetLock().Unlock();
      });
      t.join();
      seen.emplace_back(type, lockedByOther);
    };
  };
  Register(m.Node("I"), probe(cbPostInsideLock), cbPostInsideLock);
  Register(m.Node("I"), probe(cbPostOutsideLock), cbPostOutsideLock);
  m.As<IInteger>("I")->SetValue(1);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0], std::make_pair(cbPostInsideLock, true));
  EXPECT_EQ(seen[1], std::make_pair(cbPostOutsideLock, false));
}

// A client's exception is not swallowed: it reaches the caller of the write
// or invalidation, as in the reference. The map has finished its bookkeeping
// first: the value is written, the lock is free, the next write works.
TEST(Callbacks, ClientExceptionsReachTheCaller) {
  struct Case {
    ECallbackType phase;
    bool write;  // else InvalidateNode
  };
  for (const Case c : {Case{cbPostInsideLock, true}, Case{cbPostOutsideLock, true},
                       Case{cbPostInsideLock, false}, Case{cbPostOutsideLock, false}}) {
    Loaded m(IntReg("R", 0));
    IInteger* r = m.As<IInteger>("R");
    const CallbackHandleType handle = Register(
        r->GetNode(), [](INode*) { throw GenICam::RuntimeException("client failed", "cb", 1); },
        c.phase);
    EXPECT_EQ(Outcome([&] { c.write ? r->SetValue(7) : r->GetNode()->InvalidateNode(); }),
              "RuntimeException: client failed")
        << "phase " << c.phase << " write " << c.write;
    EXPECT_EQ(r->GetValue(), c.write ? 7 : 0);
    std::thread([&] {
      EXPECT_TRUE(m.ref._Ptr->GetLock().TryLock());
      m.ref._Ptr->GetLock().Unlock();
    }).join();
    EXPECT_TRUE(Deregister(handle));
    r->SetValue(8);
    EXPECT_EQ(m.port.PeekLE32(0), 8u);
  }
}

TEST(Callbacks, RegistrationRemovalAndMemberCallbackPhases) {
  Loaded m("<Integer Name=\"I\"><Value>0</Value></Integer>");
  Recorder r;
  INode* node = m.Node("I");
  CallbackHandleType h1 = Register(node, r, &Recorder::OnChange);
  int calls = 0;
  CallbackHandleType h2 = Register(node, [&](INode*) { ++calls; });
  m.As<IInteger>("I")->SetValue(1);
  EXPECT_EQ(r.fired.size(), 1u);
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(node->DeregisterCallback(h1));
  EXPECT_FALSE(node->DeregisterCallback(h1));
  EXPECT_TRUE(Deregister(h2));
  EXPECT_FALSE(Deregister(h2));
  m.As<IInteger>("I")->SetValue(2);
  EXPECT_EQ(r.fired.size(), 1u);
  EXPECT_EQ(calls, 1);
  r.fired.clear();
  Member_NodeCallback<Recorder, void (Recorder::*)(INode*)> cb(m.Node("I"), r, &Recorder::OnChange,
                                                               cbPostOutsideLock);
  cb(cbPostInsideLock);
  EXPECT_TRUE(r.fired.empty());
  cb(cbPostOutsideLock);
  EXPECT_EQ(r.fired.size(), 1u);
  EXPECT_EQ(cb.GetNode(), m.Node("I"));
}

TEST(Callbacks, ImposeAccessModeAndCommandCompletionFire) {
  Loaded m(IntReg("R", 0) + R"(
    <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue></Command>
    <Integer Name="Watcher"><pInvalidator>R</pInvalidator><Value>0</Value></Integer>)");
  Recorder r;
  RegisterAll(m, r);
  m.Node("Watcher")->ImposeAccessMode(RO);
  EXPECT_EQ(r.Take(), (Names{"Watcher"}));
  m.As<ICommand>("C")->Execute();
  EXPECT_EQ(r.Take(), (Names{"C", "R", "Watcher"}));
  EXPECT_FALSE(m.As<ICommand>("C")->IsDone());
  EXPECT_TRUE(r.Take().empty());
  m.port.PokeLE32(0, 0);
  EXPECT_TRUE(m.As<ICommand>("C")->IsDone());
  EXPECT_EQ(r.Take(), (Names{"C", "R", "Watcher"}));
}

Names Children(INode* n, ELinkType type) {
  NodeList_t list;
  n->GetChildren(list, type);
  Names names;
  for (INode* c : list) names.insert(c->GetName().c_str());
  return names;
}

TEST(Links, AllSixLinkTypes) {
  Loaded m(R"(
    <Integer Name="TheNode"><pInvalidator>G</pInvalidator><pValue>A</pValue><pMin>B</pMin>
    </Integer>
    <Integer Name="A"><pValue>C</pValue></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="C"><Value>0</Value></Integer>
    <Integer Name="D"><pValue>TheNode</pValue></Integer>
    <Integer Name="E"><pValue>D</pValue></Integer>
    <Integer Name="F"><pInvalidator>TheNode</pInvalidator><Value>0</Value></Integer>
    <Integer Name="G"><pInvalidator>H</pInvalidator><Value>0</Value></Integer>
    <Integer Name="H"><Value>0</Value></Integer>)");
  INode* n = m.Node("TheNode");
  EXPECT_EQ(Children(n, ctWritingChildren), (Names{"A"}));
  EXPECT_EQ(Children(n, ctReadingChildren), (Names{"A", "B"}));
  EXPECT_EQ(Children(n, ctInvalidatingChildren), (Names{"A", "B", "G"}));
  EXPECT_EQ(Children(n, ctTerminalNodes), (Names{"C"}));
  EXPECT_EQ(Children(n, ctDependingNodes), (Names{"D", "E", "F"}));
  EXPECT_EQ(Children(n, ctParentNodes), (Names{"D"}));
  NodeList_t parents;
  n->GetParents(parents);
  EXPECT_EQ(parents.size(), 1u);
  NodeList_t reading;
  n->GetChildren(reading);  // default link type
  EXPECT_EQ(reading.size(), 2u);
}

TEST(Links, TheValueSourceComesFirst) {
  Loaded m(IntReg("R", 0x44) + R"(
    <Integer Name="G"><Value>1</Value></Integer>
    <Integer Name="I"><pIsImplemented>G</pIsImplemented><pValue>R</pValue></Integer>)");
  NodeList_t children;
  m.Node("I")->GetChildren(children, ctInvalidatingChildren);
  ASSERT_EQ(children.size(), 2u);
  CRegisterPtr first = children[0];
  ASSERT_TRUE(first.IsValid());
  EXPECT_EQ(first->GetAddress(), 0x44);
}

TEST(Links, DependentAndTerminalProperties) {
  Loaded m(R"(
    <String Name="A"><Value>x</Value></String>
    <String Name="B"><pValue>A</pValue></String>
    <String Name="C"><pValue>B</pValue></String>
    <String Name="D"><pValue>A</pValue></String>
    <String Name="E"><pValue>D</pValue></String>
    <String Name="F"><pValue>A</pValue></String>)");
  std::istringstream dependents(Property(m.Node("A"), "pDependent"));
  Names names;
  for (std::string name; std::getline(dependents, name, '\t');) names.insert(name);
  EXPECT_EQ(names, (Names{"B", "C", "D", "E", "F"}));
  EXPECT_EQ(Property(m.Node("C"), "pTerminal"), "A");
}

TEST(Links, Selectors) {
  Loaded m(R"(
    <Integer Name="Sel"><Value>0</Value><pSelected>X</pSelected><pSelected>Y</pSelected></Integer>
    <Integer Name="X"><Value>0</Value></Integer>
    <Integer Name="Y"><Value>0</Value></Integer>)");
  CSelectorPtr sel = m.ref._GetNode("Sel");
  ASSERT_TRUE(sel.IsValid());
  EXPECT_TRUE(sel->IsSelector());
  FeatureList_t selected;
  sel->GetSelectedFeatures(selected);
  EXPECT_EQ(selected.size(), 2u);
  CSelectorPtr x = m.ref._GetNode("X");
  EXPECT_FALSE(x->IsSelector());
  FeatureList_t selecting;
  x->GetSelectingFeatures(selecting);
  ASSERT_EQ(selecting.size(), 1u);
  EXPECT_EQ(selecting[0]->GetNode()->GetName(), "Sel");
}

TEST(Links, PropertiesCarryValueAndAttribute) {
  Loaded m(R"(
    <IntSwissKnife Name="K" NameSpace="Standard"><ToolTip>tip</ToolTip>
      <pVariable Name="A">X</pVariable><pVariable Name="B">Y</pVariable><Formula>A+B</Formula>
    </IntSwissKnife>
    <Integer Name="X"><Value>1</Value></Integer>
    <Integer Name="Y"><Value>2</Value></Integer>)");
  INode* k = m.Node("K");
  for (const auto& [name, text] : {std::pair<const char*, const char*>{"pVariable", "X\tY @ A\tB"},
                                   {"ToolTip", "tip"},
                                   {"Name", "K"},
                                   {"NameSpace", "Standard"},
                                   {"DeviceName", "Device"},
                                   {"NoSuchProperty", "(none)"}})
    EXPECT_EQ(Property(k, name), text) << name;
  GenICam::gcstring_vector names;
  k->GetPropertyNames(names);
  bool hasFormula = false;
  for (size_t i = 0; i < names.size(); ++i) hasFormula |= names[i] == "Formula";
  EXPECT_TRUE(hasFormula);
}

TEST(Links, PresentationQueries) {
  Loaded m(R"(
    <Integer Name="I"><Extension><Anything/></Extension><ToolTip>short</ToolTip>
      <Description>long</Description><DisplayName>Nice I</DisplayName>
      <Visibility>Guru</Visibility><DocuURL>http://x/I</DocuURL><IsDeprecated>Yes</IsDeprecated>
      <EventID>1A2B</EventID><pAlias>J</pAlias><pCastAlias>J</pCastAlias>
      <Streamable>Yes</Streamable><Value>0</Value></Integer>
    <Integer Name="J"><Value>0</Value></Integer>)");
  INode* i = m.Node("I");
  EXPECT_EQ(std::string(i->GetToolTip().c_str()), "short");
  EXPECT_EQ(std::string(i->GetDescription().c_str()), "long");
  EXPECT_EQ(std::string(i->GetDisplayName().c_str()), "Nice I");
  EXPECT_EQ(std::string(m.Node("J")->GetDisplayName().c_str()), "J");
  EXPECT_EQ(i->GetVisibility(), Guru);
  EXPECT_EQ(m.Node("J")->GetVisibility(), Beginner);
  i->ImposeVisibility(Invisible);
  EXPECT_EQ(i->GetVisibility(), Invisible);
  EXPECT_EQ(std::string(i->GetDocuURL().c_str()), "http://x/I");
  EXPECT_TRUE(i->IsDeprecated());
  EXPECT_EQ(std::string(i->GetEventID().c_str()), "1A2B");
  EXPECT_EQ(i->GetAlias(), m.Node("J"));
  EXPECT_EQ(i->GetCastAlias(), m.Node("J"));
  EXPECT_TRUE(i->IsStreamable());
  EXPECT_EQ(i->GetNodeMap(), m.ref._Ptr);
  EXPECT_EQ(std::string(i->GetDeviceName().c_str()), "Device");
  EXPECT_TRUE(i->IsFeature());
  EXPECT_EQ(i->GetNameSpace(), Custom);
}

TEST(Links, PrincipalInterfaceTypes) {
  Loaded m(R"(
    <Integer Name="I"><Value>0</Value></Integer>
    <Float Name="F"><Value>0</Value></Float>
    <Boolean Name="B"><Value>0</Value></Boolean>
    <String Name="S"><Value>s</Value></String>
    <Command Name="C"><Value>0</Value><CommandValue>1</CommandValue></Command>
    <Enumeration Name="E"><Value>0</Value><EnumEntry Name="Z"><Value>0</Value></EnumEntry>
    </Enumeration>
    <Category Name="Cat"><pFeature>I</pFeature></Category>
    <Register Name="R"><Address>0</Address><Length>4</Length><pPort>Device</pPort></Register>
    <Node Name="N"/>)");
  const std::pair<const char*, EInterfaceType> expected[] = {{"I", intfIInteger},
                                                             {"F", intfIFloat},
                                                             {"B", intfIBoolean},
                                                             {"S", intfIString},
                                                             {"C", intfICommand},
                                                             {"E", intfIEnumeration},
                                                             {"Cat", intfICategory},
                                                             {"R", intfIRegister},
                                                             {"N", intfIValue},
                                                             {"Device", intfIPort},
                                                             {"EnumEntry_E_Z", intfIEnumEntry}};
  for (const auto& e : expected)
    EXPECT_EQ(m.Node(e.first)->GetPrincipalInterfaceType(), e.second) << e.first;
  EXPECT_FALSE(m.Node("Device")->IsFeature());
}

const std::string kNodes = IntReg("R", 0) + "<Float Name=\"F\"><Value>2.5</Value></Float>";

TEST(CPointer, NullDereferenceIsALogicalError) {
  CIntegerPtr empty;
  EXPECT_FALSE(empty.IsValid());
  EXPECT_FALSE(empty);
  EXPECT_TRUE(empty == 0);
  EXPECT_EQ(Outcome([&] { empty->GetValue(); }),
            "LogicalErrorException: NULL pointer dereferenced");
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
