// The vocabulary of the module's window seam: message parameters, message
// numbers, styles and notification codes, all with the numbers the Windows
// user interface gives them, so that the dialog and control logic reads the
// same on every platform.
#pragma once

#include <cstdint>

namespace vq {

// Dialog results and the identifiers of the standard buttons.
constexpr std::int32_t IDOK = 1;
constexpr std::int32_t IDCANCEL = 2;

namespace ui {

using UINT = std::uint32_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

constexpr WPARAM MakeWParam(std::uint32_t low, std::uint32_t high) {
  return static_cast<WPARAM>((low & 0xFFFFu) | ((high & 0xFFFFu) << 16));
}
constexpr std::uint32_t LowWord(WPARAM value) {
  return static_cast<std::uint32_t>(value & 0xFFFFu);
}
constexpr std::uint32_t HighWord(WPARAM value) {
  return static_cast<std::uint32_t>((value >> 16) & 0xFFFFu);
}

// Window messages.
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_SETCURSOR = 0x0020;
constexpr UINT WM_DRAWITEM = 0x002B;
constexpr UINT WM_SETFONT = 0x0030;
constexpr UINT WM_GETFONT = 0x0031;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_INITDIALOG = 0x0110;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
constexpr UINT WM_MOUSELEAVE = 0x02A3;

// Button messages, states and notifications.
constexpr UINT BM_GETCHECK = 0x00F0;
constexpr UINT BM_SETCHECK = 0x00F1;
constexpr UINT BM_CLICK = 0x00F5;
constexpr WPARAM BST_UNCHECKED = 0;
constexpr WPARAM BST_CHECKED = 1;
constexpr UINT BN_CLICKED = 0;

// Mouse and key parameters.
constexpr WPARAM MK_LBUTTON = 0x0001;
constexpr WPARAM VK_SPACE = 0x20;

// Window styles.
constexpr std::uint32_t WS_CHILD = 0x40000000;
constexpr std::uint32_t WS_VISIBLE = 0x10000000;
constexpr std::uint32_t WS_TABSTOP = 0x00010000;

// Button styles: the low four bits give the kind of button.
constexpr std::uint32_t BS_TYPEMASK = 0x0000000F;
constexpr std::uint32_t BS_PUSHBUTTON = 0x0;
constexpr std::uint32_t BS_DEFPUSHBUTTON = 0x1;
constexpr std::uint32_t BS_CHECKBOX = 0x2;
constexpr std::uint32_t BS_AUTOCHECKBOX = 0x3;
constexpr std::uint32_t BS_OWNERDRAW = 0xB;

// Owner-draw item parts.
constexpr UINT ODT_BUTTON = 4;
constexpr UINT ODA_DRAWENTIRE = 0x0001;
constexpr UINT ODS_DISABLED = 0x0004;
constexpr UINT ODS_FOCUS = 0x0010;

// Mouse-leave tracking.
constexpr std::uint32_t TME_LEAVE = 0x00000002;
constexpr std::uint32_t HOVER_DEFAULT = 0xFFFFFFFF;

}  // namespace ui
}  // namespace vq
