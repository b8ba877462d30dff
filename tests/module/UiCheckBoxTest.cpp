// WBCheckBox: its drawing checked pixel by pixel on the raster canvas (and the
// canvas's own edges), and its answers to the check-box, mouse and keyboard
// messages.
#include <gtest/gtest.h>

#include <utility>
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
const COLORREF kHover = ui::Rgb(49, 106, 197);
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

struct DrawCase {
  const char* name;
  int height;
  ui::WPARAM check;
  bool hover;
  bool enabled;
  bool focus;
  int boxTop;
  COLORREF frame;
  bool tick;
  COLORREF tickColour;
  int captionColourIndex;
};

TEST(WBCheckBoxDrawing, PixelsByState) {
  const DrawCase cases[] = {
      {"unchecked", 20, 0, false, true, false, 4, kShadow, false, 0, 8},
      {"checked", 20, 1, false, true, false, 4, kShadow, true, kBlack, 8},
      {"checked, mouse over", 20, 1, true, true, false, 4, kHover, true, kBlack, 8},
      {"state 2 has bit 0 clear", 20, 2, false, true, false, 4, kShadow, false, 0, 8},
      {"state 3 has bit 0 set", 20, 3, false, true, false, 4, kShadow, true, kBlack, 8},
      {"disabled: tick in frame colour", 20, 1, false, false, false, 4, kShadow, true, kShadow, 17},
      {"disabled, mouse over", 20, 1, true, false, false, 4, kHover, true, kHover, 17},
      {"focus draws no differently", 20, 1, false, true, true, 4, kShadow, true, kBlack, 8},
      {"taller item moves the box", 31, 1, false, true, false, 9, kShadow, true, kBlack, 8},
  };
  for (const DrawCase& c : cases) {
    SCOPED_TRACE(c.name);
    BoundCheckBox control(c.height);
    control.Send(ui::BM_SETCHECK, c.check);
    if (c.hover) control.Send(ui::WM_MOUSEMOVE);
    control.box.EnableWindow(c.enabled);
    control.box.SetFocus(c.focus);
    ui::Canvas canvas(120, c.height, kBackground);
    ui::DeviceContext dc(canvas);
    control.box.Paint(dc);

    int wrong = 0;
    for (int y = 0; y < c.height; ++y) {
      for (int x = 0; x < 120; ++x) {
        const COLORREF expected =
            ExpectedPixel(x, y, c.boxTop, c.frame, c.tick ? &c.tickColour : nullptr);
        if (canvas.Pixel(x, y) != expected && wrong++ < 5) {
          ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << std::hex << canvas.Pixel(x, y)
                        << ", expected " << expected;
        }
      }
    }
    ASSERT_EQ(dc.TextRuns().size(), 1u);
    const ui::TextRun& caption = dc.TextRuns()[0];
    EXPECT_EQ(caption.text, "Show it");
    EXPECT_EQ(caption.rect.left, 16);
    EXPECT_EQ(caption.rect.top, 0);
    EXPECT_EQ(caption.rect.right, 120);
    EXPECT_EQ(caption.rect.bottom, c.height);
    EXPECT_EQ(caption.colour, ui::GetSysColor(c.captionColourIndex));
    EXPECT_EQ(caption.format,
              ui::DT_SINGLELINE | ui::DT_VCENTER | ui::DT_LEFT | ui::DT_END_ELLIPSIS);
    EXPECT_EQ(caption.backgroundMode, ui::TRANSPARENT);
  }
}

struct SurfaceCase {
  const char* name;
  void (*draw)(ui::DeviceContext&);
  std::vector<std::pair<int, int>> pixels;  // every pixel drawn, row by row
};

TEST(DrawingSurface, FillsAndLinesLeaveOutTheFarEdges) {
  const SurfaceCase cases[] = {
      {"fill: left and top edges in, right and bottom out",
       [](ui::DeviceContext& dc) {
         dc.FillRect(ui::Rect{2, 3, 4, 5}, ui::Brush{kBlack});
       },
       {{2, 3}, {3, 3}, {2, 4}, {3, 4}}},
      {"horizontal line without its end point",
       [](ui::DeviceContext& dc) {
         dc.MoveTo(1, 1);
         dc.LineTo(4, 1);
       },
       {{1, 1}, {2, 1}, {3, 1}}},
      {"path of two lines",
       [](ui::DeviceContext& dc) {
         dc.MoveTo(0, 2);
         dc.LineTo(0, 0);
         dc.LineTo(2, 0);
       },
       {{0, 0}, {1, 0}, {0, 1}, {0, 2}}},
      {"diagonal",
       [](ui::DeviceContext& dc) {
         dc.MoveTo(0, 0);
         dc.LineTo(3, 3);
       },
       {{0, 0}, {1, 1}, {2, 2}}},
      {"clipped at the canvas",
       [](ui::DeviceContext& dc) {
         dc.MoveTo(-3, 4);
         dc.LineTo(2, 4);
         dc.FillRect(ui::Rect{4, 4, 9, 9}, ui::Brush{kBlack});
       },
       {{0, 4}, {1, 4}, {4, 4}}},
  };
  for (const SurfaceCase& c : cases) {
    SCOPED_TRACE(c.name);
    ui::Canvas canvas(5, 5, kBackground);
    ui::DeviceContext dc(canvas);
    c.draw(dc);
    std::vector<std::pair<int, int>> drawn;
    for (int y = 0; y < canvas.Height(); ++y) {
      for (int x = 0; x < canvas.Width(); ++x) {
        if (canvas.Pixel(x, y) != kBackground) drawn.emplace_back(x, y);
      }
    }
    EXPECT_EQ(drawn, c.pixels);
  }
}

struct Message {
  ui::UINT message;
  ui::WPARAM wParam;
};

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
  const MessageCase cases[] = {
      {"fresh", {}, 0, 0},
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
       1},
  };
  for (const MessageCase& c : cases) {
    SCOPED_TRACE(c.name);
    BoundCheckBox control;
    for (const Message& m : c.messages) control.Send(m.message, m.wParam);
    EXPECT_EQ(control.Send(ui::BM_GETCHECK), static_cast<ui::LRESULT>(c.checked));
    EXPECT_EQ(control.box.IsChecked(), c.checked);
    EXPECT_EQ(control.dialog.clicks, c.clicks);
  }
}

TEST(WBCheckBoxMessages, BindingMakesItOwnerDrawn) {
  BoundCheckBox control;
  EXPECT_EQ(control.box.GetStyle(), kAutoCheckBoxStyle | ui::WS_CHILD | ui::BS_OWNERDRAW);
}

TEST(WBCheckBoxMessages, HoverRedrawsOnceAndAsksForTheLeave) {
  BoundCheckBox control;
  const std::uint32_t before = control.box.InvalidationCount();
  control.Send(ui::WM_MOUSEMOVE);
  EXPECT_EQ(control.box.IsHovered(), 1u);
  EXPECT_TRUE(control.box.IsTrackingLeave());
  EXPECT_EQ(control.box.InvalidationCount(), before + 1);
  EXPECT_TRUE(control.box.LastInvalidationErased());

  control.box.TrackLeave(false);
  control.Send(ui::WM_MOUSEMOVE);
  EXPECT_EQ(control.box.InvalidationCount(), before + 1);
  EXPECT_FALSE(control.box.IsTrackingLeave());

  EXPECT_EQ(control.Send(ui::WM_MOUSELEAVE), 0);
  EXPECT_EQ(control.box.IsHovered(), 0u);
  EXPECT_EQ(control.box.InvalidationCount(), before + 2);
}

}  // namespace
}  // namespace vq
