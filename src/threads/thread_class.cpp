#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/core/throw.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/threads/thread_class.h>

#include "diagnostics/thread_walk.h"
#include "faults/stack_guarantee.h"
#include "threads/alertable_wait.h"

#include <windows.h>

namespace {

constexpr int kIdle = 0;
constexpr int kRunning = 1;
constexpr int kInterrupted = 2;

constexpr unsigned int kDestructionWaitMs = 1000;
constexpr unsigned int kStackFrames = 64;

}  // namespace

TThreadClass::TThreadClass() noexcept : TThread(DoNotInitialize), thread_state(kIdle) {}

// A derived class stops its thread in its own destructor; this bound is the
// last resort for one that did not.
TThreadClass::~TThreadClass() noexcept(false) {
  if (!IsValidHandle() || IsOwnThread()) return;
  if (!WaitOutlastingCalls(*this, kDestructionWaitMs)) Terminate();
}

// Termination is asynchronous: the handle is kept until the thread is gone.
// A terminated body ran no epilogue of its own, so its state is reset here.
void TThreadClass::Terminate() {
  TThread::TerminateThread(0);
  ::WaitForSingleObject(handle, kDestructionWaitMs);
  thread_state = kIdle;
}

bool TThreadClass::IsOwnThread() const noexcept {
  return IsValidHandle() && GetThreadId(handle) == GetCurrentThreadId();
}

void TThreadClass::StartThread() {
  if (IsValidHandle() && WaitForSingleObject(0, FALSE) == WAIT_TIMEOUT)
    throw EGeneric({"Text", "Thread is already running"});
  CloseIfValid();
  CreateThread(&TThreadClass::StaticThreadEntry, this, 0);
}

void TThreadClass::StopThread(unsigned int timeout) {
  if (!IsValidHandle() || IsOwnThread()) return;
  if (!WaitOutlastingCalls(*this, timeout)) Terminate();
}

unsigned long TThreadClass::SuspendThread() { return TThread::SuspendThread(); }

unsigned long TThreadClass::ResumeThread() { return TThread::ResumeThread(); }

void TThreadClass::SetThreadPriority(int priority) { TThread::SetThreadPriority(priority); }

void TThreadClass::InterruptThread(unsigned int wait_ms, unsigned int stop_timeout) {
  if (IsValidHandle() && !IsOwnThread() && WaitOutlastingCalls(*this, wait_ms)) return;
  RequestInterrupt();
  StopThread(stop_timeout);
}

// The exchange decides the race with a body that is just starting: either
// the body sees 2 and never runs, or this sees 1 and the call is queued.
// A thread that ends before the call is queued has nothing left to
// interrupt.
void TThreadClass::RequestInterrupt() {
  int found = kIdle;
  if (thread_state.compare_exchange_strong(found, kInterrupted) || found != kRunning) return;
  const auto routine = static_cast<void (*)(unsigned long long)>(&TThreadClass::ThrowEThreadInterrupt);
  if (!::QueueUserAPC(reinterpret_cast<PAPCFUNC>(routine), handle, reinterpret_cast<ULONG_PTR>(this))) {
    const DWORD error = GetLastError();
    if (WaitForSingleObject(0, FALSE) != WAIT_OBJECT_0) ThrowSystemException(error);
  }
}

void TThreadClass::ThrowEThreadInterrupt(unsigned long long object) {
  reinterpret_cast<TThreadClass*>(object)->ThrowEThreadInterrupt();
}

// Runs on the thread itself, inside one of its alertable waits.
void TThreadClass::ThrowEThreadInterrupt() {
  int found = kIdle;
  if (thread_state.compare_exchange_strong(found, kInterrupted) || found == kInterrupted) return;
  throw EThreadInterrupt();
}

// The stack is walked while the thread stands still, holding none of the
// locks the walk needs (thread_walk.h); its names are looked up after it
// runs again.
std::string TThreadClass::GetCurrentStack() {
  if (IsOwnThread()) return std::string();
  unsigned long long frames[kStackFrames];
  const unsigned int count = walk_thread(handle, frames, kStackFrames, suspended_thread::skip);
  return count == 0 ? std::string() : SymGetStackTrace(frames, count);
}

void TThreadClass::OnException() {}

unsigned int TThreadClass::StaticThreadEntry(void* object) {
  try {
    redirect_structured_exceptions translator;
    GuaranteeStackForOverflow();
    static_cast<TThreadClass*>(object)->DynamicThreadEntry();
  } catch (...) {
    // Nothing leaves a library thread; the body's own errors are logged.
  }
  return 0;
}

void TThreadClass::DynamicThreadEntry() {
  int found = kIdle;
  if (!thread_state.compare_exchange_strong(found, kRunning)) return;  // interrupted before it ran
  const auto finished = [this] {
    int running = kRunning;
    thread_state.compare_exchange_strong(running, kIdle);
  };
  try {
    Execute();
    finished();
    return;
  } catch (const EThreadInterrupt&) {
    finished();
    return;
  } catch (const std::exception& e) {
    finished();
    LogRunaway(&e);
  } catch (...) {
    finished();
    LogRunaway(nullptr);
  }
  try {
    OnException();
  } catch (...) {
  }
}

// Logging must not fail the thread a second time: a writer that throws
// loses the line.
void TThreadClass::LogRunaway(const std::exception* e) noexcept {
  try {
    if (e != nullptr)
      TDebugStreamSession(Debug) << "(!) Thread runaway with exception " << *e << '\n';
    else
      TDebugStreamSession(Debug) << "(!) Thread runaway with unknown exception\n";
  } catch (...) {
  }
}
