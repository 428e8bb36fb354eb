// Helpers shared by the multi-lock tests: a thread that runs steps on
// request, a lock that shows its insides, and status texts to compare with.
#pragma once

#include <qz/errors/exceptions.h>
#include <qz/sync/multi_lock.h>

#include "sync/sync_test_support.h"

#include <windows.h>

#include <atomic>
#include <exception>
#include <functional>
#include <string>

namespace multi_lock_test {

using sync_test::Eventually;
using sync_test::MarkRan;

// A thread of the system that runs one step at a time for the test, so that
// a test can say which thread takes which hold. Every wait for it is
// bounded: a step that hangs fails the test instead of hanging it.
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

// A TMultiLock that shows its owners list and events.
class ProbedLock : public TMultiLock {
 public:
  using _ml_free_signal_event::has_event;
  using _ml_free_signal_event::signalled;
  using _ml_full_owners_list::count;
  using _ml_full_owners_list::is_inline;
  using _ml_full_owners_list::room;
  int waiting_upgraders() const { return upgrade_waiters.load(); }
};

// Whether `status` lists a hold of the owner `id`.
inline bool HasOwner(const std::string& status, DWORD id) {
  const std::string owner = std::to_string(id) + ":";
  return status.find(" " + owner) != std::string::npos || status.find("," + owner) != std::string::npos;
}

// When the test ends, gives up every hold the test's own thread still has
// and every thread-independent one, so that an actor a failed check left
// waiting gets in and finishes rather than staying stuck. Declare it after
// the actors, so that it runs before they are ended.
class ReleaseOnExit {
 public:
  explicit ReleaseOnExit(TMultiLock& lock) : lock_(lock) {}
  ~ReleaseOnExit() {
    for (int i = 0; i < 100 && HasOwner(lock_.GetStatusString(), GetCurrentThreadId()); ++i) lock_.Unlock();
    for (int i = 0; i < 100 && HasOwner(lock_.GetStatusString(), 0); ++i) lock_.UnlockThreadIndependent();
  }
  ReleaseOnExit(const ReleaseOnExit&) = delete;
  ReleaseOnExit& operator=(const ReleaseOnExit&) = delete;

 private:
  TMultiLock& lock_;
};

// "1234:R" for the thread with identifier `id`.
inline std::string Read(DWORD id) { return std::to_string(id) + ":R"; }
inline std::string Write(DWORD id) { return std::to_string(id) + ":W"; }
inline DWORD Me() { return GetCurrentThreadId(); }

// Queued to a thread, throws the interruption inside its alertable wait.
inline void CALLBACK ThrowInterrupt(ULONG_PTR) { throw EThreadInterrupt(); }

}  // namespace multi_lock_test
