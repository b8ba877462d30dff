// The system button of the window seam: push buttons and check boxes. A press
// and release of the left button (or of the space bar) notifies the parent with
// WM_COMMAND / BN_CLICKED; an automatic check box toggles its own state on the
// release. An owner-drawn button keeps no check state and draws through
// DrawItem.
#pragma once

#include "ui/Window.h"

namespace vq::ui {

struct DrawItemStruct {
  UINT ctlType;
  UINT ctlId;
  UINT itemId;
  UINT itemAction;
  UINT itemState;
  Window* item;
  DeviceContext* dc;
  Rect rcItem;
};

class Button : public Window {
 public:
  std::uint32_t ButtonType() const { return GetStyle() & BS_TYPEMASK; }
  bool IsCheckBox() const;

  // Paints the button into `dc` over its client rectangle: an owner-drawn
  // button through DrawItem, with the item state of its focus and enabling.
  void Paint(DeviceContext& dc);

  // Owner drawing; the system button draws nothing.
  virtual void DrawItem(const DrawItemStruct& drawItem);

 protected:
  LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Release();

  bool pressed_ = false;
  WPARAM systemCheck_ = BST_UNCHECKED;
};

}  // namespace vq::ui
