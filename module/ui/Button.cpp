#include "ui/Button.h"

namespace vq::ui {

bool Button::IsCheckBox() const {
  const std::uint32_t type = ButtonType();
  return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX;
}

void Button::Paint(DeviceContext& dc) {
  if (ButtonType() != BS_OWNERDRAW) return;
  UINT state = 0;
  if (!IsWindowEnabled()) state |= ODS_DISABLED;
  if (HasFocus()) state |= ODS_FOCUS;
  DrawItem(DrawItemStruct{ODT_BUTTON, GetDlgCtrlID(), 0, ODA_DRAWENTIRE, state, this, &dc,
                          GetClientRect()});
}

void Button::DrawItem(const DrawItemStruct&) {}

void Button::Release() {
  if (!pressed_) return;
  pressed_ = false;
  if (ButtonType() == BS_AUTOCHECKBOX) {
    systemCheck_ = systemCheck_ == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED;
  }
  if (GetParent() != nullptr) {
    GetParent()->SendMessage(WM_COMMAND, MakeWParam(GetDlgCtrlID(), BN_CLICKED),
                             reinterpret_cast<LPARAM>(this));
  }
}

LRESULT Button::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
      pressed_ = IsWindowEnabled();
      return 0;
    case WM_LBUTTONUP:
      Release();
      return 0;
    case WM_KEYDOWN:
      if (wParam == VK_SPACE) pressed_ = IsWindowEnabled();
      return 0;
    case WM_KEYUP:
      if (wParam == VK_SPACE) Release();
      return 0;
    case BM_CLICK:
      SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, 0);
      SendMessage(WM_LBUTTONUP, 0, 0);
      return 0;
    case BM_GETCHECK:
      return IsCheckBox() ? static_cast<LRESULT>(systemCheck_) : 0;
    case BM_SETCHECK:
      if (IsCheckBox()) systemCheck_ = wParam;
      return 0;
    default:
      return Window::DefWindowProc(message, wParam, lParam);
  }
}

}  // namespace vq::ui
