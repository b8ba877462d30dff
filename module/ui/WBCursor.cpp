#include "ui/WBCursor.h"

#include <chrono>
#include <system_error>

namespace vq {

// Choices where the cursor's behaviour is left open:
// - The destructor cancels a worker still waiting out its delay and waits for
//   the worker to end before it touches anything, so a worker never uses a
//   destroyed object and a cancelled change never happens late.
// - Input attachment: the worker's attachment ends with the worker thread, as
//   it does for any thread that ends; the destructor does not attach the
//   destroying thread to the window's thread.
// - When no worker thread can be started, the window keeps its cursor and its
//   procedure: the object stays active and restores as usual.
// - An inactive object (constructed while an exclusive one was alive) leaves
//   the class-wide values alone, at construction and at destruction, so it
//   cannot end the exclusive object's hold or lose its busy cursor.

std::atomic<ui::HCURSOR> WBCursor::busyCursor{nullptr};
std::atomic<ui::WindowProcedure> WBCursor::previousWindowProc{nullptr};
std::atomic<std::uint32_t> WBCursor::exclusive{0};

WBCursor::WBCursor(ui::CursorName cursorName, std::uint32_t delay, ui::Window* cursorWindow,
                   std::uint32_t exclusiveFlag) {
  if (exclusive.load() == 1) return;
  active_ = true;
  busyCursor = nullptr;
  exclusive = exclusiveFlag;
  delayMs = delay;
  previousCursor = ui::GetCursor();
  busyCursor = ui::LoadCursor(cursorName);
  window = cursorWindow;
  if (window != nullptr) {
    windowThreadId = ui::GetWindowThreadProcessId(window);
    try {
      workerThread = std::thread(&WBCursor::Worker, this);
    } catch (const std::system_error&) {
      // No worker: nothing changes until destruction restores.
    }
  } else {
    ui::SetCursor(busyCursor.load());
  }
}

WBCursor::~WBCursor() {
  if (!active_) return;
  if (workerThread.joinable()) {
    StopWorker();
    if (window->GetWindowProcedure() == &WBCursor::CursorWindowProc &&
        previousWindowProc.load() != nullptr) {
      window->SetWindowProcedure(previousWindowProc.load());
    }
  }
  if (previousCursor != nullptr) {
    ui::SetCursor(previousCursor);
    previousCursor = nullptr;
  }
  delayMs = 0;
  windowThreadId = 0;
  window = nullptr;
  busyCursor = nullptr;
  exclusive = 0;
}

void WBCursor::StopWorker() {
  {
    std::lock_guard<std::mutex> lock(workerMutex_);
    cancelled_ = true;
  }
  workerWake_.notify_all();
  workerThread.join();
}

void WBCursor::Worker() {
  {
    std::unique_lock<std::mutex> lock(workerMutex_);
    if (workerWake_.wait_for(lock, std::chrono::milliseconds(delayMs),
                             [this] { return cancelled_; })) {
      return;
    }
  }
  if (window != nullptr) {
    const ui::WindowProcedure current = window->GetWindowProcedure();
    if (current != &WBCursor::CursorWindowProc) {
      // Kept before the swap, so a message arriving in between finds it.
      previousWindowProc = current;
      previousWindowProc = window->SetWindowProcedure(&WBCursor::CursorWindowProc);
    }
    ui::AttachThreadInput(ui::CurrentThreadId(), windowThreadId, true);
  }
  const ui::HCURSOR cursor = busyCursor.load();
  if (cursor != nullptr) ui::SetCursor(cursor);
}

ui::LRESULT WBCursor::CursorWindowProc(ui::Window* target, ui::UINT message, ui::WPARAM wParam,
                                       ui::LPARAM lParam) {
  if (message == ui::WM_SETCURSOR) {
    ui::SetCursor(busyCursor.load());
    return 1;
  }
  return ui::CallWindowProc(previousWindowProc.load(), target, message, wParam, lParam);
}

}  // namespace vq
