// The camera object: its initial state, the category table, messages and
// change notices to the host.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "camera/GenericCamera.h"
#include "support/NodeMapFixture.h"

namespace vq {
namespace {

struct Sent {
  std::uint32_t code;
  std::uint32_t detail;
  std::string text;
  bool dataWasNull;
  HostContext context;
};

std::vector<Sent>* sent = nullptr;

std::int32_t Host(std::uint32_t code, std::uint32_t detail, void* data, HostContext context) {
  const bool isText = code == HOST_MESSAGE && data != nullptr;
  sent->push_back(
      {code, detail, isText ? static_cast<const char*>(data) : "", data == nullptr, context});
  return 42;
}

class CameraObjectTest : public ::testing::Test {
 protected:
  void SetUp() override { sent = &messages; }
  void TearDown() override { sent = nullptr; }
  std::vector<Sent> messages;
  GenericCamera camera{ParameterRecordList(2)};
};

TEST_F(CameraObjectTest, FreshCameraHasGuruLevelNoCategoriesAndNoTree) {
  EXPECT_EQ(camera.GetVisibilityLevel(), 3u);
  EXPECT_EQ(camera.GetCategoryCount(), 0u);
  EXPECT_FALSE(camera.HasFeatureTree());
  EXPECT_EQ(camera.NodeMap(), nullptr);
  EXPECT_EQ(camera.hostCallback, nullptr);
  EXPECT_EQ(camera.hostContext, 0u);
  EXPECT_EQ(camera.GetCategoryName(0), nullptr);
}

TEST_F(CameraObjectTest, CategoriesAreFoundByExactNameOrAppended) {
  EXPECT_EQ(camera.FindOrAddCategory("Acquisition"), 0);
  EXPECT_EQ(camera.FindOrAddCategory("Image"), 1);
  EXPECT_EQ(camera.FindOrAddCategory("Acquisition"), 0);
  EXPECT_EQ(camera.FindOrAddCategory("acquisition"), 2);  // letter case makes a new one
  EXPECT_EQ(camera.GetCategoryCount(), 3u);
  EXPECT_STREQ(camera.GetCategoryName(1), "Image");
  EXPECT_STREQ(camera.GetCategoryName(2), "acquisition");
  EXPECT_EQ(camera.GetCategoryName(3), nullptr);
}

TEST_F(CameraObjectTest, LongCategoryNamesKeepTheirFirst511Characters) {
  const std::string longName(600, 'c');
  EXPECT_EQ(camera.FindOrAddCategory(longName.c_str()), 0);
  EXPECT_EQ(std::string(camera.GetCategoryName(0)), longName.substr(0, 511));
  // The cut name is what is compared afterwards.
  EXPECT_EQ(camera.FindOrAddCategory(longName.substr(0, 511).c_str()), 0);
  EXPECT_EQ(camera.FindOrAddCategory(longName.c_str()), 1);
}

TEST_F(CameraObjectTest, MessagesWithoutCallbackAreDropped) {
  EXPECT_EQ(camera.ReportMessage(MESSAGE_FAILURE, "lost"), 0);
  EXPECT_TRUE(messages.empty());
}

TEST_F(CameraObjectTest, MessagesCarryLevelTextAndContext) {
  camera.hostCallback = &Host;
  camera.hostContext = 0xABCDEF0123ull;
  EXPECT_EQ(camera.ReportMessage(MESSAGE_DEVICE_ERROR, "device says no"), 42);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].code, 7u);
  EXPECT_EQ(messages[0].detail, 3u);
  EXPECT_EQ(messages[0].text, "device says no");
  EXPECT_EQ(messages[0].context, 0xABCDEF0123ull);
}

TEST_F(CameraObjectTest, FeatureChangesBecomeCode9WithTheIndex) {
  GenericFeature feature;
  EXPECT_EQ(GenericCamera::OnFeatureChanged(12, &feature, &camera), 1);
  EXPECT_TRUE(messages.empty());  // no callback yet

  camera.hostCallback = &Host;
  camera.hostContext = 5;
  EXPECT_EQ(GenericCamera::OnFeatureChanged(12, &feature, &camera), 1);
  EXPECT_EQ(GenericCamera::OnFeatureChanged(13, nullptr, &camera), 1);   // no feature: nothing
  EXPECT_EQ(GenericCamera::OnFeatureChanged(14, &feature, nullptr), 1);  // no camera: nothing
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].code, 9u);
  EXPECT_EQ(messages[0].detail, 12u);
  EXPECT_TRUE(messages[0].dataWasNull);
  EXPECT_EQ(messages[0].context, 5u);
}

// A port that fails every read at one address, as a camera that stops
// answering would.
class FailingPort : public test::MemoryPort {
 public:
  void Read(void* buffer, int64_t address, int64_t length) override {
    if (address == kFailingAddress) throw ACCESS_EXCEPTION("no answer at 0x%llx", (long long)address);
    MemoryPort::Read(buffer, address, length);
  }
  static constexpr int64_t kFailingAddress = 0x200;
};

TEST_F(CameraObjectTest, TreeBuildFailingPartWayReleasesTheNodeMap) {
  // "First" gets its change callback before "Second"'s address read fails.
  const std::string xml = test::Description(R"(
  <Category Name="Root"><pFeature>First</pFeature><pFeature>Second</pFeature></Category>
  <IntReg Name="First"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="Base"><Address>0x200</Address><Length>4</Length><AccessMode>RO</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
  <IntReg Name="Second"><pAddress>Base</pAddress><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>)");
  FailingPort port;
  auto reference = CreateNodeMapReference();
  LoadNodeMapFromText(*reference, GenICam::gcstring(xml.c_str()));
  ASSERT_TRUE(ConnectNodeMap(*reference, &port));
  camera.hostCallback = &Host;
  EXPECT_THROW(camera.AttachNodeMap(std::move(reference)), GenICam::AccessException);
  EXPECT_FALSE(camera.HasFeatureTree());
  EXPECT_EQ(camera.NodeMap(), nullptr);
  EXPECT_TRUE(messages.empty());
}

}  // namespace
}  // namespace vq
