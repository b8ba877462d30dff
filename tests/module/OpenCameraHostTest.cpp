// Opening a camera through the host interface, end to end: the module is
// loaded with dlopen, its serial requests are served from a simulated camera
// (in this process, or the vqcam-sim program behind a pseudo-terminal), and
// command 25 runs the whole road to a feature tree and a category table.
#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "SimProcess.h"
#include "support/TestHost.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/platform/environment.h"

namespace vq::test {
namespace {

const char kAreaModel[] = "A2040M";
const char kLineModel[] = "L4096";
const std::uint32_t kAreaFeatureCount = 77;
const std::vector<std::string> kAreaCategories = {
    "Quick Setup",   "Device Control",          "Image Format Control", "Acquisition Control",
    "Analog Control", "Digital I/O Control",     "Transport Layer Control",
    "User Set Control", "KORVA Service"};

std::string ExampleDir(const char* name) { return std::string(VQ_SOURCE_DIR) + "/examples/" + name; }

std::vector<std::string> CategoryNames(VQ_Ext& extension) {
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < extension.GetCategoryCount(); ++i) {
    char name[512] = {};
    char second[16];
    std::uint32_t value = 7;
    if (extension.GetCategoryName(i, name, sizeof name, second, sizeof second, &value)) {
      names.push_back(name);
    }
  }
  return names;
}

// Where the camera is: a simulator in this process or the vqcam-sim program.
enum class Transport { InProcess, Program };

class CameraSource {
 public:
  CameraSource(Transport transport, const char* example) {
    if (transport == Transport::InProcess) {
      link_ = std::make_unique<SimulatedLink>(sim::loadProfile(ExampleDir(example)));
      return;
    }
    std::string error;
    started_ = program_.Start(VQ_SIM_PROGRAM, ExampleDir(example), &error);
    EXPECT_TRUE(started_) << error;
    if (started_) link_ = std::make_unique<SerialDeviceLink>(program_.DevicePath());
  }
  CameraLink* Link() { return link_.get(); }

 private:
  SimProcess program_;
  bool started_ = false;
  std::unique_ptr<CameraLink> link_;
};

class OpenCamera : public ::testing::TestWithParam<Transport> {
 protected:
  void SetUp() override {
    platform::SetEnv("VQ_DIALOG", "none");
    host_.cameraText = kAreaModel;
  }
  TestHost host_;
};

TEST_P(OpenCamera, OpensClosesReopensAndMovesToAnotherPort) {
  CameraSource area(GetParam(), "korva-area");
  CameraSource line(GetParam(), "korva-line");
  ASSERT_NE(area.Link(), nullptr);
  ASSERT_NE(line.Link(), nullptr);
  host_.Attach(0, area.Link());
  host_.Attach(2, line.Link());
  VQ_Ext& extension = host_.Extension();

  std::uint32_t status = 9;
  EXPECT_EQ(host_.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(extension.GetParameterCount(), kAreaFeatureCount);
  EXPECT_EQ(CategoryNames(extension), kAreaCategories);
  EXPECT_GT(host_.bytesFromCamera, 1000u);  // the description came over the link
  EXPECT_TRUE(host_.messages.empty());

  EXPECT_EQ(host_.Close(), 1);
  EXPECT_EQ(extension.GetParameterCount(), 0u);

  EXPECT_EQ(host_.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(extension.GetParameterCount(), kAreaFeatureCount);

  host_.cameraText = kLineModel;
  EXPECT_EQ(host_.Open(2, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  const std::uint32_t lineCount = extension.GetParameterCount();
  EXPECT_GT(lineCount, 0u);
  EXPECT_NE(lineCount, kAreaFeatureCount);
}

INSTANTIATE_TEST_SUITE_P(Transports, OpenCamera,
                         ::testing::Values(Transport::InProcess, Transport::Program),
                         [](const auto& info) {
                           return info.param == Transport::InProcess ? "InProcess" : "Program";
                         });

// Results of an open that does not reach a camera, with what the host sees.
class OpenOutcome : public ::testing::Test {
 protected:
  void SetUp() override {
    platform::SetEnv("VQ_DIALOG", "none");
    host_.cameraText = kAreaModel;
    host_.Attach(0, &camera_);
  }
  sim::Simulator& Simulator() { return camera_.simulator(); }
  void OpenExpecting(std::int32_t result, std::uint32_t status) {
    std::uint32_t got = 9;
    EXPECT_EQ(host_.Open(0, always_, whenNoMatch_, &got), result);
    EXPECT_EQ(got, status);
  }
  std::uint32_t always_ = 0;
  std::uint32_t whenNoMatch_ = 0;
  SimulatedLink camera_{KorvaAreaProfile()};
  TestHost host_;
};

TEST_F(OpenOutcome, HostWithoutPortInformationFailsSilently) {
  for (std::int32_t answer : {0, 2, -1}) {
    host_.portInfoAnswer = answer;
    OpenExpecting(0, 1);
  }
  EXPECT_TRUE(host_.messages.empty());
}

TEST_F(OpenOutcome, HostRefusingEverythingFails) {
  host_.refuseEverything = true;
  OpenExpecting(0, 1);
  EXPECT_EQ(host_.serialRequests, std::vector<std::uint32_t>{SERIAL_QUERY_PORT_INFO});
}

TEST_F(OpenOutcome, NoCameraTextAndNoSelectorMeansNothingToLoad) {
  for (std::uint32_t valid : {1u, 0u}) {
    host_.cameraText = valid ? "" : kAreaModel;  // an invalid text counts as none
    host_.cameraTextValid = valid;
    OpenExpecting(1, 3);
  }
  EXPECT_EQ(host_.serialRequests, std::vector<std::uint32_t>(2, SERIAL_QUERY_PORT_INFO));
  EXPECT_TRUE(host_.selectorStates.empty());
}

TEST_F(OpenOutcome, ClosedSelectorKeepsTheLoadedCamera) {
  OpenExpecting(1, 0);
  const std::uint32_t count = host_.Extension().GetParameterCount();
  always_ = 1;
  whenNoMatch_ = 1;
  OpenExpecting(1, 3);  // the dialog closes as Close would
  EXPECT_EQ(host_.selectorStates, std::vector<std::uint32_t>{1});
  EXPECT_EQ(host_.Extension().GetParameterCount(), count);
}

TEST_F(OpenOutcome, CameraWithoutDescriptionFailsWithItsMessage) {
  // An empty manifest: the camera offers no description.
  std::vector<std::uint8_t> table;
  ASSERT_TRUE(Simulator().device().registers().peek(gencp::abrm::kManifestTableAddress, 8, table));
  std::uint64_t address = 0;
  for (std::uint8_t byte : table) address = address << 8 | byte;
  ASSERT_TRUE(Simulator().device().registers().poke(address, std::vector<std::uint8_t>(8, 0)));

  OpenExpecting(0, 1);
  ASSERT_EQ(host_.messages.size(), 1u);
  EXPECT_EQ(host_.messages[0].level, MESSAGE_FAILURE);
  EXPECT_TRUE(std::regex_match(host_.messages[0].text,
                               std::regex("XML File for device: \".+#KORVA#AreaScan#A2040M\" "
                                          "not available\\.")))
      << host_.messages[0].text;
  EXPECT_EQ(host_.Extension().GetParameterCount(), 0u);
}

// A line that garbles or stays silent: the failure reaches the host as one
// level-0 message with the exception's source, the camera is closed, nothing hangs.
TEST_F(OpenOutcome, BrokenLineEndsWithTheExceptionMessage) {
  struct Case {
    const char* name;
    void (*spoil)(sim::FaultPlan&);
  };
  const Case cases[] = {
      {"silent", [](sim::FaultPlan& f) { f.silent = true; }},
      {"garbled", [](sim::FaultPlan& f) { f.byteCorruptRate = 1.0; }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    host_.ClearRecords();
    Simulator().reset();
    c.spoil(Simulator().faults());
    OpenExpecting(0, 1);
    ASSERT_EQ(host_.messages.size(), 1u);
    EXPECT_EQ(host_.messages[0].level, MESSAGE_FAILURE);
    EXPECT_TRUE(std::regex_search(host_.messages[0].text,
                                  std::regex(R"(.+ \(File: .+ , Line [0-9]+\)$)")))
        << host_.messages[0].text;
    EXPECT_EQ(host_.Extension().GetParameterCount(), 0u);
  }
}

TEST_F(OpenOutcome, DescriptionThatCannotBuildATreeIsClosed) {
  // No "Root" category: the tree cannot be built after the node map was.
  sim::Profile profile = KorvaAreaProfile();
  const std::string root = "<Category Name=\"Root\"";
  profile.descriptionText.replace(profile.descriptionText.find(root), root.size(),
                                  "<Category Name=\"Toor\"");
  SimulatedLink rootless(profile);
  host_.Attach(1, &rootless);
  std::uint32_t status = 9;
  EXPECT_EQ(host_.Open(1, 0, 0, &status), 0);
  EXPECT_EQ(status, 1u);
  ASSERT_EQ(host_.messages.size(), 1u);
  EXPECT_NE(host_.messages[0].text.find("Root"), std::string::npos);
  EXPECT_EQ(host_.Extension().GetParameterCount(), 0u);
  // The camera object is usable afterwards.
  EXPECT_EQ(host_.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
}

TEST_F(OpenOutcome, ManyOpenCloseCyclesLeaveNothingBehind) {
  auto heapInUse = [] { return mallinfo2().uordblks; };
  auto cycle = [&] {
    std::uint32_t status = 9;
    ASSERT_EQ(host_.Open(0, 0, 0, &status), 1);
    ASSERT_EQ(status, 0u);
    ASSERT_EQ(host_.Close(), 1);
  };
  for (int i = 0; i < 10; ++i) cycle();
  const std::size_t settled = heapInUse();
  for (int i = 0; i < 200; ++i) cycle();
  EXPECT_TRUE(host_.messages.empty());
#if !defined(__SANITIZE_ADDRESS__)
  // Under AddressSanitizer the leak check at exit does this job.
  EXPECT_LT(heapInUse(), settled + 256 * 1024) << "the heap grows with every open";
#else
  (void)settled;
#endif
}

}  // namespace
}  // namespace vq::test
