// The window of the module's window seam. A Window is both the system's window
// (identifier, text, style, rectangle, parent, owning thread, window
// procedure) and the framework object bound to it: messages go through the
// window procedure, whose standard form calls WindowProc, which offers each
// message to the class's message map (OnMessage) and otherwise to the window
// class's own behaviour (DefWindowProc). Replacing the window procedure
// subclasses the window, as the busy cursor does.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "ui/Canvas.h"
#include "ui/UiTypes.h"

namespace vq::ui {

class Window;

using WindowProcedure = LRESULT (*)(Window* window, UINT message, WPARAM wParam, LPARAM lParam);
// Identifier of a thread, as GetWindowThreadProcessId gives it.
using ThreadId = std::uint32_t;

// The calling thread's identifier: distinct for every thread of the process.
ThreadId CurrentThreadId();

class Window {
 public:
  Window();
  virtual ~Window();
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  // Makes this object a window of the given class with its attributes; the
  // calling thread owns it. Sets no window procedure other than the standard.
  void Create(const std::string& className, const std::string& text, std::uint32_t style,
              const Rect& rect, Window* parent, std::uint32_t id);

  // Delivers a message through the current window procedure.
  LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

  WindowProcedure GetWindowProcedure() const { return procedure_.load(); }
  // Installs a window procedure; returns the one it replaced.
  WindowProcedure SetWindowProcedure(WindowProcedure procedure);
  // The procedure every window starts with: calls the object's WindowProc.
  static LRESULT StandardProcedure(Window* window, UINT message, WPARAM wParam, LPARAM lParam);

  // Message map first, then the window class's behaviour.
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);

  // Called when the framework binds this object to its control (subclassing).
  virtual void PreSubclassWindow() {}

  const std::string& ClassName() const { return className_; }
  std::uint32_t GetDlgCtrlID() const { return id_; }
  const std::string& GetWindowText() const { return text_; }
  void SetWindowText(const std::string& text) { text_ = text; }
  std::uint32_t GetStyle() const { return style_; }
  void ModifyStyle(std::uint32_t remove, std::uint32_t add) { style_ = (style_ & ~remove) | add; }
  Window* GetParent() const { return parent_; }
  ThreadId OwnerThread() const { return ownerThread_; }
  // The window's rectangle (in its parent) and its client rectangle at (0, 0).
  const Rect& WindowRect() const { return rect_; }
  Rect GetClientRect() const { return Rect{0, 0, rect_.Width(), rect_.Height()}; }

  bool IsWindowEnabled() const { return enabled_; }
  void EnableWindow(bool enable) { enabled_ = enable; }
  bool HasFocus() const { return focus_; }
  void SetFocus(bool focus) { focus_ = focus; }

  // A request to redraw the whole window, with or without erasing.
  void Invalidate(bool erase = true);
  std::uint32_t InvalidationCount() const { return invalidations_; }
  bool LastInvalidationErased() const { return lastErase_; }

  // The font given with WM_SETFONT; null when none.
  const Font* GetFont() const { return font_; }

  // Whether a mouse-leave notification was requested and not yet delivered;
  // whoever delivers WM_MOUSELEAVE ends the request with TrackLeave(false).
  bool IsTrackingLeave() const { return trackingLeave_; }
  void TrackLeave(bool track) { trackingLeave_ = track; }

 protected:
  // The class's message map: true when it handled the message, with *result.
  virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
  // The window class's own behaviour for messages the map left alone.
  virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  std::atomic<WindowProcedure> procedure_;
  std::string className_;
  std::string text_;
  std::uint32_t style_ = 0;
  Rect rect_;
  Window* parent_ = nullptr;
  std::uint32_t id_ = 0;
  ThreadId ownerThread_;
  bool enabled_ = true;
  bool focus_ = false;
  bool trackingLeave_ = false;
  bool lastErase_ = false;
  std::uint32_t invalidations_ = 0;
  const Font* font_ = nullptr;
};

// Calls a window procedure (the previous one of a subclassed window) with the
// message unchanged; a null procedure gives the window's standard behaviour.
LRESULT CallWindowProc(WindowProcedure procedure, Window* window, UINT message, WPARAM wParam,
                       LPARAM lParam);

// The thread that owns the window; 0 for no window.
ThreadId GetWindowThreadProcessId(const Window* window);

struct TrackMouseEventRequest {
  std::uint32_t size;
  std::uint32_t flags;
  Window* window;
  std::uint32_t hoverTime;
};

// Asks for WM_MOUSELEAVE when the pointer leaves the window (TME_LEAVE): the
// presenter that moves the pointer delivers it. False for a request without a
// window or without TME_LEAVE.
bool TrackMouseEvent(const TrackMouseEventRequest& request);

}  // namespace vq::ui
