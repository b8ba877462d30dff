// gcstring_vector: the std::vector operations, checked against std::vector
// for sequences of edits, and refusal of positions outside the vector.
#include <GenICam.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using GenICam::gcstring;
using GenICam::gcstring_vector;

namespace {

std::vector<std::string> Contents(const gcstring_vector& v) {
  std::vector<std::string> out;
  for (const gcstring& s : v) out.emplace_back(s.c_str());
  return out;
}

struct EditCase {
  const char* name;
  std::function<void(gcstring_vector&)> edit;
  std::vector<std::string> expected;
};

TEST(GcStringVectorTest, EditsGiveExpectedContents) {
  const std::vector<EditCase> cases = {
      {"push_back", [](gcstring_vector& v) { v.push_back("d"); }, {"a", "b", "c", "d"}},
      {"insert front", [](gcstring_vector& v) { v.insert(v.begin(), "z"); }, {"z", "a", "b", "c"}},
      {"insert end", [](gcstring_vector& v) { v.insert(v.end(), "z"); }, {"a", "b", "c", "z"}},
      {"insert count",
       [](gcstring_vector& v) { v.insert(v.begin() + 1, 2, "y"); },
       {"a", "y", "y", "b", "c"}},
      {"erase middle", [](gcstring_vector& v) { v.erase(v.begin() + 1); }, {"a", "c"}},
      {"erase range", [](gcstring_vector& v) { v.erase(v.begin(), v.begin() + 2); }, {"c"}},
      {"erase empty range", [](gcstring_vector& v) { v.erase(v.end(), v.end()); }, {"a", "b", "c"}},
      {"pop_back", [](gcstring_vector& v) { v.pop_back(); }, {"a", "b"}},
      {"resize down", [](gcstring_vector& v) { v.resize(1); }, {"a"}},
      {"resize up", [](gcstring_vector& v) { v.resize(5, "n"); }, {"a", "b", "c", "n", "n"}},
      {"clear", [](gcstring_vector& v) { v.clear(); }, {}},
      {"assign", [](gcstring_vector& v) { v.assign(2, "q"); }, {"q", "q"}},
      {"write through index",
       [](gcstring_vector& v) {
         v[0] = "A";
         v.at(2) += "!";
       },
       {"A", "b", "c!"}},
      {"front and back",
       [](gcstring_vector& v) {
         v.front() = "F";
         v.back() = "B";
       },
       {"F", "b", "B"}},
      {"sort descending",
       [](gcstring_vector& v) { std::sort(v.begin(), v.end(), std::greater<gcstring>()); },
       {"c", "b", "a"}},
  };
  for (const EditCase& c : cases) {
    gcstring_vector v{"a", "b", "c"};
    c.edit(v);
    EXPECT_EQ(Contents(v), c.expected) << c.name;
    EXPECT_EQ(v.size(), c.expected.size()) << c.name;
    EXPECT_EQ(v.empty(), c.expected.empty()) << c.name;
  }
}

TEST(GcStringVectorTest, InsertAndEraseReturnPositionOfTheChange) {
  gcstring_vector v{"a", "c"};
  gcstring_vector::iterator it = v.insert(v.begin() + 1, "b");
  EXPECT_EQ(*it, "b");
  it = v.erase(v.begin());
  EXPECT_EQ(*it, "b");
  it = v.erase(v.begin() + 1);
  EXPECT_EQ(it, v.end());
}

TEST(GcStringVectorTest, PositionsOutsideTheVectorAreRefused) {
  gcstring_vector v{"a", "b"};
  gcstring_vector other{"x"};
  const gcstring outside("not in a vector");
  EXPECT_THROW(v.at(2), GenICam::OutOfRangeException);
  EXPECT_THROW(v[5], GenICam::OutOfRangeException);
  EXPECT_THROW(v.erase(v.end()), GenICam::OutOfRangeException);
  EXPECT_THROW(v.erase(other.begin()), GenICam::OutOfRangeException);
  EXPECT_THROW(v.insert(other.begin(), "z"), GenICam::OutOfRangeException);
  EXPECT_THROW(v.insert(&outside, "z"), GenICam::OutOfRangeException);
  EXPECT_THROW(v.erase(v.begin() + 1, v.begin()), GenICam::OutOfRangeException);
  EXPECT_EQ(Contents(v), (std::vector<std::string>{"a", "b"}));

  gcstring_vector empty;
  EXPECT_THROW(empty.front(), GenICam::OutOfRangeException);
  EXPECT_THROW(empty.back(), GenICam::OutOfRangeException);
  EXPECT_THROW(empty.at(0), GenICam::OutOfRangeException);
  EXPECT_THROW(empty.erase(empty.begin()), GenICam::OutOfRangeException);
  empty.pop_back();
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.begin(), empty.end());
  empty.insert(empty.begin(), "first");
  EXPECT_EQ(empty.front(), "first");
  EXPECT_THROW(empty.reserve(empty.max_size() + 1), GenICam::BadAllocException);
}

TEST(GcStringVectorTest, CopyMoveSwapAndEquality) {
  gcstring_vector a{"x", "y"};
  gcstring_vector b(a);
  EXPECT_EQ(a, b);
  b.push_back("z");
  EXPECT_NE(a, b);
  gcstring_vector c(std::move(b));
  EXPECT_EQ(c.size(), 3u);
  a.swap(c);
  EXPECT_EQ(a.size(), 3u);
  EXPECT_EQ(c.size(), 2u);
  c = a;
  EXPECT_EQ(c, a);
  gcstring_vector sized(2, "s");
  EXPECT_EQ(Contents(sized), (std::vector<std::string>{"s", "s"}));
  sized.reserve(10);
  EXPECT_GE(sized.capacity(), 10u);
  EXPECT_EQ(sized.data(), &sized[0]);
}

}  // namespace
