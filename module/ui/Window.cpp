#include "ui/Window.h"

namespace vq::ui {

ThreadId CurrentThreadId() {
  static std::atomic<ThreadId> next{1};
  thread_local const ThreadId id = next.fetch_add(1);
  return id;
}

Window::Window() : procedure_(&Window::StandardProcedure), ownerThread_(CurrentThreadId()) {}

Window::~Window() = default;

void Window::Create(const std::string& className, const std::string& text, std::uint32_t style,
                    const Rect& rect, Window* parent, std::uint32_t id) {
  className_ = className;
  text_ = text;
  style_ = style;
  rect_ = rect;
  parent_ = parent;
  id_ = id;
  ownerThread_ = CurrentThreadId();
}

LRESULT Window::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  return CallWindowProc(GetWindowProcedure(), this, message, wParam, lParam);
}

WindowProcedure Window::SetWindowProcedure(WindowProcedure procedure) {
  return procedure_.exchange(procedure != nullptr ? procedure : &Window::StandardProcedure);
}

LRESULT Window::StandardProcedure(Window* window, UINT message, WPARAM wParam, LPARAM lParam) {
  return window == nullptr ? 0 : window->WindowProc(message, wParam, lParam);
}

LRESULT Window::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  if (OnMessage(message, wParam, lParam, &result)) return result;
  return DefWindowProc(message, wParam, lParam);
}

void Window::Invalidate(bool erase) {
  ++invalidations_;
  lastErase_ = erase;
}

bool Window::OnMessage(UINT, WPARAM, LPARAM, LRESULT*) { return false; }

LRESULT Window::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SETFONT:
      font_ = reinterpret_cast<const Font*>(wParam);
      if (lParam != 0) Invalidate(true);
      return 0;
    case WM_GETFONT:
      return reinterpret_cast<LRESULT>(font_);
    default:
      return 0;
  }
}

LRESULT CallWindowProc(WindowProcedure procedure, Window* window, UINT message, WPARAM wParam,
                       LPARAM lParam) {
  if (procedure == nullptr) procedure = &Window::StandardProcedure;
  return procedure(window, message, wParam, lParam);
}

ThreadId GetWindowThreadProcessId(const Window* window) {
  return window == nullptr ? 0 : window->OwnerThread();
}

bool TrackMouseEvent(const TrackMouseEventRequest& request) {
  if (request.window == nullptr || (request.flags & TME_LEAVE) == 0) return false;
  request.window->TrackLeave(true);
  return true;
}

}  // namespace vq::ui
