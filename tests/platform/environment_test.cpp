// Environment variables and sleeping.
#include "vq/platform/environment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "vq/platform/sleep.h"

namespace {

using vq::platform::GetEnv;
using vq::platform::SetEnv;
using vq::platform::UnsetEnv;

TEST(EnvironmentTest, SetGetUnsetRoundTrip) {
  const std::string name = "VQ_PLATFORM_TEST_VARIABLE";
  ASSERT_TRUE(UnsetEnv(name));
  EXPECT_FALSE(GetEnv(name).has_value());
  const char* values[] = {"value", "", "a;b:c", "with spaces and = sign", "/opt/genicam"};
  for (const char* value : values) {
    ASSERT_TRUE(SetEnv(name, value)) << value;
    ASSERT_TRUE(GetEnv(name).has_value()) << value;
    EXPECT_EQ(*GetEnv(name), value);
  }
  EXPECT_TRUE(UnsetEnv(name));
  EXPECT_FALSE(GetEnv(name).has_value());
  EXPECT_TRUE(UnsetEnv(name));  // unsetting twice is fine
}

TEST(EnvironmentTest, InvalidNamesAndValuesAreRefused) {
  const std::string names[] = {"", "A=B", "=", std::string("A\0B", 3)};
  for (const std::string& name : names) {
    EXPECT_FALSE(SetEnv(name, "x")) << name;
    EXPECT_FALSE(GetEnv(name).has_value()) << name;
    EXPECT_FALSE(UnsetEnv(name)) << name;
  }
  EXPECT_FALSE(SetEnv("VQ_PLATFORM_TEST_VARIABLE", std::string("a\0b", 3)));
}

// The cache directory follows XDG_CACHE_HOME when it is absolute, else HOME.
TEST(EnvironmentTest, UserCacheDirectory) {
  const auto savedXdg = GetEnv("XDG_CACHE_HOME");
  const auto savedHome = GetEnv("HOME");
  struct Case {
    const char* xdg;   // nullptr: unset
    const char* home;  // nullptr: unset
    const char* expected;
  };
  const Case cases[] = {
      {"/var/cache/u", "/home/u", "/var/cache/u"},
      {"relative/cache", "/home/u", "/home/u/.cache"},
      {"", "/home/u", "/home/u/.cache"},
      {nullptr, "/home/u", "/home/u/.cache"},
      {nullptr, nullptr, ""},
      {"", "", ""},
  };
  for (const Case& c : cases) {
    c.xdg ? SetEnv("XDG_CACHE_HOME", c.xdg) : UnsetEnv("XDG_CACHE_HOME");
    c.home ? SetEnv("HOME", c.home) : UnsetEnv("HOME");
    EXPECT_EQ(c.expected, vq::platform::UserCacheDirectory())
        << (c.xdg ? c.xdg : "(unset)") << " " << (c.home ? c.home : "(unset)");
  }
  savedXdg ? SetEnv("XDG_CACHE_HOME", *savedXdg) : UnsetEnv("XDG_CACHE_HOME");
  savedHome ? SetEnv("HOME", *savedHome) : UnsetEnv("HOME");
}

TEST(SleepTest, SleepsAtLeastTheRequestedTime) {
  vq::platform::SleepMilliseconds(0);
  const auto start = std::chrono::steady_clock::now();
  vq::platform::SleepMilliseconds(30);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

}  // namespace
