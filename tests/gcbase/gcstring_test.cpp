// gcstring: construction, conversions, search, comparison and streaming,
// checked against std::string where both apply.
#include <GenICam.h>
#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

using GenICam::gcstring;

namespace {

struct ConstructionCase {
  const char* name;
  std::function<gcstring()> make;
  std::string expected;
};

TEST(GcStringTest, ConstructionGivesExpectedText) {
  const char* const nullText = nullptr;
  const std::vector<ConstructionCase> cases = {
      {"default", [] { return gcstring(); }, ""},
      {"null pointer", [&] { return gcstring(nullText); }, ""},
      {"null pointer with count", [&] { return gcstring(nullText, 5); }, ""},
      {"c string", [] { return gcstring("Width"); }, "Width"},
      {"prefix by count", [] { return gcstring("Height", 3); }, "Hei"},
      {"embedded NUL", [] { return gcstring("a\0b", 3); }, std::string("a\0b", 3)},
      {"count and char", [] { return gcstring(4, 'x'); }, "xxxx"},
      {"zero count", [] { return gcstring(0, 'x'); }, ""},
      {"std::string", [] { return gcstring(std::string("Gain")); }, "Gain"},
      {"copy",
       [] {
         gcstring s("copy");
         return gcstring(s);
       },
       "copy"},
  };
  for (const ConstructionCase& c : cases) {
    const gcstring s = c.make();
    EXPECT_EQ(std::string(s.c_str(), s.size()), c.expected) << c.name;
    EXPECT_EQ(s.size(), c.expected.size()) << c.name;
    EXPECT_EQ(s.length(), s.size()) << c.name;
    EXPECT_EQ(s.empty(), c.expected.empty()) << c.name;
    EXPECT_EQ(s.c_str()[s.size()], '\0') << c.name;
  }
}

TEST(GcStringTest, NullTextsReadAsEmptyAndSelfAssignmentKeepsTheText) {
  const char* const null = nullptr;
  gcstring s("abc");
  s = null;
  EXPECT_TRUE(s.empty());
  s = "x";
  s.append(null);
  s += null;
  EXPECT_EQ(s, "x");
  s.assign(null, 3);
  EXPECT_EQ(s, "");
  EXPECT_EQ(s.compare(null), 0);
  const gcstring text("abcdef");
  EXPECT_EQ(text.find("cdx", 0, 2), 2u);
  EXPECT_EQ(text.find(nullptr, 1, 0), 1u);
  EXPECT_EQ(text.find(nullptr, 0, 3), gcstring::npos);
  EXPECT_EQ(text.find(nullptr, 9, 0), gcstring::npos);
  gcstring source("moving");
  gcstring target(std::move(source));
  source = "again";  // NOLINT(bugprone-use-after-move): assigning is allowed
  EXPECT_EQ(source, "again");
  gcstring& self = target;
  target = self;
  EXPECT_EQ(target, "moving");
}

void TakesStdString(const std::string& text, std::string* out) { *out = text; }
void TakesCString(const char* text, std::string* out) { *out = text; }

TEST(GcStringTest, ConvertsImplicitlyToStdStringAndCString) {
  const gcstring s("Exposure");
  std::string out;
  TakesStdString(s, &out);
  EXPECT_EQ(out, "Exposure");
  TakesCString(s, &out);
  EXPECT_EQ(out, "Exposure");
  EXPECT_EQ(std::string(gcstring("a\0b", 3)).size(), 3u);
  const gcstring fromStd = std::string("back");
  EXPECT_EQ(fromStd, "back");
}

enum class Search {
  kFindChar,
  kFindText,
  kRfindChar,
  kRfindText,
  kFirstOf,
  kFirstNotOf,
  kLastOf,
  kLastNotOf
};

struct SearchCase {
  Search op;
  const char* haystack;
  const char* needle;
  size_t offset;
};

// Runs one search case on either string type, so the two can be compared.
template <typename String>
size_t RunOn(const SearchCase& c) {
  const String h = c.haystack, n = c.needle;
  switch (c.op) {
    case Search::kFindChar:
      return h.find(n[0], c.offset);
    case Search::kFindText:
      return h.find(n, c.offset);
    case Search::kRfindChar:
      return h.rfind(n[0], c.offset);
    case Search::kRfindText:
      return h.rfind(n, c.offset);
    case Search::kFirstOf:
      return h.find_first_of(n, c.offset);
    case Search::kFirstNotOf:
      return h.find_first_not_of(n, c.offset);
    case Search::kLastOf:
      return h.find_last_of(n, c.offset);
    case Search::kLastNotOf:
      return h.find_last_not_of(n, c.offset);
  }
  return 0;
}

TEST(GcStringTest, SearchAgreesWithStdString) {
  const size_t npos = gcstring::npos;
  const std::vector<SearchCase> cases = {
      {Search::kFindChar, "a#b#c", "#", 0},        {Search::kFindChar, "a#b#c", "#", 2},
      {Search::kFindChar, "a#b#c", "#", 4},        {Search::kFindChar, "", "#", 0},
      {Search::kFindChar, "abc", "#", 99},         {Search::kFindText, "Local#COM1", "#", 0},
      {Search::kFindText, "abcabc", "bc", 2},      {Search::kFindText, "abc", "", 3},
      {Search::kFindText, "abc", "", 4},           {Search::kFindText, "abc", "abcd", 0},
      {Search::kRfindChar, "a/b/c.so", "/", npos}, {Search::kRfindChar, "a/b/c.so", "/", 2},
      {Search::kRfindChar, "", "/", npos},         {Search::kRfindText, "abcabc", "bc", npos},
      {Search::kRfindText, "abcabc", "bc", 3},     {Search::kRfindText, "abc", "x", npos},
      {Search::kFirstOf, "key = value", " =", 0},  {Search::kFirstOf, "abc", "xyz", 0},
      {Search::kFirstNotOf, "   text", " ", 0},    {Search::kFirstNotOf, "   ", " ", 0},
      {Search::kLastOf, "a.b.c", ".", npos},       {Search::kLastOf, "a.b.c", ".", 2},
      {Search::kLastNotOf, "text   ", " ", npos},  {Search::kLastNotOf, "", " ", npos},
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(RunOn<gcstring>(cases[i]), RunOn<std::string>(cases[i]))
        << "case " << i << " '" << cases[i].haystack << "' / '" << cases[i].needle << "'";
  }
}

struct CompareCase {
  const char* left;
  const char* right;
};

TEST(GcStringTest, ComparisonsAgreeWithStdStringInEveryOperandMix) {
  const std::vector<CompareCase> cases = {
      {"", ""},       {"a", ""},     {"", "a"},          {"abc", "abd"},
      {"abd", "abc"}, {"ab", "abc"}, {"Width", "Width"}, {"Z", "a"},
  };
  for (const CompareCase& c : cases) {
    const gcstring l(c.left), r(c.right);
    const std::string sl(c.left), sr(c.right);
    const bool eq = sl == sr, lt = sl < sr;
    const std::string label = std::string("'") + c.left + "' vs '" + c.right + "'";
    using Answers = std::vector<bool>;
    EXPECT_EQ((Answers{l == r, l == c.right, c.left == r, l == sr, sl == r, l.compare(r) == 0}),
              Answers(6, eq))
        << label;
    EXPECT_EQ((Answers{l != r, l != c.right, c.left != r, l != sr, sl != r}), Answers(5, !eq))
        << label;
    EXPECT_EQ((Answers{l < r, l < c.right, c.left < r, l.compare(r) < 0}), Answers(4, lt)) << label;
    EXPECT_EQ((Answers{l > r, l <= r, l >= r}), (Answers{sl > sr, sl <= sr, sl >= sr})) << label;
  }
}

TEST(GcStringTest, ComparisonKeepsEmbeddedNul) {
  EXPECT_NE(gcstring("a\0b", 3), gcstring("a\0c", 3));
  EXPECT_NE(gcstring("a\0b", 3), gcstring("a"));
  EXPECT_EQ(gcstring("a\0b", 3), std::string("a\0b", 3));
}

TEST(GcStringTest, ConcatenationInEveryOperandMix) {
  const gcstring dir("/opt/lib"), file("libx.so");
  EXPECT_EQ(dir + "/" + file, "/opt/lib/libx.so");
  EXPECT_EQ("Local#" + gcstring("COM1"), "Local#COM1");
  EXPECT_EQ(dir + std::string("/x"), "/opt/lib/x");
  EXPECT_EQ(std::string("x/") + file, "x/libx.so");
  EXPECT_EQ(dir + '/', "/opt/lib/");
  EXPECT_EQ('#' + file, "#libx.so");
  gcstring s("a");
  s += gcstring("b");
  s += "c";
  s += std::string("d");
  s += 'e';
  s.append(2, 'f');
  s.append("ghij", 1);
  EXPECT_EQ(s, "abcdeffg");
}

TEST(GcStringTest, SubstrFollowsStdStringAndRefusesOffsetBeyondEnd) {
  const gcstring s("Manufacturer#Model");
  EXPECT_EQ(s.substr(13), "Model");
  EXPECT_EQ(s.substr(0, 12), "Manufacturer");
  EXPECT_EQ(s.substr(18), "");
  EXPECT_EQ(s.substr(4, gcstring::npos), "facturer#Model");
  EXPECT_THROW(s.substr(19), GenICam::OutOfRangeException);
}

TEST(GcStringTest, IndexingIsCheckedAndNeverCrashes) {
  gcstring s("abc");
  EXPECT_EQ(s[0], 'a');
  EXPECT_EQ(s[2u], 'c');
  EXPECT_EQ(s[static_cast<size_t>(1)], 'b');
  EXPECT_EQ(s[3], '\0');  // the terminator, as for std::string
  s[1] = 'X';
  s.at(2) = 'Y';
  EXPECT_EQ(s, "aXY");
  EXPECT_THROW(s[4], GenICam::OutOfRangeException);
  EXPECT_THROW(s[-1], GenICam::OutOfRangeException);
  EXPECT_THROW(s.at(3), GenICam::OutOfRangeException);
  const gcstring empty;
  EXPECT_THROW(empty.at(0), GenICam::OutOfRangeException);
  EXPECT_EQ(empty[0], '\0');
}

TEST(GcStringTest, SizeOperations) {
  gcstring s("abc");
  s.resize(5, 'z');
  EXPECT_EQ(s, "abczz");
  s.resize(2);
  EXPECT_EQ(s, "ab");
  s.resize(4);
  EXPECT_EQ(s.size(), 4u);
  EXPECT_EQ(s[3], '\0');
  s.reserve(100);
  EXPECT_GE(s.capacity(), 100u);
  EXPECT_THROW(s.reserve(s.max_size() + 1), GenICam::BadAllocException);
  EXPECT_THROW(s.resize(s.max_size() + 1), GenICam::BadAllocException);
  gcstring other("other");
  s.swap(other);
  EXPECT_EQ(s, "other");
  s.clear();
  EXPECT_TRUE(s.empty());
}

TEST(GcStringTest, StreamsWriteWithFormattingAndReadWords) {
  std::ostringstream out;
  out << '[' << std::setw(6) << gcstring("ab") << ']' << gcstring("a\0b", 3);
  EXPECT_EQ(out.str(), std::string("[    ab]a\0b", 11));
  std::istringstream in("  first second");
  gcstring a, b, c("kept");
  in >> a >> b;
  EXPECT_EQ(a, "first");
  EXPECT_EQ(b, "second");
  EXPECT_FALSE(in >> c);
  EXPECT_EQ(c, "kept");
}

TEST(GcStringTest, WorksAsKeyOfStandardContainers) {
  std::map<gcstring, int> ordered{{"b", 2}, {"a", 1}};
  EXPECT_EQ(ordered.begin()->first, "a");
  std::unordered_map<gcstring, int> hashed{{"Width", 1}};
  hashed[gcstring("Height")] = 2;
  EXPECT_EQ(hashed.at("Width"), 1);
  EXPECT_EQ(hashed.at("Height"), 2);
  EXPECT_EQ(std::hash<gcstring>()("x"), std::hash<gcstring>()(gcstring("x")));
}

}  // namespace
