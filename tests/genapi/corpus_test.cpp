// Every real camera description loads, and every feature's access mode and
// readable value can be obtained against a zero-filled register image.
#include "Corpus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "TestPort.h"

namespace {

namespace fs = std::filesystem;
using namespace GenApi;
using genapi_test::Outcome;

struct WalkStats {
  size_t nodes = 0, readable = 0, values = 0, genicamErrors = 0;
  std::map<std::string, size_t> errorTypes;
};

// Reads everything a client can ask of one node; only GenICam exceptions may escape a call.
void Visit(INode* node, WalkStats& stats) {
  ++stats.nodes;
  auto guarded = [&](auto&& call) {
    try {
      call();
    } catch (const GenICam::GenericException& e) {
      ++stats.genicamErrors;
      ++stats.errorTypes[e.GetExceptionType()];
      if (std::getenv("VQ_GENAPI_VERBOSE")) std::printf("  %s\n", e.what());
    }
  };
  EAccessMode mode = NI;
  guarded([&] { mode = node->GetAccessMode(); });
  guarded([&] {
    (void)node->GetDisplayName();
    (void)node->GetVisibility();
    (void)node->GetCachingMode();
    (void)node->IsAccessModeCacheable();
    NodeList_t list;
    for (int t = ctParentNodes; t <= ctTerminalNodes; ++t)
      node->GetChildren(list, static_cast<ELinkType>(t));
    GenICam::gcstring_vector names;
    node->GetPropertyNames(names);
    GenICam::gcstring value, attribute;
    for (size_t i = 0; i < names.size(); ++i) node->GetProperty(names[i], value, attribute);
  });
  if (auto* category = dynamic_cast<ICategory*>(node)) {
    FeatureList_t features;
    guarded([&] { category->GetFeatures(features); });
  }
  if (auto* reg = dynamic_cast<IRegister*>(node)) {
    guarded([&] { (void)reg->GetAddress(); });
  }
  if (!IsReadable(mode)) return;
  ++stats.readable;
  if (auto* value = dynamic_cast<IValue*>(node)) {
    guarded([&] {
      (void)value->ToString();
      ++stats.values;
    });
    guarded([&] { (void)value->ToString(true, true); });
  }
  if (auto* i = dynamic_cast<IInteger*>(node)) {
    guarded([&] { (void)i->GetMin(); });
    guarded([&] { (void)i->GetMax(); });
    guarded([&] { (void)i->GetInc(); });
    guarded([&] { (void)i->GetRepresentation(); });
  }
  if (auto* f = dynamic_cast<IFloat*>(node)) {
    guarded([&] { (void)f->GetMin(); });
    guarded([&] { (void)f->GetMax(); });
    guarded([&] { (void)f->GetUnit(); });
  }
  if (auto* e = dynamic_cast<IEnumeration*>(node)) {
    guarded([&] {
      GenICam::gcstring_vector symbolics;
      e->GetSymbolics(symbolics);
      NodeList_t entries;
      e->GetEntries(entries);
      (void)e->GetCurrentEntry();
    });
  }
  if (auto* c = dynamic_cast<ICommand*>(node)) guarded([&] { (void)c->IsDone(false); });
  if (auto* s = dynamic_cast<IString*>(node)) guarded([&] { (void)s->GetMaxLength(); });
}

class Corpus : public ::testing::TestWithParam<std::string> {};

TEST_P(Corpus, LoadsAndEveryFeatureReadsWithoutCrash) {
  CNodeMapRef ref;
  ASSERT_NO_THROW(ref._LoadXMLFromFile(GetParam().c_str())) << GetParam();
  genapi_test::MemoryPort port;
  EXPECT_GT(genapi_test::ConnectEveryPort(ref, &port), 0u);
  NodeList_t nodes;
  ref._GetNodes(nodes);
  CDeviceInfoPtr info(ref._Ptr);
  ASSERT_TRUE(info.IsValid());
  EXPECT_FALSE(std::string(info->GetModelName().c_str()).empty());

  WalkStats first, second;
  for (INode* n : nodes) Visit(n, first);
  for (INode* n : nodes) Visit(n, second);  // the second walk runs on caches
  EXPECT_EQ(first.readable, second.readable);
  EXPECT_GT(first.values, 0u);
  std::string summary;
  for (const auto& kv : first.errorTypes)
    summary += kv.first + "=" + std::to_string(kv.second) + " ";
  std::printf("%s: %zu nodes, %zu readable, %zu values, GenICam errors: %s\n",
              fs::path(GetParam()).filename().c_str(), first.nodes, first.readable, first.values,
              summary.c_str());
  ASSERT_NO_THROW(ref._InvalidateNodes());
}

std::string FileName(const ::testing::TestParamInfo<std::string>& info) {
  return genapi_test::TestName(fs::path(info.param).stem().string());
}

const std::vector<std::string> kFiles = genapi_test::CorpusFiles();

INSTANTIATE_TEST_SUITE_P(RealDescriptions, Corpus, ::testing::ValuesIn(kFiles), FileName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

// What a node reads as (access mode and text, or the exception type).
std::string Reading(INode* node) {
  try {
    std::string out = std::to_string(node->GetAccessMode());
    if (auto* value = dynamic_cast<IValue*>(node))
      if (IsReadable(node)) out += "=" + std::string(value->ToString().c_str());
    return out;
  } catch (const GenICam::GenericException& e) {
    return e.GetExceptionType();
  }
}

// A real description with one more knife naming an identifier nothing
// declares: it loads, every other feature reads as in the original, and the
// knife throws when read, naming itself and the identifier.
TEST(CorpusDefects, UndeclaredFormulaIdentifierBreaksOnlyItsNode) {
  if (kFiles.empty()) GTEST_SKIP() << "no descriptions in " << VQ_GENICAM_XML_DIR;
  std::ifstream in(kFiles.front(), std::ios::binary);
  const std::string original((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
  std::string damaged = original;
  damaged.insert(damaged.rfind("</"),
                 "<IntSwissKnife Name=\"VqBrokenKnife\"><Formula>2 * UNDECLARED_GAIN"
                 "</Formula></IntSwissKnife>\n");
  CNodeMapRef good, bad;
  good._LoadXMLFromString(GenICam::gcstring(original.data(), original.size()));
  ASSERT_NO_THROW(bad._LoadXMLFromString(GenICam::gcstring(damaged.data(), damaged.size())));
  genapi_test::MemoryPort goodPort, badPort;
  genapi_test::ConnectEveryPort(good, &goodPort);
  genapi_test::ConnectEveryPort(bad, &badPort);
  NodeList_t nodes;
  good._GetNodes(nodes);
  for (INode* n : nodes) {
    INode* twin = bad._GetNode(n->GetName());
    ASSERT_NE(twin, nullptr) << n->GetName();
    EXPECT_EQ(Reading(n), Reading(twin)) << n->GetName();
  }
  CIntegerPtr knife = bad._GetNode("VqBrokenKnife");
  ASSERT_TRUE(knife.IsValid());
  EXPECT_THAT(Outcome([&] { knife->GetValue(); }),
              ::testing::AllOf(::testing::StartsWith("LogicalErrorException: "),
                               ::testing::HasSubstr("'VqBrokenKnife'"),
                               ::testing::HasSubstr("UNDECLARED_GAIN")));
}

}  // namespace
