// Opening a camera through the "Camera XML Selector": the module runs the
// dialog on a real pseudo-terminal (VQ_DIALOG=tty:<slave>), the test types the
// user's keys on the master side, and checks what reaches the host: the family
// check, a probe that fails and shows the dialog again with request 22, Load
// without a selection, Close, and the check box state sent as code 26.
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "support/PtyScreen.h"
#include "support/TestHost.h"

namespace vq::test {
namespace {

// Leaves of the tree for the driver's templates: (1) A2040M, (2) L4096.
const char kAreaLeaf[] = "1";
const char kLineLeaf[] = "2";
const char kEnterScreen[] = "\x1b[?1049h";  // each showing of the dialog

class OpenWithSelector : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(pty_.Open());
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
      while (Count(screen, kEnterScreen) <= showing || !EndsFrame(screen)) {
        const std::string more = ReadUntil(pty_, "Keys:", 2000);
        if (more.empty() && open.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
          ADD_FAILURE() << "the dialog was shown " << showing << " times, expected "
                        << answers.size();
          return status;
        }
        screen += more;
      }
      EXPECT_TRUE(pty_.Write(answers[showing].data(), answers[showing].size()));
    }
    if (open.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
      ADD_FAILURE() << "the open did not end";
      pty_.Close();  // a hung-up terminal closes the dialog
    }
    open.get();
    screen += ReadUntil(pty_, "\x1b[?1049l", 500);
    EXPECT_EQ(Count(screen, kEnterScreen), answers.size()) << "dialog showings";
    return status;
  }

  static std::size_t Count(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
      ++count;
    }
    return count;
  }
  // The last frame is drawn up to its key help line.
  static bool EndsFrame(const std::string& screen) {
    const std::size_t keys = screen.rfind("Keys:");
    return keys != std::string::npos && keys > screen.rfind(kEnterScreen) &&
           screen.find('\n', keys) != std::string::npos;
  }

  platform::PseudoTerminal pty_;
  SimulatedLink camera_{KorvaAreaProfile()};
  TestHost host_;
};

TEST_F(OpenWithSelector, ChosenTemplateOfAnotherFamilyIsRefusedThenTheRightOneLoads) {
  ScopedEnv dialog("VQ_DIALOG", "tty:" + pty_.SlavePath());
  host_.cameraText = "A2040M";  // matches: the family AreaScan is detected
  const std::uint32_t status =
      OpenWithAnswers(1, 0, {std::string(kLineLeaf) + "\r", std::string(kAreaLeaf) + "\r"});
  EXPECT_EQ(status, 0u);
  ASSERT_EQ(host_.messages.size(), 2u);
  EXPECT_EQ(host_.messages[0].level, MESSAGE_FAILURE);
  EXPECT_EQ(host_.messages[0].text,
            "XML Camera File chosen KORVA#LineScan#L4096 does not belong to the family of cameras "
            "you are using: AreaScan");
  EXPECT_EQ(host_.messages[1].level, MESSAGE_INFORMATION);
  EXPECT_EQ(host_.messages[1].text, "XML Camera file for device: KORVA#AreaScan#A2040M is loaded");
  EXPECT_EQ(host_.selectorStates, (std::vector<std::uint32_t>{0, 0}));
  EXPECT_TRUE(host_.probeFailurePorts.empty());
  EXPECT_GT(host_.Extension().GetParameterCount(), 0u);
}

TEST_F(OpenWithSelector, FailedProbeReportsRequest22AndShowsTheDialogAgain) {
  ScopedEnv dialog("VQ_DIALOG", "tty:" + pty_.SlavePath());
  // No camera text: no family is detected, the line-scan template reaches the
  // probe, which the area-scan camera does not answer to.
  const std::uint32_t status =
      OpenWithAnswers(0, 1, {std::string(kLineLeaf) + "\r", std::string(kAreaLeaf) + "\r"});
  EXPECT_EQ(status, 0u);
  ASSERT_EQ(host_.messages.size(), 2u);
  EXPECT_EQ(host_.messages[0].level, MESSAGE_FAILURE);
  EXPECT_EQ(host_.messages[0].text,
            "The Camera do not support this the device ID: KORVA#LineScan#L4096");
  EXPECT_EQ(host_.messages[1].text, "XML Camera file for device: KORVA#AreaScan#A2040M is loaded");
  EXPECT_EQ(host_.probeFailurePorts, std::vector<std::uint32_t>{1});
  EXPECT_EQ(host_.selectorStates, (std::vector<std::uint32_t>{1, 1}));
}

TEST_F(OpenWithSelector, LoadWithoutSelectionCloseAndTheCheckBox) {
  ScopedEnv dialog("VQ_DIALOG", "tty:" + pty_.SlavePath());
  struct Step {
    const char* keys;
    std::uint32_t whenNoMatch;
    std::int32_t result;
    std::uint32_t status;
    std::uint32_t checkBox;
  };
  const Step steps[] = {
      {"\r", 1, 0, 2, 1},  // Load, nothing selected, nothing loaded yet
      {" q", 1, 1, 3, 0},  // the check box unticked, then Close
      {" \r", 0, 0, 2, 1},  // ticked; Load without a selection, still nothing loaded
  };
  for (const Step& step : steps) {
    host_.ClearRecords();
    std::int32_t result = -1;
    EXPECT_EQ(OpenWithAnswers(1, step.whenNoMatch, {step.keys}, &result), step.status)
        << step.keys;
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
