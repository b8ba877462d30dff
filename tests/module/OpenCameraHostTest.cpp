// Opening a camera through the host interface, end to end: the module is
// loaded with dlopen, its serial requests are served from a simulated camera
// (in this process, or the vqcam-sim program behind a pseudo-terminal), and
// command 25 runs the whole road to a feature tree and a category table; the
// baud rate is switched on the way.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "SimProcess.h"
#include "support/DescriptionText.h"
#include "support/HostCamera.h"
#include "vq/gencp/Bootstrap.h"

namespace vq::test {
namespace {

const std::uint32_t kAreaFeatureCount = 77;
const std::vector<std::string> kAreaCategories = {
    "Quick Setup",    "Device Control",      "Image Format Control",    "Acquisition Control",
    "Analog Control", "Digital I/O Control", "Transport Layer Control", "User Set Control",
    "KORVA Service"};
const std::vector<std::string> kLineCategories = {"Device Information", "Line Control",
                                                  "Serial Link", "Configuration"};

std::string ExampleDir(const char* name) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + name;
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

class OpenCamera : public ::testing::TestWithParam<Transport> {};

TEST_P(OpenCamera, OpensClosesReopensAndMovesToAnotherPort) {
  platform::SetEnv("VQ_DIALOG", "none");
  CameraSource area(GetParam(), "korva-area");
  CameraSource line(GetParam(), "korva-line");
  ASSERT_NE(area.Link(), nullptr);
  ASSERT_NE(line.Link(), nullptr);
  TestHost host;
  host.cameraText = kKorvaModel;
  host.Attach(0, area.Link());
  host.Attach(2, line.Link());
  VQ_Ext& extension = host.Extension();

  std::uint32_t status = 9;
  EXPECT_EQ(host.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(extension.GetParameterCount(), kAreaFeatureCount);
  EXPECT_EQ(CategoryNames(extension), kAreaCategories);
  EXPECT_GT(host.bytesFromCamera, 1000u);  // the description came over the link
  EXPECT_TRUE(host.messages.empty());
  // A second InitializeCamera keeps the camera and what it opened.
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList(2)), 1);
  EXPECT_EQ(extension.GetParameterCount(), kAreaFeatureCount);

  // The fastest rate the line and the camera (all eight rates) share; the
  // camera and the host's port (request 20) switched to 115200 baud and back.
  std::uint32_t common = 1;
  for (std::uint32_t bit = 1; bit <= 128; bit <<= 1) {
    if (area.Link()->SupportedBaudRates() & bit) common = bit;
  }
  EXPECT_EQ(QueryWord(extension, CMD_MAX_BAUD_RATE), common);
  EXPECT_EQ(QueryWord(extension, CMD_CURRENT_BAUD_RATE), 1u);
  for (std::uint32_t bit : {16u, 1u}) {
    host.serialRequests.clear();
    std::uint32_t rate = bit;
    EXPECT_EQ(extension.ExecuteCommand(CMD_SET_BAUD_RATE, &rate, sizeof rate), 1) << bit;
    EXPECT_EQ(QueryWord(extension, CMD_CURRENT_BAUD_RATE), bit);
    EXPECT_EQ(
        std::count(host.serialRequests.begin(), host.serialRequests.end(), SERIAL_SET_BAUD_RATE),
        1);
  }
  EXPECT_TRUE(host.messages.empty());

  // Both sides of the line stayed in step: the next open reads everything anew.
  EXPECT_EQ(host.Close(), 1);
  EXPECT_EQ(extension.GetParameterCount(), 0u);
  EXPECT_EQ(host.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(extension.GetParameterCount(), kAreaFeatureCount);

  host.cameraText = "L4096";
  EXPECT_EQ(host.Open(2, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_NE(extension.GetParameterCount(), kAreaFeatureCount);
  EXPECT_EQ(CategoryNames(extension), kLineCategories);  // the table was built afresh
}

INSTANTIATE_TEST_SUITE_P(Transports, OpenCamera,
                         ::testing::Values(Transport::InProcess, Transport::Program),
                         [](const auto& info) {
                           return info.param == Transport::InProcess ? "InProcess" : "Program";
                         });

// Opens that do not reach a camera, with what the host sees.
class OpenOutcome : public ::testing::Test {
 protected:
  std::uint32_t Open(std::int32_t result, std::uint32_t always = 0, std::uint32_t whenNoMatch = 0,
                     std::uint32_t port = 0) {
    std::uint32_t status = 9;
    EXPECT_EQ(camera.host.Open(port, always, whenNoMatch, &status), result);
    return status;
  }
  HostCamera camera{KorvaAreaProfile()};
};

TEST_F(OpenOutcome, HostAnswersThatEndTheOpenWithoutAMessage) {
  const struct {
    const char* name;
    std::int32_t portInfoAnswer;
    bool refuseEverything;
    const char* cameraText;
    std::uint32_t textValid;
    std::int32_t result;
    std::uint32_t status;
  } rows[] = {{"port information refused", 0, false, kKorvaModel, 1, 0, 1},
              {"port information answered 2", 2, false, kKorvaModel, 1, 0, 1},
              {"port information answered -1", -1, false, kKorvaModel, 1, 0, 1},
              {"every callback refused", 1, true, kKorvaModel, 1, 0, 1},
              {"no camera text: nothing to load", 1, false, "", 1, 1, 3},
              {"camera text not valid", 1, false, kKorvaModel, 0, 1, 3},
              {"camera text flag 2", 1, false, kKorvaModel, 2, 1, 3}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TestHost& host = camera.host;
    host.ClearRecords();
    host.portInfoAnswer = row.portInfoAnswer;
    host.refuseEverything = row.refuseEverything;
    host.cameraText = row.cameraText;
    host.cameraTextValid = row.textValid;
    EXPECT_EQ(Open(row.result), row.status);
    EXPECT_EQ(host.serialRequests, std::vector<std::uint32_t>{SERIAL_QUERY_PORT_INFO});
    EXPECT_TRUE(host.messages.empty());
    EXPECT_TRUE(host.selectorStates.empty());
  }
}

TEST_F(OpenOutcome, ClosedSelectorKeepsTheLoadedCamera) {
  EXPECT_EQ(Open(1), 0u);
  const std::uint32_t count = camera.Ext().GetParameterCount();
  EXPECT_EQ(Open(1, 1, 1), 3u);  // the dialog closes as Close would
  EXPECT_EQ(camera.host.selectorStates, std::vector<std::uint32_t>{1});
  EXPECT_EQ(camera.Ext().GetParameterCount(), count);
}

// Opens that fail on the camera's side: one level-0 message, the camera
// closed, nothing hangs, and the next open works.
TEST_F(OpenOutcome, FailuresOnTheCamerasSideEndWithOneMessage) {
  std::vector<std::uint8_t> table;
  ASSERT_TRUE(
      camera.Simulator().device().registers().peek(gencp::abrm::kManifestTableAddress, 8, table));
  std::uint64_t manifest = 0;
  for (std::uint8_t byte : table) manifest = manifest << 8 | byte;
  const std::string exception = R"(.+ \(File: .+ , Line [0-9]+\)$)";
  sim::Profile rootless = KorvaAreaProfile();  // no "Root": no tree after the node map
  const std::string root = "<Category Name=\"Root\"";
  rootless.descriptionText.replace(rootless.descriptionText.find(root), root.size(),
                                   "<Category Name=\"Toor\"");
  const struct {
    const char* name;
    std::function<void(sim::Simulator&)> spoil;
    sim::Profile profile;  // served on port 1
    std::string message;   // a pattern
  } rows[] = {
      {"silent line", [](sim::Simulator& s) { s.faults().silent = true; }, {}, exception},
      {"garbled line", [](sim::Simulator& s) { s.faults().byteCorruptRate = 1.0; }, {}, exception},
      {"empty manifest",
       [&](sim::Simulator& s) {
         ASSERT_TRUE(s.device().registers().poke(manifest, std::vector<std::uint8_t>(8, 0)));
       },
       {},
       "XML File for device: \".+#KORVA#AreaScan#A2040M\" not available\\."},
      {"description without a root category", nullptr, rootless, ".*Root.*"},
      {"description the node map refuses", nullptr,
       ProfileForDescription(
           Description("<Integer Name=\"Root\"><pValue>Nowhere</pValue></Integer>"), kKorvaModel),
       exception}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    camera.host.ClearRecords();
    std::unique_ptr<SimulatedLink> other;
    if (row.spoil) {
      camera.Simulator().reset();
      row.spoil(camera.Simulator());
    } else {
      other = std::make_unique<SimulatedLink>(row.profile);
      camera.host.Attach(1, other.get());
    }
    EXPECT_EQ(Open(0, 0, 0, other ? 1 : 0), 1u);
    ASSERT_EQ(camera.host.messages.size(), 1u);
    EXPECT_EQ(camera.host.messages[0].level, MESSAGE_FAILURE);
    EXPECT_TRUE(std::regex_match(camera.host.messages[0].text, std::regex(row.message)))
        << camera.host.messages[0].text;
    EXPECT_EQ(camera.Ext().GetParameterCount(), 0u);
    camera.Simulator().reset();
    EXPECT_EQ(Open(1), 0u);  // the camera object is usable afterwards
    ASSERT_EQ(camera.host.Close(), 1);
  }
}

TEST_F(OpenOutcome, ManyOpenCloseCyclesLeaveNothingBehind) {
  auto heapInUse = [] { return mallinfo2().uordblks; };
  auto cycle = [&] {
    ASSERT_EQ(Open(1), 0u);
    ASSERT_EQ(camera.host.Close(), 1);
  };
  for (int i = 0; i < 10; ++i) cycle();
  const std::size_t settled = heapInUse();
  for (int i = 0; i < 200; ++i) cycle();
  EXPECT_TRUE(camera.host.messages.empty());
#if !defined(__SANITIZE_ADDRESS__)
  // Under AddressSanitizer the leak check at exit does this job.
  EXPECT_LT(heapInUse(), settled + 256 * 1024) << "the heap grows with every open";
#else
  (void)settled;
#endif
}

}  // namespace
}  // namespace vq::test
