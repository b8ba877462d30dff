// WBCheckBox: its drawing checked pixel by pixel on the raster canvas, in every
// state the messages put it in, and its answers to the check-box, mouse and
// keyboard messages.
#include <gtest/gtest.h>

#include <vector>

#include "ui/WBCheckBox.h"

namespace vq {
namespace {

using ui::COLORREF;

constexpr std::uint32_t kAutoCheckBoxStyle = 0x50010003;
constexpr std::uint32_t kId = 2001;
constexpr COLORREF kBackground = ui::Rgb(1, 2, 3);
constexpr COLORREF kBlack = ui::Rgb(0, 0, 0);
const COLORREF kShadow = ui::GetSysColor(16);
const COLORREF kHoverFrame = ui::Rgb(49, 106, 197);
const COLORREF kFill = ui::GetSysColor(5);

// A dialog stand-in that counts the clicks its control reports.
class ClickCounter : public ui::Window {
 public:
  int clicks = 0;

 protected:
  bool OnMessage(ui::UINT message, ui::WPARAM wParam, ui::LPARAM, ui::LRESULT* result) override {
    if (message != ui::WM_COMMAND) return false;
    if (ui::LowWord(wParam) == kId && ui::HighWord(wParam) == ui::BN_CLICKED) ++clicks;
    *result = 0;
    return true;
  }
};

struct BoundCheckBox {
  ClickCounter dialog;
  WBCheckBox box;

  explicit BoundCheckBox(int height = 20) {
    box.Create("button", "Show it", kAutoCheckBoxStyle, ui::Rect{5, 7, 125, 7 + height}, &dialog,
               kId);
    box.PreSubclassWindow();
  }
  ui::LRESULT Send(ui::UINT message, ui::WPARAM wParam = 0) {
    return box.SendMessage(message, wParam, 0);
  }
};

// What the box should look like: the frame from `boxTop` to `boxTop` + 10 in
// columns 0 to 10, filled inside, and the tick strokes when one is drawn.
COLORREF ExpectedPixel(int x, int y, int boxTop, COLORREF frame, const COLORREF* tick) {
  static const int kTickRows[] = {4, 5, 6, 5, 4, 3, 2};
  const int boxBottom = boxTop + 10;
  if (tick != nullptr && x >= 2 && x <= 8 && y >= boxTop + kTickRows[x - 2] &&
      y < boxTop + kTickRows[x - 2] + 3) {
    return *tick;
  }
  const bool onFrame = ((x == 0 || x == 10) && y >= boxTop && y <= boxBottom) ||
                       ((y == boxTop || y == boxBottom) && x >= 0 && x <= 10);
  if (onFrame) return frame;
  if (x > 0 && x < 10 && y > boxTop && y < boxBottom) return kFill;
  return kBackground;
}

struct Message {
  ui::UINT message;
  ui::WPARAM wParam;
};

const Message kOver{ui::WM_MOUSEMOVE, 0};
const Message kLeave{ui::WM_MOUSELEAVE, 0};
Message Check(ui::WPARAM state) { return {ui::BM_SETCHECK, state}; }
constexpr COLORREF kNoTick = 0xFFFFFFFF;

struct DrawCase {
  const char* name;
  int height;
  std::vector<Message> messages;
  bool enabled;
  bool focus;
  int boxTop;
  COLORREF frame;
  COLORREF tick;
};

// A disabled box draws its tick in the frame's colour and its caption grey.
TEST(WBCheckBoxDrawing, PixelsByState) {
  const DrawCase cases[] = {
      {"unchecked", 20, {}, true, false, 4, kShadow, kNoTick},
      {"checked", 20, {Check(1)}, true, false, 4, kShadow, kBlack},
      {"checked, mouse over", 20, {Check(1), kOver}, true, false, 4, kHoverFrame, kBlack},
      {"mouse over, then gone", 20, {Check(1), kOver, kLeave}, true, false, 4, kShadow, kBlack},
      {"state 2 has bit 0 clear", 20, {Check(2)}, true, false, 4, kShadow, kNoTick},
      {"state 3 has bit 0 set", 20, {Check(3)}, true, false, 4, kShadow, kBlack},
      {"disabled", 20, {Check(1)}, false, false, 4, kShadow, kShadow},
      {"disabled, mouse over", 20, {Check(1), kOver}, false, false, 4, kHoverFrame, kHoverFrame},
      {"focus draws no differently", 20, {Check(1)}, true, true, 4, kShadow, kBlack},
      {"taller item moves the box", 31, {Check(1)}, true, false, 9, kShadow, kBlack},
      {"item lower than the box is clipped", 6, {Check(1)}, true, false, -3, kShadow, kBlack}};
  for (const DrawCase& c : cases) {
    SCOPED_TRACE(c.name);
    BoundCheckBox control(c.height);
    for (const Message& m : c.messages) control.Send(m.message, m.wParam);
    control.box.EnableWindow(c.enabled);
    control.box.SetFocus(c.focus);
    ui::Canvas canvas(120, c.height, kBackground);
    ui::DeviceContext dc(canvas);
    control.box.Paint(dc);

    int wrong = 0;
    for (int y = 0; y < c.height; ++y) {
      for (int x = 0; x < 120; ++x) {
        const COLORREF expected =
            ExpectedPixel(x, y, c.boxTop, c.frame, c.tick == kNoTick ? nullptr : &c.tick);
        if (canvas.Pixel(x, y) != expected && wrong++ < 5) {
          ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << std::hex << canvas.Pixel(x, y)
                        << ", expected " << expected;
        }
      }
    }
    ASSERT_EQ(dc.TextRuns().size(), 1u);
    const ui::TextRun& caption = dc.TextRuns()[0];
    EXPECT_EQ(caption.text, "Show it");
    EXPECT_EQ(std::vector<int>(
                  {caption.rect.left, caption.rect.top, caption.rect.right, caption.rect.bottom}),
              std::vector<int>({16, 0, 120, c.height}));
    EXPECT_EQ(caption.colour, ui::GetSysColor(c.enabled ? 8 : 17));  // window or grey text
    EXPECT_EQ(caption.format,
              ui::DT_SINGLELINE | ui::DT_VCENTER | ui::DT_LEFT | ui::DT_END_ELLIPSIS);
    EXPECT_EQ(caption.backgroundMode, ui::TRANSPARENT);
  }
}

struct MessageCase {
  const char* name;
  std::vector<Message> messages;
  std::uint32_t checked;
  int clicks;
};

TEST(WBCheckBoxMessages, CheckStateAndClicks) {
  const Message down{ui::WM_LBUTTONDOWN, ui::MK_LBUTTON};
  const Message up{ui::WM_LBUTTONUP, 0};
  const Message doubleClick{ui::WM_LBUTTONDBLCLK, ui::MK_LBUTTON};
  const MessageCase cases[] = {{"fresh", {}, 0, 0},
                               {"set 1", {{ui::BM_SETCHECK, 1}}, 1, 0},
                               {"set 2 is stored unchanged", {{ui::BM_SETCHECK, 2}}, 2, 0},
                               {"click after set 2 clears", {{ui::BM_SETCHECK, 2}, down, up}, 0, 1},
                               {"click checks", {down, up}, 1, 1},
                               {"click unchecks", {{ui::BM_SETCHECK, 1}, down, up}, 0, 1},
                               {"double click toggles twice", {down, up, doubleClick, up}, 0, 2},
                               {"BM_CLICK is a click", {{ui::BM_CLICK, 0}}, 1, 1},
                               {"space bar clicks without toggling",
                                {{ui::WM_KEYDOWN, ui::VK_SPACE}, {ui::WM_KEYUP, ui::VK_SPACE}},
                                0,
                                1}};
  for (const MessageCase& c : cases) {
    SCOPED_TRACE(c.name);
    BoundCheckBox control;
    for (const Message& m : c.messages) control.Send(m.message, m.wParam);
    EXPECT_EQ(control.Send(ui::BM_GETCHECK), static_cast<ui::LRESULT>(c.checked));
    EXPECT_EQ(control.box.IsChecked(), c.checked);
    EXPECT_EQ(control.dialog.clicks, c.clicks);
  }
  BoundCheckBox control;
  control.Send(ui::WM_MOUSEMOVE);
  EXPECT_TRUE(control.box.IsTrackingLeave());  // the leave that ends the hover is asked for
}

}  // namespace
}  // namespace vq
