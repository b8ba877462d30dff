// Callbacks: which nodes fire for writes and invalidations, de-duplication,
// the two phases relative to the lock, registration and removal.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;

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

using Names = std::set<std::string>;

const char* kFloatFamily = R"(
  <Integer Name="E"><Value>1</Value></Integer>
  <Float Name="A"><pValue>B</pValue><pMin>C</pMin><pMax>D</pMax></Float>
  <FloatReg Name="B"><pIsAvailable>E</pIsAvailable><Address>0</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>Device</pPort></FloatReg>
  <FloatReg Name="C"><pIsAvailable>E</pIsAvailable><Address>4</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>Device</pPort></FloatReg>
  <FloatReg Name="D"><pIsAvailable>E</pIsAvailable><Address>8</Address><Length>4</Length>
    <AccessMode>RW</AccessMode><pPort>Device</pPort></FloatReg>)";

TEST(Callbacks, WritesFireTheNodeAndItsDependents) {
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
}

TEST(Callbacks, InvalidationFiresTheNodeAndDependentsOnly) {
  Loaded m(kFloatFamily);
  Recorder r;
  RegisterAll(m, r);
  m.Node("A")->InvalidateNode();
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
    <Integer Name="Y"><pInvalidator>X</pInvalidator><pInvalidator>K</pInvalidator>
      <Value>0</Value></Integer>)");
  Recorder r;
  RegisterAll(m, r);
  m.As<IInteger>("X")->SetValue(3);
  std::vector<std::string> fired = r.fired;
  std::sort(fired.begin(), fired.end());
  EXPECT_EQ(fired, (std::vector<std::string>{"K", "X", "Y"}));
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
    Loaded m(R"(<IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
                <pPort>Device</pPort></IntReg>)");
    IInteger* r = m.As<IInteger>("R");
    const CallbackHandleType handle = Register(
        r->GetNode(), [](INode*) { throw GenICam::RuntimeException("client failed", "cb", 1); },
        c.phase);
    try {
      if (c.write) r->SetValue(7);
      else r->GetNode()->InvalidateNode();
      ADD_FAILURE() << "phase " << c.phase << " write " << c.write;
    } catch (const GenICam::RuntimeException& e) {
      EXPECT_STREQ(e.GetDescription(), "client failed");
    }
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

TEST(Callbacks, RegistrationAndRemoval) {
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
}

TEST(Callbacks, MemberCallbackFiresOnlyInItsPhase) {
  Loaded m("<Integer Name=\"I\"><Value>0</Value></Integer>");
  Recorder r;
  Member_NodeCallback<Recorder, void (Recorder::*)(INode*)> cb(m.Node("I"), r,
                                                               &Recorder::OnChange,
                                                               cbPostOutsideLock);
  cb(cbPostInsideLock);
  EXPECT_TRUE(r.fired.empty());
  cb(cbPostOutsideLock);
  EXPECT_EQ(r.fired.size(), 1u);
  EXPECT_EQ(cb.GetNode(), m.Node("I"));
}

TEST(Callbacks, ImposeAccessModeAndCommandCompletionFire) {
  Loaded m(R"(
    <Command Name="C"><pValue>R</pValue><CommandValue>1</CommandValue></Command>
    <IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>
      <pPort>Device</pPort></IntReg>
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

}  // namespace
