// WBCursor: the busy cursor set and restored, at once or by its worker after a
// delay with the window subclassed, the exclusive flag, and the terminal
// pointer it shows: xterm's pointer-shape sequence on a real pseudo-terminal,
// nothing without a terminal.
#include <gtest/gtest.h>

#include "support/PtyScreen.h"
#include "ui/WBCursor.h"

namespace vq {
namespace {

const std::string kBusyShape = "\x1b]22;watch\x1b\\";
const std::string kTerminalShape = "\x1b]22;\x1b\\";
const char* const kMarker = "<marker>";

class CursorOnPty : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(pty.Open());
    dialogSetting.emplace("VQ_DIALOG", "tty:" + pty.SlavePath());
  }
  std::string Written() { return test::ReadUpToMarker(pty, kMarker); }

  platform::PseudoTerminal pty;
  std::optional<test::ScopedEnv> dialogSetting;
};

struct ImmediateCase {
  const char* name;
  ui::CursorName cursor;
  bool loads;  // whether the system has that cursor
};

TEST_F(CursorOnPty, WithoutWindowSetsAtOnceAndRestores) {
  const ImmediateCase cases[] = {
      {"wait cursor", ui::kWaitCursor, true},
      {"resource name the module lacks", ui::CursorName("NoSuchCursor"), false}};
  for (const ImmediateCase& c : cases) {
    SCOPED_TRACE(c.name);
    const ui::HCURSOR before = ui::GetCursor();
    {
      WBCursor busy(c.cursor, 0, nullptr, 0);
      EXPECT_TRUE(busy.IsActive());
      EXPECT_EQ(ui::GetCursor(), c.loads ? ui::LoadCursor(c.cursor) : nullptr);
      EXPECT_EQ(WBCursor::busyCursor.load(), ui::GetCursor());
      // A null cursor cannot hide a terminal's pointer: nothing is sent for it.
      EXPECT_EQ(Written(), c.loads ? kBusyShape : "");
    }
    EXPECT_EQ(ui::GetCursor(), before);
    EXPECT_EQ(WBCursor::busyCursor.load(), nullptr);
    EXPECT_EQ(WBCursor::exclusive.load(), 0u);
    EXPECT_EQ(Written(), kTerminalShape);
  }
}

TEST_F(CursorOnPty, WithWindowWorkerSubclassesAfterTheDelayUntilDestroyed) {
  ui::Window window;
  window.Create("static", "", 0, ui::Rect{0, 0, 10, 10}, nullptr, 7);
  const ui::WindowProcedure original = window.GetWindowProcedure();
  {
    WBCursor busy(ui::kWaitCursor, 500, &window, 0);
    // The marker goes out right after construction; the worker's change
    // arrives after it.
    const std::string early = test::ReadUpToMarker(pty, kMarker);
    EXPECT_EQ(early, "");
    EXPECT_EQ(test::ReadUntil(pty, kBusyShape), kBusyShape);
    EXPECT_EQ(ui::GetCursor(), ui::LoadCursor(ui::kWaitCursor));
    EXPECT_NE(window.GetWindowProcedure(), original);

    EXPECT_EQ(window.SendMessage(ui::WM_SETCURSOR, 0, 0), 1);
    EXPECT_EQ(Written(), kBusyShape);
    // Other messages still reach the window's own procedure.
    const ui::Font font{};
    window.SendMessage(ui::WM_SETFONT, reinterpret_cast<ui::WPARAM>(&font), 0);
    EXPECT_EQ(window.GetFont(), &font);
  }
  EXPECT_EQ(window.GetWindowProcedure(), original);
  EXPECT_EQ(window.SendMessage(ui::WM_SETCURSOR, 0, 0), 0);
  EXPECT_EQ(Written(), kTerminalShape);
}

TEST_F(CursorOnPty, DestructionCancelsAWorkerStillWaiting) {
  ui::Window window;
  const ui::WindowProcedure original = window.GetWindowProcedure();
  { WBCursor busy(ui::kWaitCursor, 600000, &window, 0); }
  EXPECT_EQ(window.GetWindowProcedure(), original);
  // Only the restoration: the pending change never happens.
  EXPECT_EQ(Written(), kTerminalShape);
}

TEST_F(CursorOnPty, ExclusiveObjectMakesLaterOnesInactiveUntilDestroyed) {
  auto first = std::make_unique<WBCursor>(ui::kWaitCursor, 0, nullptr, 1);
  const ui::HCURSOR busyCursor = ui::LoadCursor(ui::kWaitCursor);
  EXPECT_EQ(WBCursor::exclusive.load(), 1u);
  for (int i = 0; i < 2; ++i) {
    WBCursor inactive(ui::IDC_IBEAM, 0, nullptr, 0);
    EXPECT_FALSE(inactive.IsActive());
    EXPECT_EQ(ui::GetCursor(), busyCursor);
  }
  // Destroying the inactive objects kept the exclusive one's hold.
  EXPECT_EQ(WBCursor::exclusive.load(), 1u);
  EXPECT_EQ(WBCursor::busyCursor.load(), busyCursor);
  EXPECT_EQ(Written(), kBusyShape);
  first.reset();
  EXPECT_EQ(WBCursor::exclusive.load(), 0u);
  WBCursor later(ui::IDC_IBEAM, 0, nullptr, 0);
  EXPECT_TRUE(later.IsActive());
  EXPECT_EQ(Written(), kTerminalShape + "\x1b]22;xterm\x1b\\");
}

// Without VQ_DIALOG the pointer goes to the controlling terminal, in a child
// process that has the pseudo-terminal as its controlling terminal or none.
TEST(CursorControllingTerminal, PointerOnlyOnAControllingTerminal) {
  struct Case {
    const char* name;
    bool controlling;
    const char* dialogSetting;  // null: unset
    std::string expected;
  };
  const Case cases[] = {{"controlling terminal", true, nullptr, kBusyShape + kTerminalShape},
                        {"no terminal", false, nullptr, ""},
                        {"VQ_DIALOG=none shows no pointer", true, "none", ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    platform::PseudoTerminal pty;
    ASSERT_TRUE(pty.Open());
    auto body = [&c] {
      if (c.dialogSetting != nullptr) {
        platform::SetEnv("VQ_DIALOG", c.dialogSetting);
      } else {
        platform::UnsetEnv("VQ_DIALOG");
      }
      { WBCursor busy(ui::kWaitCursor, 0, nullptr, 0); }
      return 0;
    };
    const int exitCode = test::RunInChildSession(c.controlling ? pty.SlavePath() : "",
                                                 pty.SlavePath(), pty.SlavePath(), body);
    EXPECT_EQ(exitCode, 0);
    // Standard output and error share the terminal: no text went anywhere.
    EXPECT_EQ(test::ReadUpToMarker(pty, kMarker), c.expected);
  }
}

}  // namespace
}  // namespace vq
