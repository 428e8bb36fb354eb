#include <qz/core/type_name.h>
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_task.h>

#include "errors/exception_text.h"
#include "sync/slim_lock_holds.h"

#include <exception>
#include <typeinfo>
#include <utility>

TThreadTask::TThreadTask()
    : started_event(true, false), finished_event(true, false), exception(nullptr), life(Life::queued), runner_thread(0) {
  InitializeSRWLock(&context_lock);
  InitializeSRWLock(&suspend_lock);
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
  slim_shared_hold hold(context_lock);
  return context;
}

// Whoever takes the context first releases it; the other finds null.
SmartPtr<IThreadContext> TThreadTask::TakeContext() {
  slim_exclusive_hold hold(context_lock);
  return std::move(context);
}

// Suspensions are kept with the worker they were made on, so that Resume
// undoes them there: a Suspend that began while the task ran may land after
// its end, on the worker's next job, where a Resume that looked for a
// running task would never reach it. The worker is suspended and resumed
// outside the lock: the caller may be the worker's own thread.
void TThreadTask::Suspend() {
  SmartPtr<IThreadContext> worker;
  {
    slim_exclusive_hold hold(suspend_lock);
    worker = ControlledWorker();
    if (!worker) return;
    suspended_worker = worker;
    ++suspensions;
  }
  try {
    worker->Suspend();
  } catch (...) {
    ForgetSuspension();
    throw;
  }
}

void TThreadTask::Resume() {
  SmartPtr<IThreadContext> worker;
  {
    slim_exclusive_hold hold(suspend_lock);
    worker = ControlledWorker();
  }
  if (!worker) return;
  ForgetSuspension();
  worker->Resume();
}

// Without a suspension of its own, the task controls its running worker.
SmartPtr<IThreadContext> TThreadTask::ControlledWorker() const {
  if (suspended_worker) return suspended_worker;
  return IsRunning() ? CurrentContext() : nullptr;
}

void TThreadTask::ForgetSuspension() {
  SmartPtr<IThreadContext> done;
  slim_exclusive_hold hold(suspend_lock);
  if (suspensions != 0 && --suspensions == 0) done = std::move(suspended_worker);
}

void TThreadTask::SetPriority(int priority) {
  if (!IsRunning()) return;
  if (const SmartPtr<IThreadContext> worker = CurrentContext()) worker->SetPriority(priority);
}

// The state decides every race: a worker starts only a queued task, and a
// Cancel interrupts only a worker still inside the work, which has then
// handed the worker over (context) together with the state. A second
// Cancel meanwhile waits for the first one's end, so that it too returns
// only once the work is over. The worker is replaced so that the pool
// keeps its strength; a failure to start the new thread must not make the
// cancel fail.
void TThreadTask::Cancel() {
  SmartPtr<IThreadContext> worker;
  bool stopping = false;
  {
    slim_exclusive_hold hold(context_lock);
    const bool on_worker = runner_thread == GetCurrentThreadId();
    if (life == Life::queued) {
      life = Life::cancelled;
    } else if (life == Life::running && !on_worker) {
      life = Life::stopping;
      worker = std::move(context);
    } else if (life == Life::stopping && !on_worker) {
      stopping = true;
    }
  }
  if (stopping) {
    finished_event.WaitForSignal();
    return;
  }
  if (worker) {
    try {
      worker->Interrupt();
    } catch (...) {
      EndCancel();  // other Cancels must not wait for ever
      throw;
    }
    try {
      worker->Start();
    } catch (...) {
    }
  }
  EndCancel();
}

void TThreadTask::EndCancel() {
  {
    slim_exclusive_hold hold(context_lock);
    if (life == Life::stopping) life = Life::cancelled;
  }
  finished_event.Set();
}

// A dropped task never started; a terminated worker's task never finished
// by itself. Either way it ends now, without a worker.
void TThreadTask::Abandon() noexcept {
  {
    slim_exclusive_hold hold(context_lock);
    if (life == Life::queued || life == Life::running) life = Life::cancelled;
  }
  try {
    finished_event.Set();
  } catch (...) {
    // Only a broken event can fail here; nothing else would be set either.
  }
  TakeContext();
}

bool TThreadTask::EndRun() {
  bool own = false;
  {
    slim_exclusive_hold hold(context_lock);
    own = life == Life::running;
    if (own) life = Life::finished;
  }
  if (own) TaskFinished();
  return own;
}

void TThreadTask::RunOn(IThreadContext& worker) {
  bool start = false;
  {
    slim_exclusive_hold hold(context_lock);
    start = life == Life::queued;
    if (start) {
      life = Life::running;
      context = &worker;
      runner_thread = GetCurrentThreadId();
    }
  }
  if (!start) return;  // cancelled before a worker reached it
  TaskStarted();
  EGeneric* kept = nullptr;
  try {
    Execute();
  } catch (const EThreadInterrupt&) {
    EndRun();  // a Shutdown's interruption finishes it; a Cancel's Cancel does
    throw;
  } catch (const EGeneric& e) {
    kept = new EGeneric(e);
  } catch (const std::exception& e) {
    kept = new EGeneric({"Text", exception_text(e)}, {"Type", type_name(typeid(e))});
  } catch (...) {
    kept = new EGeneric({"Text", "Unknown exception"});
  }
  delete std::exchange(exception, kept);
  // A Cancel took the worker while the work was ending and is stopping it:
  // the worker ends here rather than wait for the interruption, which must
  // not land in its next job.
  if (!EndRun()) throw EThreadInterrupt();
}
