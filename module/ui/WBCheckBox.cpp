#include "ui/WBCheckBox.h"

namespace vq {

namespace {

constexpr int kBoxRight = 10;
constexpr int kCaptionLeft = kBoxRight + 6;
// The tick: one vertical stroke of three pixels per column 2 to 8, each
// starting this far below the box's top.
constexpr int kTickFirstColumn = 2;
constexpr int kTickStrokeStarts[] = {4, 5, 6, 5, 4, 3, 2};
constexpr int kTickStrokeLength = 3;

}  // namespace

void WBCheckBox::PreSubclassWindow() {
  ModifyStyle(0, ui::WS_CHILD | ui::BS_OWNERDRAW);
  ui::Button::PreSubclassWindow();
}

ui::LRESULT WBCheckBox::WindowProc(ui::UINT message, ui::WPARAM wParam, ui::LPARAM lParam) {
  if (message == ui::WM_LBUTTONDOWN || message == ui::WM_LBUTTONDBLCLK) {
    const ui::LRESULT state = SendMessage(ui::BM_GETCHECK, 0, 0);
    SendMessage(ui::BM_SETCHECK, state == 0 ? ui::BST_CHECKED : ui::BST_UNCHECKED, 0);
    Invalidate(true);
    return ui::Button::WindowProc(ui::WM_LBUTTONDOWN, wParam, lParam);
  }
  return ui::Button::WindowProc(message, wParam, lParam);
}

bool WBCheckBox::OnMessage(ui::UINT message, ui::WPARAM wParam, ui::LPARAM lParam,
                           ui::LRESULT* result) {
  switch (message) {
    case ui::BM_GETCHECK:
      *result = static_cast<ui::LRESULT>(checked);
      return true;
    case ui::BM_SETCHECK:
      checked = static_cast<std::uint32_t>(wParam);
      Invalidate(true);
      *result = 0;
      return true;
    case ui::WM_MOUSEMOVE:
      OnMouseMove();
      *result = DefWindowProc(message, wParam, lParam);
      return true;
    case ui::WM_MOUSELEAVE:
      hover = 0;
      Invalidate(true);
      *result = 0;
      return true;
    default:
      return false;
  }
}

void WBCheckBox::OnMouseMove() {
  if (hover != 0) return;
  hover = 1;
  Invalidate(true);
  // The hover time means nothing for a leave-only request; the default is
  // passed.
  ui::TrackMouseEvent(ui::TrackMouseEventRequest{sizeof(ui::TrackMouseEventRequest), ui::TME_LEAVE,
                                                 this, ui::HOVER_DEFAULT});
}

void WBCheckBox::DrawItem(const ui::DrawItemStruct& drawItem) {
  ui::DeviceContext& dc = *drawItem.dc;
  const ui::Rect& item = drawItem.rcItem;
  const ui::Pen shadowPen{ui::PS_SOLID, 1, ui::GetSysColor(ui::COLOR_BTNSHADOW)};
  const ui::Pen hoverPen{ui::PS_SOLID, 1, kHoverFrameColour};
  const ui::Pen tickPen{ui::PS_SOLID, 1, ui::Rgb(0, 0, 0)};
  dc.SetBkMode(ui::TRANSPARENT);
  const ui::Pen* previousPen = dc.SelectPen(hover == 1 ? &hoverPen : &shadowPen);

  const int m = (item.bottom - item.top) / 2;
  const ui::Rect box{0, m - 6, kBoxRight, m + 4};
  dc.FillRect(box, ui::Brush{ui::GetSysColor(ui::COLOR_WINDOW)});
  dc.MoveTo(box.left, box.bottom);
  dc.LineTo(box.left, box.top);
  dc.LineTo(box.right, box.top);
  dc.LineTo(box.right, box.bottom);
  dc.LineTo(box.left, box.bottom);

  const bool enabled = IsWindowEnabled();
  if ((SendMessage(ui::BM_GETCHECK, 0, 0) & 1) != 0) {
    if (enabled) dc.SelectPen(&tickPen);
    int x = kTickFirstColumn;
    for (int start : kTickStrokeStarts) {
      dc.MoveTo(x, box.top + start);
      dc.LineTo(x, box.top + start + kTickStrokeLength);
      ++x;
    }
  }

  ui::Rect caption = item;
  caption.left = kCaptionLeft;
  dc.SetTextColor(ui::GetSysColor(enabled ? ui::COLOR_WINDOWTEXT : ui::COLOR_GRAYTEXT));
  dc.DrawText(GetWindowText(), caption,
              ui::DT_SINGLELINE | ui::DT_VCENTER | ui::DT_LEFT | ui::DT_END_ELLIPSIS);

  dc.SelectPen(previousPen);
}

}  // namespace vq
