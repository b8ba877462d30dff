// Finding the GenICam runtime through the environment, and the life of the
// node-map reference: created for "Device", loaded once from text, connected,
// deleted.
#include <gtest/gtest.h>

#include <string>

#include "camera/GenICamRuntime.h"
#include "support/NodeMapFixture.h"
#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq {
namespace {

class RuntimeLocation : public ::testing::Test {
 protected:
  void SetUp() override {
    saved_ = platform::GetEnv(kGenICamRootVariable);
    platform::SetLibraryDirectory("/previous");
  }
  void TearDown() override {
    if (saved_)
      platform::SetEnv(kGenICamRootVariable, *saved_);
    else
      platform::UnsetEnv(kGenICamRootVariable);
    platform::SetLibraryDirectory("");
  }
  std::optional<std::string> saved_;
};

struct RootRow {
  std::string value;
  std::string directory;  // empty: nothing handed over
};

TEST_F(RuntimeLocation, RootGetsTheRuntimeSubdirectoryAppendedAsIs) {
  const RootRow rows[] = {
      {"/opt/genicam", "/opt/genicam/bin/Win64_x64"},
      {"/opt/genicam/", "/opt/genicam//bin/Win64_x64"},
      {"C:\\GenICam\\", "C:\\GenICam\\/bin/Win64_x64"},
      {std::string(259, 'r'), std::string(259, 'r') + "/bin/Win64_x64"},
  };
  for (const RootRow& row : rows) {
    platform::SetEnv(kGenICamRootVariable, row.value);
    EXPECT_EQ(LocateGenICamRuntime(), 1) << row.value;
    EXPECT_EQ(platform::GetLibraryDirectory(), row.directory);
  }
}

TEST_F(RuntimeLocation, UnsetEmptyOrOversizedRootChangesNothing) {
  platform::UnsetEnv(kGenICamRootVariable);
  EXPECT_EQ(LocateGenICamRuntime(), 0);
  EXPECT_EQ(platform::GetLibraryDirectory(), "/previous");
  platform::SetEnv(kGenICamRootVariable, "");
  EXPECT_EQ(LocateGenICamRuntime(), 0);
  platform::SetEnv(kGenICamRootVariable, std::string(260, 'r'));
  EXPECT_EQ(LocateGenICamRuntime(), 0);
  EXPECT_EQ(platform::GetLibraryDirectory(), "/previous");
}

const std::string kSmall = test::Description(R"(
  <Category Name="Root"><pFeature>Value</pFeature></Category>
  <IntReg Name="Value"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
)");

TEST(NodeMapReference, LoadsOnceFromText) {
  auto reference = CreateNodeMapReference();
  EXPECT_EQ(reference->_Ptr, nullptr);
  LoadNodeMapFromText(*reference, kSmall.c_str());
  GenApi::INodeMap* first = reference->_Ptr;
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(std::string(first->GetDeviceName().c_str()), "Device");
  try {
    LoadNodeMapFromText(*reference, kSmall.c_str());
    FAIL() << "second load accepted";
  } catch (const GenICam::RuntimeException& failure) {
    EXPECT_STREQ(failure.GetDescription(), "DLL already loaded");
  }
  EXPECT_EQ(reference->_Ptr, first);
  EXPECT_NE(reference->_GetNode("Value"), nullptr);
}

TEST(NodeMapReference, ConnectedMapReadsThroughThePort) {
  test::MemoryPort port;
  port.SetLittleEndian(0x10, 1234, 4);
  auto reference = CreateNodeMapReference();
  LoadNodeMapFromText(*reference, kSmall.c_str());
  EXPECT_TRUE(ConnectNodeMap(*reference, &port));
  auto* value = dynamic_cast<GenApi::IInteger*>(reference->_GetNode("Value"));
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->GetValue(), 1234);
  EXPECT_GE(port.reads(), 1);
  DeleteNodeMapReference(reference);
  EXPECT_EQ(reference, nullptr);
}

TEST(NodeMapReference, ConnectWithoutNodeMapIsAnAccessError) {
  test::MemoryPort port;
  auto reference = CreateNodeMapReference();
  try {
    ConnectNodeMap(*reference, &port);
    FAIL() << "connected without a node map";
  } catch (const GenICam::AccessException& failure) {
    EXPECT_STREQ(failure.GetDescription(), "Feature not present (reference not valid)");
  }
}

TEST(NodeMapReference, BrokenDescriptionThrowsAndDeletingStillWorks) {
  auto reference = CreateNodeMapReference();
  EXPECT_THROW(LoadNodeMapFromText(*reference, "<RegisterDescription"), GenICam::GenericException);
  DeleteNodeMapReference(reference);
  EXPECT_EQ(reference, nullptr);
  auto neverLoaded = CreateNodeMapReference();
  DeleteNodeMapReference(neverLoaded);
  EXPECT_EQ(neverLoaded, nullptr);
  DeleteNodeMapReference(neverLoaded);  // nothing left to delete
}

}  // namespace
}  // namespace vq
