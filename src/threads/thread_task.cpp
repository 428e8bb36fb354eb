#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_task.h>

#include "errors/exception_text.h"

#include <exception>
#include <typeinfo>
#include <utility>

TThreadTask::TThreadTask()
    : started_event(true, false), finished_event(true, false), exception(nullptr), runner_thread(0) {
  InitializeSRWLock(&context_lock);
}

// The events close as members, the finished one first.
TThreadTask::~TThreadTask() noexcept { delete exception; }

bool TThreadTask::IsStarted() const { return started_event.Signaled(0); }

bool TThreadTask::IsFinished() const { return finished_event.Signaled(0); }

bool TThreadTask::WaitForStart(int timeout) const { return started_event.Signaled(timeout); }

bool TThreadTask::WaitForFinish(int timeout) const { return finished_event.Signaled(timeout); }

bool TThreadTask::IsRunning() const { return IsStarted() && !IsFinished(); }

bool TThreadTask::IsException() const { return exception != nullptr; }

void TThreadTask::RethrowException() {
  if (exception != nullptr) throw EGeneric(*exception);
}

void TThreadTask::TaskStarted() { started_event.Set(); }

void TThreadTask::TaskFinished() {
  finished_event.Set();
  TakeContext();
}

SmartPtr<IThreadContext> TThreadTask::CurrentContext() const {
  AcquireSRWLockShared(&context_lock);
  SmartPtr<IThreadContext> current = context;
  ReleaseSRWLockShared(&context_lock);
  return current;
}

// Whoever takes the context first releases it; the other finds null.
SmartPtr<IThreadContext> TThreadTask::TakeContext() {
  AcquireSRWLockExclusive(&context_lock);
  SmartPtr<IThreadContext> taken = std::move(context);
  ReleaseSRWLockExclusive(&context_lock);
  return taken;
}

void TThreadTask::Suspend() {
  if (!IsRunning()) return;
  if (const SmartPtr<IThreadContext> worker = CurrentContext()) worker->Suspend();
}

void TThreadTask::Resume() {
  if (!IsRunning()) return;
  if (const SmartPtr<IThreadContext> worker = CurrentContext()) worker->Resume();
}

void TThreadTask::SetPriority(int priority) {
  if (!IsRunning()) return;
  if (const SmartPtr<IThreadContext> worker = CurrentContext()) worker->SetPriority(priority);
}

SmartPtr<IThreadContext> TThreadTask::TakeContextToInterrupt() {
  AcquireSRWLockExclusive(&context_lock);
  SmartPtr<IThreadContext> taken;
  if (runner_thread != GetCurrentThreadId()) taken = std::move(context);
  ReleaseSRWLockExclusive(&context_lock);
  return taken;
}

// Taking the context decides the race with the end of the work: whoever
// takes it first owns the worker's end. So an interruption goes only to a
// worker still inside this task, and that worker waits for it (RunOn). A
// context left behind (the task cancelled itself, or its work had not yet
// begun) is the worker's to let go.
// The worker is replaced so that the pool keeps its strength; a failure to
// start the new thread must not make the cancel fail.
void TThreadTask::Cancel() {
  if (const SmartPtr<IThreadContext> worker = TakeContextToInterrupt()) {
    worker->Interrupt();
    try {
      worker->Start();
    } catch (...) {
    }
  }
  finished_event.Set();
}

namespace {

// A Cancel took the worker while the work was ending and has sent, or is
// sending, its interruption: the procedure call that throws it runs here.
[[noreturn]] void await_interruption() {
  for (;;) SleepEx(INFINITE, TRUE);
}

}  // namespace

// A task cancelled before a worker reached it never runs its work.
void TThreadTask::RunOn(SmartPtr<IThreadContext> worker) {
  if (IsFinished()) return;
  AcquireSRWLockExclusive(&context_lock);
  context = worker;
  runner_thread = GetCurrentThreadId();
  ReleaseSRWLockExclusive(&context_lock);
  TaskStarted();
  EGeneric* kept = nullptr;
  try {
    Execute();
  } catch (const EThreadInterrupt&) {
    TaskFinished();
    throw;
  } catch (const EGeneric& e) {
    kept = new EGeneric(e);
  } catch (const std::exception& e) {
    kept = new EGeneric({"Text", exception_text(e)}, {"Type", type_name(typeid(e))});
  } catch (...) {
    kept = new EGeneric({"Text", "Unknown exception"});
  }
  delete std::exchange(exception, kept);
  const bool cancelled = !TakeContext();
  TaskFinished();
  if (cancelled) await_interruption();
}
