// WBCheckBox: a check box that draws itself (a small flat box, a hand-drawn
// tick, a highlighted frame while the mouse is over it, its caption beside it)
// and keeps its check state itself, answering the standard check-box messages
// from that state. Bound to a dialog's check-box control, whose automatic
// check-box style it replaces with the owner-drawn style.
#pragma once

#include <cstdint>

#include "ui/Button.h"

namespace vq {

class WBCheckBox : public ui::Button {
 public:
  // The frame colour while the mouse is over the control.
  static constexpr ui::COLORREF kHoverFrameColour = ui::Rgb(49, 106, 197);

  void PreSubclassWindow() override;
  void DrawItem(const ui::DrawItemStruct& drawItem) override;
  // Toggles on a left-button press or double click, then hands the message on.
  ui::LRESULT WindowProc(ui::UINT message, ui::WPARAM wParam, ui::LPARAM lParam) override;

  std::uint32_t IsChecked() const { return checked; }
  std::uint32_t IsHovered() const { return hover; }

 protected:
  bool OnMessage(ui::UINT message, ui::WPARAM wParam, ui::LPARAM lParam,
                 ui::LRESULT* result) override;

 private:
  void OnMouseMove();

  std::uint32_t checked = 0;
  std::uint32_t hover = 0;
};

}  // namespace vq
