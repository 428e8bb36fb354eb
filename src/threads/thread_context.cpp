#include "threads/thread_context.h"

#include <qz/errors/exceptions.h>
#include <qz/core/throw.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>

#include "sync/slim_lock_holds.h"
#include "threads/alertable_wait.h"
#include "threads/uninterrupted.h"

#include <exception>
#include <functional>
#include <utility>

namespace {

// How long an interrupted worker has to end before it is terminated.
constexpr unsigned int kInterruptStopMs = 5000;
// How long a terminated thread may take to be gone.
constexpr DWORD kTerminationMs = 1000;

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
  InitializeSRWLock(&lock_);
  InitializeSRWLock(&handle_lock_);
}

// The thread holds its context until its body's last step (keep, below),
// so the last reference falls either on that thread or once the thread is
// past everything that touches the object, on its way out through the
// runtime's per-thread teardown. That way out takes the loader lock and the
// heap lock; a thread terminated there leaves them held or the heap half
// updated. So nothing waits for the thread here, let alone terminates it:
// the handle is closed (the base then finds none to stop) and the thread
// ends by itself.
TThreadContext::~TThreadContext() noexcept {
  try {
    CloseIfValid();
  } catch (...) {
    // A counted object's release cannot fail; the handle is marked closed
    // before the call, so the base has nothing to stop either way.
  }
}

SmartPtr<IThreadOwner> TThreadContext::Owner() const {
  AcquireSRWLockShared(&lock_);
  SmartPtr<IThreadOwner> owner = owner_;
  ReleaseSRWLockShared(&lock_);
  return owner;
}

// The owner is let go after the lock: it may be the last reference.
void TThreadContext::DropOwner() {
  SmartPtr<IThreadOwner> gone;
  slim_exclusive_hold hold(lock_);
  gone = std::move(owner_);
}

// The thread holds its context while it runs: the owner may let go of it
// meanwhile (a Shutdown), and the last reference may then fall here, after
// the base's bookkeeping, when nothing touches the object any more.
void TThreadContext::DynamicThreadEntry() {
  const SmartPtr<IThreadContext> keep(this);
  TThreadClass::DynamicThreadEntry();
}

// An interruption ends the thread without telling the owner: the context
// stays in its pool for whoever interrupted it to restart or stop.
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
    current_job_ = job;
    job_pending_ = true;
    bool interrupted = RunJob(*job);
    job.reset();
    if (job_pending_.exchange(false)) {
      current_job_.reset();
      interrupted |= run_uninterrupted([&] { owner->OnJobDone(self); });
    }
    if (interrupted) return;
  }
}

bool TThreadContext::RunJob(IThreadJob& job) {
  try {
    job.RunOn(*this);
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
// cancels its own task, or shuts its pool down, just goes on.
THandle TThreadContext::AskToEnd(bool retire) {
  slim_exclusive_hold hold(lock_);
  if (retire) retired_ = true;
  if (!IsValidHandle() || GetThreadId(handle) == GetCurrentThreadId()) return THandle();
  RequestInterrupt();
  return THandle(handle);
}

// A worker that ended by itself settled its own job; one terminated inside
// a job did not, so that is done here, once the thread is surely gone
// (termination is asynchronous).
void TThreadContext::AwaitEnd(const THandle& thread, DWORD deadline) {
  if (!thread.IsValidHandle() || WaitUntil(thread, deadline, false)) {
    if (thread.IsValidHandle()) SettleAbandonedJob();
    return;
  }
  if (!::TerminateThread(thread, 0)) {
    const DWORD error = GetLastError();
    if (thread.WaitForSingleObject(0, FALSE) != WAIT_OBJECT_0) ThrowSystemException(error);
  }
  if (thread.WaitForSingleObject(kTerminationMs, FALSE) != WAIT_OBJECT_0) return;
  SettleAbandonedJob();
}

// The count is kept even when the caller is interrupted meanwhile; the
// interruption is honoured once it is.
void TThreadContext::SettleAbandonedJob() {
  if (!job_pending_.exchange(false)) return;
  const SmartPtr<IThreadJob> job = std::move(current_job_);
  job->Abandon();
  const SmartPtr<IThreadOwner> owner = Owner();
  if (owner && run_uninterrupted([&] { owner->OnJobDone(this); })) throw EThreadInterrupt();
}

void TThreadContext::Interrupt() {
  const THandle thread = AskToEnd(false);
  AwaitEnd(thread, GetTickCount() + kInterruptStopMs);
}

void TThreadContext::BeginStop() { AskToEnd(true); }

void TThreadContext::FinishStop(unsigned long deadline) {
  THandle thread;
  {
    slim_exclusive_hold hold(lock_);
    if (IsValidHandle() && GetThreadId(handle) != GetCurrentThreadId()) thread = THandle(handle);
  }
  AwaitEnd(thread, deadline);
  DropOwner();  // a retired worker needs it no more; a terminated one would keep it for good
}

// The controls act on the current thread under the lock a restart replaces
// it under, and leave alone a worker without a live thread: mid-restart the
// handle is -1, which the system takes for the caller's own thread, and an
// ended thread refuses to be suspended (access denied). That lock is not
// the worker's: its thread never waits for it, so a Suspend cannot catch
// it waiting there and leave the Resume stuck behind it.
void TThreadContext::ControlLiveThread(const std::function<void()>& control) {
  slim_shared_hold hold(handle_lock_);
  if (!IsValidHandle()) return;
  try {
    control();
  } catch (const ESystemException&) {
    if (WaitForSingleObject(0, FALSE) == WAIT_TIMEOUT) throw;
  }
}

// The stack is read under the lock too (a restart waits for it), for the
// same reason: the walk suspends the thread the handle names.
std::string TThreadContext::GetStack() {
  std::string stack;
  ControlLiveThread([&] { stack = GetCurrentStack(); });
  return stack;
}

void TThreadContext::Suspend() {
  ControlLiveThread([this] { SuspendThread(); });
}

void TThreadContext::Resume() {
  ControlLiveThread([this] { ResumeThread(); });
}

void TThreadContext::SetPriority(int priority) {
  ControlLiveThread([this, priority] { SetThreadPriority(priority); });
}

// A body that was interrupted before it ran, or terminated inside a job,
// left its state behind; the fresh thread starts from idle.
void TThreadContext::Start() {
  slim_exclusive_hold hold(lock_);
  if (retired_ || !owner_) return;  // stopped for good, or the loop has ended
  if (IsValidHandle() && WaitForSingleObject(0, FALSE) == WAIT_TIMEOUT) return;
  slim_exclusive_hold replacing(handle_lock_);
  thread_state = 0;
  StartThread();
}
