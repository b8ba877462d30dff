// Opening a camera through the "Camera XML Selector": the module runs the
// dialog on a real pseudo-terminal (VQ_DIALOG=tty:<slave>), the test types the
// user's keys on the master side, and checks what reaches the host: the family
// check, a probe that fails and shows the dialog again with request 22, Load
// without a selection, Close, and the check box state sent as code 26.
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <string>
#include <vector>

#include "support/PtyScreen.h"
#include "support/TestHost.h"

namespace vq::test {
namespace {

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
    std::string screen;
    for (std::size_t showing = 0; showing < answers.size(); ++showing) {
      if (!ReadDialogScreen(pty_, screen, showing + 1)) {
        ADD_FAILURE() << "the dialog was shown " << showing << " times, expected "
                      << answers.size();
        pty_.Close();  // a hung-up terminal closes the dialog
        break;
      }
      EXPECT_TRUE(pty_.Write(answers[showing].data(), answers[showing].size()));
    }
    if (open.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
      ADD_FAILURE() << "the open did not end";
      pty_.Close();
    }
    open.get();
    screen += ReadUntil(pty_, "\x1b[?1049l", 500);
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
