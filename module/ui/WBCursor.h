// WBCursor: a busy cursor for the lifetime of one object. Construction shows a
// system cursor, destruction brings back the cursor that was current. Without
// a window the cursor changes at once; with a window a worker thread changes it
// after a delay and subclasses the window so that it keeps answering
// WM_SETCURSOR with the busy cursor until the object is destroyed.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "ui/Cursor.h"
#include "ui/Window.h"

namespace vq {

class WBCursor {
 public:
  WBCursor(ui::CursorName cursorName, std::uint32_t delayMs, ui::Window* window,
           std::uint32_t exclusive);
  virtual ~WBCursor();
  WBCursor(const WBCursor&) = delete;
  WBCursor& operator=(const WBCursor&) = delete;

  // False for an object constructed while an exclusive one was alive.
  bool IsActive() const { return active_; }

  // The procedure installed on the window.
  static ui::LRESULT CursorWindowProc(ui::Window* window, ui::UINT message, ui::WPARAM wParam,
                                      ui::LPARAM lParam);

  // Class-wide, one each per process: the busy cursor of the most recent active
  // object, the window procedure the subclassing replaced, and whether further
  // objects are inactive.
  static std::atomic<ui::HCURSOR> busyCursor;
  static std::atomic<ui::WindowProcedure> previousWindowProc;
  static std::atomic<std::uint32_t> exclusive;

 private:
  void Worker();
  void StopWorker();

  std::uint32_t delayMs = 0;
  ui::ThreadId windowThreadId = 0;
  ui::HCURSOR previousCursor = nullptr;
  std::thread workerThread;
  ui::Window* window = nullptr;

  bool active_ = false;
  // Lets the destructor cancel a worker that is still waiting out the delay.
  std::mutex workerMutex_;
  std::condition_variable workerWake_;
  bool cancelled_ = false;
};

}  // namespace vq
