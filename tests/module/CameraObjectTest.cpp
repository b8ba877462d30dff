// The camera object: its category table, and a feature tree whose building
// fails part-way through.
#include <gtest/gtest.h>

#include <string>

#include "camera/GenericCamera.h"
#include "support/NodeMapFixture.h"

namespace vq::test {
namespace {

TEST(CameraObject, CategoriesAreFoundByExactNameOrAppendedWithTheirFirst511Characters) {
  GenericCamera camera{ParameterRecordList()};
  const std::string longName(600, 'c');
  const std::pair<std::string, std::int32_t> rows[] = {
      {"Acquisition", 0}, {"Image", 1},  {"Acquisition", 0},
      {"acquisition", 2}, {longName, 3}, {longName.substr(0, 511), 3},
      {longName, 4}};  // the cut name is kept
  for (const auto& [name, index] : rows) EXPECT_EQ(camera.FindOrAddCategory(name.c_str()), index);
  EXPECT_EQ(camera.GetCategoryCount(), 5u);
  EXPECT_STREQ(camera.GetCategoryName(2), "acquisition");
  EXPECT_EQ(std::string(camera.GetCategoryName(3)), longName.substr(0, 511));
  EXPECT_EQ(camera.GetCategoryName(5), nullptr);
}

// A port that fails every read at one address, as a camera that stops
// answering would.
class FailingPort : public MemoryPort {
 public:
  void Read(void* buffer, int64_t address, int64_t length) override {
    if (address == 0x200) throw ACCESS_EXCEPTION("no answer at 0x%llx", (long long)address);
    MemoryPort::Read(buffer, address, length);
  }
};

std::int32_t Host(std::uint32_t, std::uint32_t, void*, HostContext context) {
  ++*reinterpret_cast<int*>(context);
  return 1;
}

TEST(CameraObject, TreeBuildFailingPartWayReleasesTheNodeMap) {
  // "First" gets its change callback before "Second"'s address read fails.
  const std::string xml =
      Description(R"(
  <Category Name="Root"><pFeature>First</pFeature><pFeature>Second</pFeature></Category>
  <IntReg Name="Second"><pAddress>Base</pAddress><Length>4</Length><AccessMode>RW</AccessMode>
    <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>)" +
                  IntRegNode("First", 0x100, 4) + IntRegNode("Base", 0x200, 4, "RO"));
  FailingPort port;
  auto reference = CreateNodeMapReference();
  LoadNodeMapFromText(*reference, GenICam::gcstring(xml.c_str()));
  ASSERT_TRUE(ConnectNodeMap(*reference, &port));
  GenericCamera camera{ParameterRecordList()};
  int calls = 0;
  camera.hostCallback = &Host;
  camera.hostContext = reinterpret_cast<HostContext>(&calls);
  EXPECT_THROW(camera.AttachNodeMap(std::move(reference)), GenICam::AccessException);
  EXPECT_FALSE(camera.HasFeatureTree());
  EXPECT_EQ(camera.NodeMap(), nullptr);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace vq::test
