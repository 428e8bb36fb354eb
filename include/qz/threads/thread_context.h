// IThreadContext and IThreadOwner: a pool's worker thread and the owner it
// serves.
//
// A worker (made by CreateNewThreadContext) runs one loop on its thread:
//
//   for (;;) {
//     job = owner->GetNextJob(self);        // blocks; null: the worker ends
//     if (!job) { owner->OnThreadExit(self); break; }
//     job->RunOn(*self);                    // every exception caught
//     owner->OnJobDone(self);
//   }
//
// The worker knows jobs only as IThreadJob: a job that wants to know its
// worker (a TThreadTask, to be cancelled, suspended or re-prioritised)
// learns it in RunOn.
//
// Interruption ends the worker's thread: EThreadInterrupt thrown inside a
// job (the job is done, OnJobDone is told) or while the worker waits for
// one ends the loop without OnThreadExit. The context stays with its owner:
// whoever interrupted it either starts a fresh thread on it (a task's
// Cancel) or stops it for good (a pool's Shutdown).
//
// Accounting. A job is counted done exactly once, by whoever ends it: the
// worker when the job returns or unwinds; the interrupter when the worker
// had to be terminated inside it, after the thread is gone. The
// interrupter then abandons the job (IThreadJob::Abandon) and tells the
// owner (OnJobDone), so the owner's count of running jobs stays true.
//
// Stopping. Interrupt asks the thread to end (EThreadInterrupt at its next
// alertable wait), waits up to 5000 ms and terminates it then. An owner
// that stops many workers splits that: BeginStop on each (asks, returns at
// once, and retires the worker so that no later Start revives it), then
// FinishStop on each against one deadline. Interrupt, BeginStop,
// FinishStop and Start called on the worker's own thread do not wait for
// it: the worker ends after its current job.
//
// Termination. A thread is terminated only as the last resort of
// Interrupt and FinishStop, when a job has ignored its interruption for the
// whole bound; that thread may hold the heap or loader lock and leave it
// held (a job that may run that long waits alertably). No ordinary path
// terminates: a worker that leaves its owner (its loop ended) ends its
// thread by itself, and releasing a context never waits for its thread
// nor terminates it.
//
// Thread safety: every operation may be called from any thread, also
// several at once on one worker: starts, interruptions and stops of one
// worker are serialised, and each waits on the thread it asked to end (a
// handle of its own), never on one a restart replaced. A context is owned
// by its owner (SmartPtr); its thread holds it until the body's last step,
// so the last reference falls either on that thread or once the thread no
// longer touches the object (on its way out through the runtime's
// per-thread teardown, which it finishes alone).
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>
#include <qz/threads/thread_job.h>

#include <string>

class QZ_API IThreadContext : public virtual SmartPtrObj {
 public:
  // Interrupts the worker's thread (waits 0 ms, then up to 5000 ms for it
  // to end before terminating it).
  virtual void Interrupt() = 0;
  // The controls act on the worker's current thread, and do nothing while
  // it has none alive (between a thread's end and a restart, or for good).
  // A restart waits for a control under way, so a control never reaches a
  // closed handle or, mid-restart, the caller's own thread. Suspend has the
  // system's risk: a thread suspended while it holds a lock (the heap's, the
  // loader's) stops everyone who waits for that lock until it is resumed.
  //
  // The worker thread's stack as text ("" when it cannot be read).
  virtual std::string GetStack() = 0;
  virtual void Suspend() = 0;
  virtual void Resume() = 0;
  virtual void SetPriority(int priority) = 0;
  // Starts a thread running the worker loop; nothing while one still runs,
  // and nothing once the worker was retired (BeginStop) or its loop ended.
  virtual void Start() = 0;
  // Retires the worker and asks its thread to end; returns at once.
  virtual void BeginStop() = 0;
  // Waits for the thread until the tick count reaches `deadline`, then
  // terminates it (and settles its job, as above).
  virtual void FinishStop(unsigned long deadline) = 0;
};

class QZ_API IThreadOwner : public virtual SmartPtrObj {
 public:
  // Blocks until a job is available; null tells the worker to end.
  virtual SmartPtr<IThreadJob> GetNextJob(SmartPtr<IThreadContext> self) = 0;
  // The worker is ending.
  virtual void OnThreadExit(SmartPtr<IThreadContext> self) = 0;
  // The worker has finished one job.
  virtual void OnJobDone(SmartPtr<IThreadContext> self) = 0;
};

// A worker serving `owner`; it holds the owner until its loop ends. Not
// started: the owner starts it.
QZ_API SmartPtr<IThreadContext> CreateNewThreadContext(SmartPtr<IThreadOwner> owner);
