// The exception family: origin, formatted description, what(), catching by
// the base class, also when thrown from another shared library.
#include <GenICam.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "thrower.h"

namespace {

using GenICam::GenericException;

struct MacroCase {
  const char* type;
  std::function<void()> raise;
  unsigned int line;  // where the macro was used
  std::string description;
};

// Both __LINE__ uses sit in one expansion, so they give the same line.
// clang-format off
#define MACRO_CASE(Type, MACRO, number, word) \
  MacroCase{#Type, [] { throw MACRO("n=%d s=%s", number, word); }, __LINE__, \
            "n=" #number " s=" word}
// clang-format on

const std::vector<MacroCase>& MacroCases() {
  static const std::vector<MacroCase> cases = {
      MACRO_CASE(GenericException, GENERIC_EXCEPTION, 1, "generic"),
      MACRO_CASE(BadAllocException, BAD_ALLOC_EXCEPTION, 2, "alloc"),
      MACRO_CASE(InvalidArgumentException, INVALID_ARGUMENT_EXCEPTION, 3, "argument"),
      MACRO_CASE(OutOfRangeException, OUT_OF_RANGE_EXCEPTION, 4, "range"),
      MACRO_CASE(PropertyException, PROPERTY_EXCEPTION, 5, "property"),
      MACRO_CASE(RuntimeException, RUNTIME_EXCEPTION, 6, "runtime"),
      MACRO_CASE(LogicalErrorException, LOGICAL_ERROR_EXCEPTION, 7, "logic"),
      MACRO_CASE(AccessException, ACCESS_EXCEPTION, 8, "access"),
      MACRO_CASE(TimeoutException, TIMEOUT_EXCEPTION, 9, "timeout"),
      MACRO_CASE(DynamicCastException, DYNAMICCAST_EXCEPTION, 10, "cast"),
  };
  return cases;
}

TEST(GcExceptionTest, MacrosRecordOriginTypeAndFormattedDescription) {
  for (const MacroCase& c : MacroCases()) {
    try {
      c.raise();
      ADD_FAILURE() << c.type << " not thrown";
    } catch (const GenericException& e) {
      const std::string& expected = c.description;
      EXPECT_STREQ(e.GetDescription(), expected.c_str()) << c.type;
      EXPECT_STREQ(e.GetExceptionType(), c.type);
      EXPECT_NE(std::string(e.GetSourceFileName()).find("exception_test.cpp"), std::string::npos);
      EXPECT_EQ(e.GetSourceLine(), c.line) << c.type;
      const std::string what = e.what();
      EXPECT_EQ(what, expected + " : " + c.type + " thrown (file '" + e.GetSourceFileName() +
                          "', line " + std::to_string(e.GetSourceLine()) + ")");
      EXPECT_STREQ(e.GetNodeName(), "");
    }
  }
}

TEST(GcExceptionTest, CaughtAsStdExceptionAndNeverAsASiblingType) {
  try {
    throw RUNTIME_EXCEPTION("DLL already loaded");
  } catch (const std::exception& e) {
    EXPECT_NE(std::string(e.what()).find("DLL already loaded : RuntimeException thrown"),
              std::string::npos);
  }
  // An access exception is not a runtime exception.
  bool caughtAsRuntime = false;
  try {
    try {
      throw ACCESS_EXCEPTION("Node is not writable.");
    } catch (const GenICam::RuntimeException&) {
      caughtAsRuntime = true;
    }
  } catch (const GenericException& e) {
    EXPECT_STREQ(e.GetDescription(), "Node is not writable.");
  }
  EXPECT_FALSE(caughtAsRuntime);
}

TEST(GcExceptionTest, NodeVariantNamesNodeAndMethodInWhat) {
  try {
    throw ACCESS_EXCEPTION_NODE("Gain", "SetValue")("Node is not writable.");
  } catch (const GenICam::AccessException& e) {
    EXPECT_STREQ(e.GetNodeName(), "Gain");
    EXPECT_STREQ(e.GetCallingMethod(), "SetValue");
    EXPECT_EQ(std::string(e.what()),
              std::string("Node is not writable. : AccessException thrown in node 'Gain' while "
                          "calling 'Gain.SetValue()' (file '") +
                  e.GetSourceFileName() + "', line " + std::to_string(e.GetSourceLine()) + ")");
  }
}

TEST(GcExceptionTest, ExplicitOriginForRethrowing) {
  const GenICam::RuntimeException direct("Write failed (Code: -10004) time-out", "port.cpp", 77);
  EXPECT_STREQ(direct.GetSourceFileName(), "port.cpp");
  EXPECT_EQ(direct.GetSourceLine(), 77u);
  try {
    throw GENICAM_EXCEPTION_AT(TimeoutException, "driver.cpp", 12)("after %d ms", 500);
  } catch (const GenericException& e) {
    EXPECT_STREQ(e.GetDescription(), "after 500 ms");
    EXPECT_STREQ(e.GetSourceFileName(), "driver.cpp");
    EXPECT_EQ(e.GetSourceLine(), 12u);
  }
  // A copy keeps everything, including the composed message.
  GenICam::RuntimeException copy = direct;
  EXPECT_STREQ(copy.what(), direct.what());
}

TEST(GcExceptionTest, NullTextsAndLiteralPercentAreSafe) {
  const GenericException e(nullptr, nullptr, 0, nullptr, nullptr, nullptr);
  EXPECT_STREQ(e.GetDescription(), "");
  EXPECT_STREQ(e.GetSourceFileName(), "");
  EXPECT_STREQ(e.what(), " :  thrown (file '', line 0)");
  EXPECT_EQ(GenICam::FormatString(nullptr), "");
  try {
    throw RUNTIME_EXCEPTION("%s", "100% sure %s %n");
  } catch (const GenericException& caught) {
    EXPECT_STREQ(caught.GetDescription(), "100% sure %s %n");
  }
  try {
    throw RUNTIME_EXCEPTION();
  } catch (const GenericException& caught) {
    EXPECT_STREQ(caught.GetDescription(), "");
  }
}

TEST(GcExceptionTest, LongDescriptionsAreNotTruncated) {
  for (size_t length : {255u, 256u, 257u, 4096u, 1000000u}) {
    const std::string text(length, 'x');
    try {
      throw INVALID_ARGUMENT_EXCEPTION("[%s]", text.c_str());
    } catch (const GenericException& e) {
      EXPECT_EQ(std::string(e.GetDescription()), "[" + text + "]") << length;
      EXPECT_EQ(std::string(e.what()).rfind("[" + text + "] : ", 0), 0u) << length;
    }
  }
}

TEST(GcExceptionTest, CaughtAcrossSharedLibraryBoundary) {
  const std::vector<const char*> types = {"BadAllocException",    "InvalidArgumentException",
                                          "OutOfRangeException",  "PropertyException",
                                          "RuntimeException",     "LogicalErrorException",
                                          "AccessException",      "TimeoutException",
                                          "DynamicCastException", "GenericException"};
  for (const char* type : types) {
    try {
      ThrowFromLibrary(type, "from the library");
      ADD_FAILURE() << type << " not thrown";
    } catch (const GenericException& e) {
      EXPECT_STREQ(e.GetExceptionType(), type);
      EXPECT_STREQ(e.GetDescription(), "from the library");
      EXPECT_EQ(e.GetSourceLine(), ThrowerLine());
      EXPECT_NE(std::string(e.GetSourceFileName()).find("thrower.cpp"), std::string::npos);
    }
  }
  EXPECT_THROW(ThrowFromLibrary("TimeoutException", "t"), GenICam::TimeoutException);
  EXPECT_THROW(ThrowFromLibrary("AccessException", "a"), GenICam::AccessException);
  const GenICam::gcstring joined = JoinInLibrary(GenICam::gcstring_vector{"a", "b", "c"});
  EXPECT_EQ(joined, "a,b,c");
}

}  // namespace
