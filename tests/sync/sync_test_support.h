// Helpers shared by the tests of the locks and kernel objects.
#pragma once

#include <qz/errors/exceptions.h>

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

namespace sync_test {

// A thread of the system running `body`, with a real handle that user
// procedure calls can be queued to. An exception escaping `body` is kept as
// text. The destructor waits for the thread with a bound.
class WorkerThread {
 public:
  explicit WorkerThread(std::function<void()> body) : body_(std::move(body)) {
    handle_ = CreateThread(nullptr, 0, &WorkerThread::Run, this, 0, nullptr);
  }
  ~WorkerThread() {
    Join(30000);
    CloseHandle(handle_);
  }
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  HANDLE handle() const { return handle_; }
  // Whether the thread ended within `ms`.
  bool Join(DWORD ms) const { return WaitForSingleObject(handle_, ms) == WAIT_OBJECT_0; }
  const std::string& error() const { return error_; }

 private:
  static DWORD WINAPI Run(void* self) {
    auto* worker = static_cast<WorkerThread*>(self);
    try {
      worker->body_();
    } catch (const std::exception& e) {
      worker->error_ = e.what();
    } catch (...) {
      worker->error_ = "unknown exception";
    }
    return 0;
  }

  std::function<void()> body_;
  std::string error_;
  HANDLE handle_;
};

// Sets the std::atomic<bool> whose address it gets; for QueueUserAPC.
inline void CALLBACK MarkRan(ULONG_PTR flag) {
  reinterpret_cast<std::atomic<bool>*>(flag)->store(true);
}

// Polls `condition` for at most `ms`.
inline bool Eventually(const std::function<bool()>& condition, DWORD ms = 10000) {
  const DWORD start = GetTickCount();
  while (!condition()) {
    if (GetTickCount() - start > ms) return false;
    Sleep(1);
  }
  return true;
}

// The "Code" an ESystemException carries.
inline int CodeOf(const ESystemException& e) { return static_cast<int>(e.get_value("Code")); }

// A name for a kernel object that no other test run uses.
inline std::wstring UniqueName(const wchar_t* stem) {
  static int serial = 0;
  return std::wstring(L"qz-sync-test-") + stem + L"-" + std::to_wstring(GetCurrentProcessId()) +
         L"-" + std::to_wstring(++serial);
}

}  // namespace sync_test
