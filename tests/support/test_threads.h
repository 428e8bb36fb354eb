// Threads for tests. Every wait for them is bounded: a thread that hangs
// fails its test instead of hanging the suite.
//
//   WorkerThread  runs one body and ends; for "a thread that does X, then
//                 is gone" (an abandoned mutex, an interrupted wait)
//   Actor         runs one step at a time on request; for tests that say
//                 which thread takes which hold, in which order
//
// Both are system threads with real handles, so user procedure calls can be
// queued to them.
#pragma once

#include <qz/errors/exceptions.h>

#include <windows.h>

#include <atomic>
#include <exception>
#include <functional>
#include <string>

namespace qz_test {

// Polls `condition` for at most `ms`.
inline bool Eventually(const std::function<bool()>& condition, DWORD ms = 10000) {
  const DWORD start = GetTickCount();
  while (!condition()) {
    if (GetTickCount() - start > ms) return false;
    Sleep(1);
  }
  return true;
}

// Sets the std::atomic<bool> whose address it gets; for QueueUserAPC.
inline void CALLBACK MarkRan(ULONG_PTR flag) { reinterpret_cast<std::atomic<bool>*>(flag)->store(true); }

// Queued to a thread, throws the interruption inside its alertable wait.
inline void CALLBACK ThrowInterrupt(ULONG_PTR) { throw EThreadInterrupt(); }

// Runs `body` once. An exception escaping it is kept as text. The
// destructor waits for the thread with a bound.
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

// Runs the steps a test hands it, one at a time, until it is destroyed.
class Actor {
 public:
  Actor() {
    work_ready_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    work_done_ = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    thread_ = CreateThread(nullptr, 0, &Actor::Loop, this, 0, &id_);
  }
  ~Actor() {
    if (Finished(10000)) {
      quit_ = true;
      SetEvent(work_ready_);
    }
    if (WaitForSingleObject(thread_, 10000) != WAIT_OBJECT_0) TerminateThread(thread_, 1);
    CloseHandle(thread_);
    CloseHandle(work_ready_);
    CloseHandle(work_done_);
  }
  Actor(const Actor&) = delete;
  Actor& operator=(const Actor&) = delete;

  DWORD id() const { return id_; }
  HANDLE handle() const { return thread_; }

  // Starts `step` on the actor; the previous step must have finished.
  void Start(std::function<void()> step) {
    step_ = std::move(step);
    error_ = nullptr;
    ResetEvent(work_done_);
    SetEvent(work_ready_);
  }
  // Whether the current step has finished within `ms`.
  bool Finished(DWORD ms = 10000) const { return WaitForSingleObject(work_done_, ms) == WAIT_OBJECT_0; }
  // Runs `step` on the actor and waits (bounded) for it; false if it did
  // not finish. An exception the step threw is thrown here.
  bool Run(std::function<void()> step) {
    Start(std::move(step));
    if (!Finished()) return false;
    Rethrow();
    return true;
  }
  // Throws what the finished step threw, if anything.
  void Rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  static DWORD WINAPI Loop(void* self) {
    auto* actor = static_cast<Actor*>(self);
    for (;;) {
      WaitForSingleObject(actor->work_ready_, INFINITE);
      if (actor->quit_) return 0;
      try {
        actor->step_();
      } catch (...) {
        actor->error_ = std::current_exception();
      }
      SetEvent(actor->work_done_);
    }
  }

  std::function<void()> step_;
  std::exception_ptr error_;
  std::atomic<bool> quit_{false};
  HANDLE work_ready_;
  HANDLE work_done_;
  HANDLE thread_;
  DWORD id_ = 0;
};

}  // namespace qz_test
