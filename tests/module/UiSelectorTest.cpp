// The "Camera XML Selector" driven by keys through a real pseudo-terminal: the
// dialog runs on its own thread with VQ_DIALOG=tty:<slave>, the test reads the
// screen and types on the master side.
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <future>
#include <sstream>
#include <vector>

#include "extension/ModuleState.h"
#include "support/PtyScreen.h"
#include "ui/UiTerminal.h"
#include "ui/VQDeviceIDSelector.h"

namespace vq {
namespace {

const std::string kDriver = "/opt/drivers#libCLProtocolGenCP.so#";
const std::string kClear = "\x1b[H\x1b[2J";
const std::string kDown = "\x1b[B";
using test::kHangUp;

struct SelectorRun {
  std::int32_t result = -100;
  std::int32_t index = -100;
  std::string selectedTemplate;
  std::string shortId;
  std::string family;
  std::uint32_t showWhenNoXml = 100;
  std::vector<std::string> firstFrame;  // its lines
  std::string output;                   // everything the dialog wrote
  bool modeRestored = false;            // the terminal's settings are back
};

GenICam::gcstring_vector ToVector(const std::vector<std::string>& texts) {
  GenICam::gcstring_vector vector;
  for (const std::string& text : texts) vector.push_back(GenICam::gcstring(text.c_str()));
  return vector;
}

// The lines of the first (or the last) screen in what the dialog wrote.
std::vector<std::string> FrameLines(const std::string& output, bool last = false) {
  std::size_t from = last ? output.rfind(kClear) : output.find(kClear);
  std::vector<std::string> lines;
  if (from == std::string::npos) return lines;
  from += kClear.size();
  const std::size_t end =
      std::min(output.find(kClear, from), output.find(test::kLeaveScreen, from));
  std::istringstream frame(output.substr(from, end - from));
  for (std::string line; std::getline(frame, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// The tree rows of a frame below its top item, without their common indent
// of six columns, joined by "|".
std::string Tree(const std::vector<std::string>& frame) {
  std::string tree;
  for (std::size_t i = 3; i < frame.size() && !frame[i].empty(); ++i) {
    tree += (tree.empty() ? "" : "|") + frame[i].substr(std::min<std::size_t>(6, frame[i].size()));
  }
  return tree;
}

// Shows the selector on a fresh pseudo-terminal of `rows` rows (0: of unknown
// size) in cooked mode, as a shell leaves it; waits for its first screen,
// types `keys` (or hangs up the terminal) and collects the outcome.
SelectorRun RunSelector(const std::vector<std::string>& templates, std::uint32_t show,
                        const std::string& keys, std::uint16_t rows = 0) {
  SelectorRun run;
  platform::PseudoTerminal pty;
  if (!pty.Open()) {
    ADD_FAILURE() << "no pseudo-terminal";
    return run;
  }
  test::ScopedEnv dialogSetting("VQ_DIALOG", "tty:" + pty.SlavePath());
  const int slave = open(pty.SlavePath().c_str(), O_RDWR | O_NOCTTY);
  termios cooked{};
  EXPECT_EQ(tcgetattr(slave, &cooked), 0);
  cooked.c_lflag |= ICANON | ECHO | ISIG;
  cooked.c_oflag |= OPOST;
  EXPECT_EQ(tcsetattr(slave, TCSANOW, &cooked), 0);
  const winsize size{rows, static_cast<std::uint16_t>(rows == 0 ? 0 : 100), 0, 0};
  EXPECT_EQ(ioctl(slave, TIOCSWINSZ, &size), 0);
  auto dialog = std::async(std::launch::async, [&] {
    ModuleStateGuard moduleState;
    VQDeviceIDSelector selector(nullptr, ToVector(templates));
    selector.showWhenNoXml = show;
    run.result = selector.DoModal();
    run.index = selector.GetSelectedIndex();
    run.selectedTemplate = selector.GetSelectedTemplate().c_str();
    run.shortId = selector.GetSelectedShortDeviceID().c_str();
    run.family = selector.GetSelectedCameraFamily().c_str();
    run.showWhenNoXml = selector.showWhenNoXml;
  });
  run.output = test::AnswerDialogs(pty, dialog, {keys});
  run.firstFrame = FrameLines(run.output);
  termios now{};
  run.modeRestored = tcgetattr(slave, &now) == 0 && now.c_lflag == cooked.c_lflag &&
                     now.c_oflag == cooked.c_oflag && now.c_iflag == cooked.c_iflag &&
                     now.c_cflag == cooked.c_cflag;
  close(slave);
  return run;
}

const std::vector<std::string> kFour = {kDriver + "KORVA#AreaScan#A2000",
                                        kDriver + "KORVA#AreaScan#A4000",
                                        kDriver + "KORVA#LineScan#L8", kDriver + "Other#Fam#M1"};
const char* const kFourTree =
    "KORVA|  AreaScan|    (1) A2000|    (2) A4000|  LineScan|    (3) L8|Other|  Fam|    (4) M1";

struct SelectorCase {
  const char* name;
  std::vector<std::string> templates;
  const char* tree;  // as the first screen shows it
  std::uint32_t show;
  std::string keys;
  std::int32_t result;
  std::int32_t index;
  const char* shortId;
  const char* family;
  std::uint32_t showAfter;
};

TEST(SelectorOnTerminal, TreeShapeKeysAndResults) {
  const std::string down3 = kDown + kDown + kDown;
  const std::string maker = "KorvaVisionSystemsG";  // 19 characters
  const std::vector<std::string> duplicates = {kDriver + "KORVA#AreaScan#A2000#1",
                                               "/other#libOther.so#KORVA#AreaScan#A2000#2"};
  const std::vector<std::string> noModel = {kDriver + "KORVA#Family"};
  const std::vector<std::string> longNames = {kDriver + maker + "mbH_AB#AreaScanFamilyNumberOne#M1",
                                              kDriver + maker + "XYZ#F2#ModelWithAVeryLongName25"};
  const char* const familyTree = "KORVA|  Family|    (1) Family";
  // clang-format off
  const SelectorCase cases[] = {
      {"shared manufacturer and family; leaf 2 and Load", kFour, kFourTree, 1, "2l", 1, 1,
       "KORVA#AreaScan#A4000", "AreaScan", 1},
      {"Enter presses Load", kFour, kFourTree, 1, "4\r", 1, 3, "Other#Fam#M1", "Fam", 1},
      {"Up from no selection takes the last item", kFour, kFourTree, 1, "\x1b[Al", 1, 3,
       "Other#Fam#M1", "Fam", 1},
      {"Load without a selection", kFour, kFourTree, 1, "l", 1, -1, "", "", 1},
      {"a family selected, then Load", kFour, kFourTree, 1, down3 + "l", 1, -1, "", "", 1},
      {"Close after a selection", kFour, kFourTree, 1, "2c", 2, -1, "", "", 1},
      {"Esc closes", kFour, kFourTree, 0, "\x1b", 2, -1, "", "", 0},
      {"end of input closes", kFour, kFourTree, 1, "\x04", 2, -1, "", "", 1},
      {"a hung-up terminal closes", kFour, kFourTree, 1, kHangUp, 2, -1, "", "", 1},
      {"check box toggled, then Close", kFour, kFourTree, 0, " c", 2, -1, "", "", 1},
      {"check box toggled twice, then Load", kFour, kFourTree, 1, "  l", 1, -1, "", "", 1},
      {"check box cleared, then Load", kFour, kFourTree, 1, "1 l", 1, 0, "KORVA#AreaScan#A2000",
       "AreaScan", 0},
      {"duplicate leaves give one leaf that picks the first", duplicates,
       "KORVA|  AreaScan|    (1) A2000", 1, "1l", 1, 0, "KORVA#AreaScan#A2000#1", "AreaScan", 1},
      {"a template without a model shows its family twice", noModel, familyTree, 1, "1l", 1, 0,
       "KORVA#Family", "Family", 1},
      {"its family item matches the leaf label too", noModel, familyTree, 1, down3 + "l", 1, 0,
       "KORVA#Family", "Family", 1},
      {"names cut to 19; equal first 19 share one manufacturer", longNames,
       "KorvaVisionSystemsG|  AreaScanFamilyNumbe|    (1) M1|  F2|    (2) ModelWithAVeryLongN",
       1, "2l", 1, 1, "KorvaVisionSystemsGXYZ#F2#ModelWithAVeryLongName25", "F2", 1},
      {"no templates: the top item only", {}, "", 1, "l", 1, -1, "", "", 1}};
  // clang-format on
  for (const SelectorCase& c : cases) {
    SCOPED_TRACE(c.name);
    const SelectorRun run = RunSelector(c.templates, c.show, c.keys);
    ASSERT_GT(run.firstFrame.size(), 2u);
    EXPECT_EQ(run.firstFrame[2], "    Please select a camera XML file");
    EXPECT_EQ(Tree(run.firstFrame), c.tree);
    EXPECT_EQ(run.result, c.result);
    EXPECT_EQ(run.index, c.index);
    EXPECT_EQ(run.selectedTemplate,
              c.index < 0 ? "" : c.templates[static_cast<std::size_t>(c.index)]);
    EXPECT_EQ(run.shortId, c.shortId);
    EXPECT_EQ(run.family, c.family);
    EXPECT_EQ(run.showWhenNoXml, c.showAfter);
    EXPECT_TRUE(run.modeRestored || c.keys == kHangUp);
  }
}

TEST(SelectorOnTerminal, ScreenLayout) {
  const SelectorRun run = RunSelector({kDriver + "KORVA#AreaScan#A2000"}, 0, " l");
  const std::vector<std::string> expected = {
      "Camera XML Selector",
      "",
      "    Please select a camera XML file",
      "      KORVA",
      "        AreaScan",
      "          (1) A2000",
      "",
      "  [ ] Show this dialog when no xml file is found for the detected camera.",
      "",
      "  [ Load ]  [ Close ]",
      "",
      "Keys: number or Up/Down select, Space check box, Enter/l Load, c/q/Esc Close"};
  EXPECT_EQ(run.firstFrame, expected);
  EXPECT_EQ(run.output.rfind("\x1b[?1049h", 0), 0u) << "alternate screen first";
  EXPECT_NE(run.output.find("  [x] Show this dialog"), std::string::npos) << "toggled state shown";
  EXPECT_EQ(run.output.size() - run.output.rfind(test::kLeaveScreen),
            std::string(test::kLeaveScreen).size());
}

// On a 12-row terminal 4 tree rows fit (8 lines are not the tree); typing 1
// then 2 selects leaf 12 and scrolls it into view.
TEST(SelectorOnTerminal, LongListsScrollAndTakeTwoDigitNumbers) {
  std::vector<std::string> templates;
  for (int model = 1; model <= 12; ++model) {
    templates.push_back(kDriver + "KORVA#Fam#M" + std::to_string(model));
  }
  const SelectorRun run = RunSelector(templates, 1, "12l", 12);
  EXPECT_EQ(Tree(run.firstFrame), "KORVA|  Fam|    (1) M1");
  const std::vector<std::string> last = FrameLines(run.output, true);
  EXPECT_EQ(std::vector<std::string>(last.begin() + 2, last.begin() + 6),
            (std::vector<std::string>{"          (9) M9", "          (10) M10",
                                      "          (11) M11", ">         (12) M12"}));
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(run.index, 11);
}

TEST(SelectorWithoutTerminal, ResourcesAndNonePresenter) {
  test::ScopedEnv dialogSetting("VQ_DIALOG", std::string("none"));
  VQDeviceIDSelector withoutModuleState(nullptr, ToVector(kFour));
  EXPECT_EQ(withoutModuleState.DoModal(), -1) << "dialog 2000 is found only in this module's state";
  ModuleStateGuard moduleState;
  VQDeviceIDSelector selector(nullptr, ToVector(kFour));
  selector.showWhenNoXml = 0;
  EXPECT_EQ(selector.DoModal(), 2);
  EXPECT_EQ(selector.showWhenNoXml, 0u);
  EXPECT_EQ(selector.GetSelectedTemplate(), GenICam::gcstring());
}

// The automatic choice, in child processes whose terminal situation differs:
// a waiting "l" is read (Load, 1) only by the terminal presenter.
TEST(SelectorWithoutTerminal, AutomaticChoiceNeedsControllingTerminalAndTerminalInput) {
  const struct {
    const char* name;
    bool controlling;
    bool terminalInput;
    int result;
  } cases[] = {{"controlling terminal and terminal input", true, true, 1},
               {"no controlling terminal", false, true, 2},
               {"input not a terminal", true, false, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    platform::PseudoTerminal pty;
    ASSERT_TRUE(pty.Open());
    ASSERT_TRUE(pty.Write("l", 1));
    const int exitCode = test::RunInChildSession(
        c.controlling ? pty.SlavePath() : "", c.terminalInput ? pty.SlavePath() : "/dev/null",
        pty.SlavePath(), [] {
          platform::UnsetEnv("VQ_DIALOG");
          ModuleStateGuard moduleState;
          VQDeviceIDSelector selector(nullptr, ToVector(kFour));
          return selector.DoModal() == 1 ? 1 : 2;
        });
    EXPECT_EQ(exitCode, c.result);
  }
}

TEST(SelectorWithoutTerminal, DialogSettingForms) {
  const struct {
    const char* value;
    ui::PresenterKind kind;
    const char* path;
  } cases[] = {{"tty", ui::PresenterKind::Terminal, ""},
               {"tty:/dev/pts/7", ui::PresenterKind::Terminal, "/dev/pts/7"},
               {"none", ui::PresenterKind::None, ""},
               {"", ui::PresenterKind::Automatic, ""},
               {"tty:", ui::PresenterKind::Automatic, ""},
               {"gtk", ui::PresenterKind::Automatic, ""}};
  for (const auto& c : cases) {
    const ui::DialogSetting setting = ui::ParseDialogSetting(c.value);
    EXPECT_EQ(setting.kind, c.kind) << c.value;
    EXPECT_EQ(setting.terminalPath, c.path) << c.value;
  }
}

}  // namespace
}  // namespace vq
