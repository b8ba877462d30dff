// Opening a camera through the host interface, end to end: the module is
// loaded with dlopen, its serial requests are served from simulated cameras in
// this process, and command 25 runs the whole road to a feature tree and a
// category table; the baud rate is switched on the way. (The same road over a
// pseudo-terminal with vqcam-sim: the host's session tests.) Then opens through
// the "Camera XML Selector" on a real pseudo-terminal (VQ_DIALOG=tty:<slave>),
// the user's keys typed on the master side: the family check, a probe that
// fails and shows the dialog again with request 22, Load without a selection,
// Close, and the check box state sent as code 26.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/DescriptionText.h"
#include "support/HostCamera.h"
#include "support/PtyScreen.h"
#include "vq/gencp/Bootstrap.h"

namespace vq::test {
namespace {

TEST(OpenCamera, OpensClosesReopensAndMovesToAnotherPort) {
  platform::SetEnv("VQ_DIALOG", "none");
  SimulatedLink area(KorvaAreaProfile());
  SimulatedLink line(sim::loadProfile(std::string(VQ_SOURCE_DIR) + "/examples/korva-line"));
  TestHost host;
  host.cameraText = kKorvaModel;
  host.Attach(0, &area);
  host.Attach(2, &line);
  VQ_Ext& extension = host.Extension();
  const std::vector<std::string> areaCategories = {
      "Quick Setup",    "Device Control",      "Image Format Control",    "Acquisition Control",
      "Analog Control", "Digital I/O Control", "Transport Layer Control", "User Set Control",
      "KORVA Service"};

  std::uint32_t status = 9;
  EXPECT_EQ(host.Open(0, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(extension.GetParameterCount(), 77u);
  EXPECT_EQ(CategoryNames(extension), areaCategories);
  EXPECT_GT(host.bytesFromCamera, 1000u);  // the description came over the link
  EXPECT_TRUE(host.messages.empty());
  // A second InitializeCamera keeps the camera and what it opened.
  EXPECT_EQ(extension.InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList(2)), 1);
  EXPECT_EQ(extension.GetParameterCount(), 77u);

  // The camera and the host's port (request 20) switch to 115200 baud and
  // back; the fastest rate they share is 921600.
  EXPECT_EQ(QueryWord(extension, CMD_MAX_BAUD_RATE), 128u);
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
  EXPECT_EQ(extension.GetParameterCount(), 77u);

  host.cameraText = "L4096";
  EXPECT_EQ(host.Open(2, 0, 0, &status), 1);
  EXPECT_EQ(status, 0u);
  EXPECT_NE(extension.GetParameterCount(), 77u);
  // The table was built afresh.
  EXPECT_EQ(CategoryNames(extension),
            (std::vector<std::string>{"Device Information", "Line Control", "Serial Link",
                                      "Configuration"}));
}

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
  const std::uint64_t manifest = camera.Register(gencp::abrm::kManifestTableAddress, 8);
  const std::string exception = R"(.+ \(File: .+ , Line [0-9]+\)$)";
  sim::Profile rootless = KorvaAreaProfile();  // no "Root": no tree after the node map
  const std::string root = "<Category Name=\"Root\"";
  rootless.descriptionText.replace(rootless.descriptionText.find(root), root.size(),
                                   "<Category Name=\"Toor\"");
  const struct {
    const char* name;
    std::function<void(sim::Simulator&)> spoil;
    sim::Profile profile;  // served on port 1
    std::string message;   // a POSIX extended pattern
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
    EXPECT_THAT(camera.host.messages[0].text, ::testing::MatchesRegex(row.message));
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

// Leaves of the tree for the driver's templates: (1) A2040M, (2) L4096.
const char kAreaLeaf[] = "1";
const char kLineLeaf[] = "2";

class OpenWithSelector : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(pty_.Open());
    dialog_.emplace("VQ_DIALOG", "tty:" + pty_.SlavePath());
    host_.Attach(1, &camera_);
  }

  // Runs the open on its own thread; for every showing of the dialog, waits for
  // its first screen and types the next entry of `answers`.
  std::uint32_t OpenWithAnswers(std::uint32_t always, std::uint32_t whenNoMatch,
                                const std::vector<std::string>& answers,
                                std::int32_t* result = nullptr) {
    std::uint32_t status = 99;
    auto open = std::async(std::launch::async, [&] {
      const std::int32_t got = host_.Open(1, always, whenNoMatch, &status);
      if (result != nullptr) *result = got;
    });
    const std::string screen = AnswerDialogs(pty_, open, answers);
    EXPECT_EQ(CountOf(screen, kEnterScreen), answers.size()) << "dialog showings";
    return status;
  }

  platform::PseudoTerminal pty_;
  std::optional<ScopedEnv> dialog_;
  SimulatedLink camera_{KorvaAreaProfile()};
  TestHost host_;
};

// The line-scan template chosen first, then the area-scan one. With the
// camera text the family AreaScan is detected and the choice refused; without
// it the line-scan template reaches the probe, which the area-scan camera does
// not answer to: request 22, and the dialog is shown again.
TEST_F(OpenWithSelector, WrongTemplateIsRefusedOrFailsItsProbeThenTheRightOneLoads) {
  const struct {
    const char* cameraText;
    std::uint32_t always, whenNoMatch;
    const char* refusal;  // level 0
    std::vector<std::uint32_t> probeFailurePorts;
  } rows[] = {
      {"A2040M",
       1,
       0,
       "XML Camera File chosen KORVA#LineScan#L4096 does not belong to the family of "
       "cameras you are using: AreaScan",
       {}},
      {"", 0, 1, "The Camera do not support this the device ID: KORVA#LineScan#L4096", {1}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.refusal);
    host_.ClearRecords();
    host_.cameraText = row.cameraText;
    EXPECT_EQ(OpenWithAnswers(row.always, row.whenNoMatch,
                              {std::string(kLineLeaf) + "\r", std::string(kAreaLeaf) + "\r"}),
              0u);
    ASSERT_EQ(host_.messages.size(), 2u);
    EXPECT_EQ(host_.messages[0].level, MESSAGE_FAILURE);
    EXPECT_EQ(host_.messages[0].text, row.refusal);
    EXPECT_EQ(host_.messages[1].level, MESSAGE_INFORMATION);
    EXPECT_EQ(host_.messages[1].text,
              "XML Camera file for device: KORVA#AreaScan#A2040M is loaded");
    EXPECT_EQ(host_.probeFailurePorts, row.probeFailurePorts);
    EXPECT_EQ(host_.selectorStates, std::vector<std::uint32_t>(2, row.whenNoMatch));
    EXPECT_GT(host_.Extension().GetParameterCount(), 0u);
  }
}

TEST_F(OpenWithSelector, LoadWithoutSelectionCloseAndTheCheckBox) {
  struct Step {
    const char* keys;
    std::uint32_t whenNoMatch;
    std::int32_t result;
    std::uint32_t status;
    std::uint32_t checkBox;
  };
  const Step steps[] = {
      {"\r", 1, 0, 2, 1},   // Load, nothing selected, nothing loaded yet
      {" q", 1, 1, 3, 0},   // the check box unticked, then Close
      {" \r", 0, 0, 2, 1},  // ticked; Load without a selection, still nothing loaded
  };
  for (const Step& step : steps) {
    host_.ClearRecords();
    std::int32_t result = -1;
    EXPECT_EQ(OpenWithAnswers(1, step.whenNoMatch, {step.keys}, &result), step.status) << step.keys;
    EXPECT_EQ(result, step.result) << step.keys;
    EXPECT_EQ(host_.selectorStates, std::vector<std::uint32_t>{step.checkBox}) << step.keys;
    EXPECT_TRUE(host_.messages.empty());
  }
  // With a camera loaded, Load without a selection keeps it: result 3.
  host_.cameraText = "A2040M";
  std::uint32_t status = 99;
  ASSERT_EQ(host_.Open(1, 0, 0, &status), 1);
  ASSERT_EQ(status, 0u);
  EXPECT_EQ(OpenWithAnswers(1, 1, {"\r"}), 3u);
  EXPECT_GT(host_.Extension().GetParameterCount(), 0u);
}

}  // namespace
}  // namespace vq::test
