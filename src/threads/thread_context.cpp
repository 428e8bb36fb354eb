#include "threads/thread_context.h"

#include <qz/errors/exceptions.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/threads/thread_task.h>

#include "threads/uninterrupted.h"

#include <exception>

namespace {

// How long an interrupted worker has to end before it is terminated.
constexpr unsigned int kInterruptStopMs = 5000;

// The log line of a job that let an exception out. A line that cannot be
// written is lost; an interruption that lands in the stream's lock is kept
// for the caller.
bool LogJobFailure(const std::exception* e) {
  try {
    if (e != nullptr)
      TDebugStreamSession(Debug) << "(!) Thread pool job failed with exception " << *e << '\n';
    else
      TDebugStreamSession(Debug) << "(!) Thread pool job failed with unknown exception\n";
  } catch (const EThreadInterrupt&) {
    return true;
  } catch (...) {
  }
  return false;
}

}  // namespace

SmartPtr<IThreadContext> CreateNewThreadContext(SmartPtr<IThreadOwner> owner) {
  return new TThreadContext(owner);
}

TThreadContext::TThreadContext(SmartPtr<IThreadOwner> owner) : owner_(owner) {
  InitializeSRWLock(&owner_lock_);
  InitializeSRWLock(&start_lock_);
}

// Normally the loop has ended long before; when the last reference goes on
// the worker's own thread, the base lets the thread finish on its own.
TThreadContext::~TThreadContext() noexcept {
  try {
    StopThread(kInterruptStopMs);
  } catch (...) {
    // A counted object's release cannot fail; the base terminates it.
  }
}

SmartPtr<IThreadOwner> TThreadContext::Owner() const {
  AcquireSRWLockShared(&owner_lock_);
  SmartPtr<IThreadOwner> owner = owner_;
  ReleaseSRWLockShared(&owner_lock_);
  return owner;
}

void TThreadContext::DropOwner() {
  SmartPtr<IThreadOwner> gone;
  AcquireSRWLockExclusive(&owner_lock_);
  gone = std::move(owner_);
  ReleaseSRWLockExclusive(&owner_lock_);
}

// The thread holds its context while it runs: the owner may let go of it
// meanwhile (a Shutdown), and the last reference may then fall here, after
// the base's bookkeeping, when nothing touches the object any more.
void TThreadContext::DynamicThreadEntry() {
  const SmartPtr<IThreadContext> keep(this);
  TThreadClass::DynamicThreadEntry();
}

// An interruption ends the thread without telling the owner: the context
// stays in its pool for whoever interrupted it to restart or remove.
void TThreadContext::Execute() {
  const SmartPtr<IThreadOwner> owner = Owner();
  if (!owner) return;
  const SmartPtr<IThreadContext> self(this);
  for (;;) {
    SmartPtr<IThreadJob> job;
    try {
      job = owner->GetNextJob(self);
    } catch (const EThreadInterrupt&) {
      return;
    } catch (...) {
      run_uninterrupted([&] { owner->OnThreadExit(self); });
      DropOwner();
      throw;  // the runaway line tells why the worker ended
    }
    if (!job) {
      run_uninterrupted([&] { owner->OnThreadExit(self); });
      DropOwner();
      return;
    }
    job_pending_ = true;
    bool interrupted = RunJob(*job, self);
    job.reset();
    if (job_pending_.exchange(false)) interrupted |= run_uninterrupted([&] { owner->OnJobDone(self); });
    if (interrupted) return;
  }
}

bool TThreadContext::RunJob(IThreadJob& job, const SmartPtr<IThreadContext>& self) {
  try {
    if (auto* task = dynamic_cast<TThreadTask*>(&job))
      task->RunOn(self);
    else
      job.Execute();
  } catch (const EThreadInterrupt&) {
    return true;
  } catch (const std::exception& e) {
    return LogJobFailure(&e);
  } catch (...) {
    return LogJobFailure(nullptr);
  }
  return false;
}

// On its own thread the worker cannot wait for itself to end: a job that
// cancels its own task just goes on. A worker terminated inside a job has
// not told its owner that the job is over, so that is done here; otherwise
// the owner would wait for the job for ever.
void TThreadContext::Interrupt() {
  if (GetThreadId(handle) == GetCurrentThreadId()) return;
  InterruptThread(0, kInterruptStopMs);
  if (WaitForSingleObject(0, FALSE) != WAIT_OBJECT_0 || !job_pending_.exchange(false)) return;
  if (const SmartPtr<IThreadOwner> owner = Owner()) owner->OnJobDone(this);
}

std::string TThreadContext::GetStack() { return GetCurrentStack(); }

void TThreadContext::Suspend() { SuspendThread(); }

void TThreadContext::Resume() { ResumeThread(); }

void TThreadContext::SetPriority(int priority) { SetThreadPriority(priority); }

void TThreadContext::Start() {
  AcquireSRWLockExclusive(&start_lock_);
  try {
    const bool running = IsValidHandle() && WaitForSingleObject(0, FALSE) == WAIT_TIMEOUT;
    if (!running && Owner()) StartThread();  // without an owner the loop has ended for good
  } catch (...) {
    ReleaseSRWLockExclusive(&start_lock_);
    throw;
  }
  ReleaseSRWLockExclusive(&start_lock_);
}
