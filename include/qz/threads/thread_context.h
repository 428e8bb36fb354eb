// IThreadContext and IThreadOwner: a pool's worker thread and the owner it
// serves.
//
// A worker (made by CreateNewThreadContext) runs one loop on its thread:
//
//   for (;;) {
//     job = owner->GetNextJob(self);        // blocks; null: the worker ends
//     if (!job) { owner->OnThreadExit(self); break; }
//     run job;                              // every exception caught
//     owner->OnJobDone(self);
//   }
//
// A job that is a TThreadTask is also told when it starts and finishes, and
// learns the worker that runs it (so that it can be cancelled, suspended or
// re-prioritised), and keeps an exception it ended with.
//
// Interruption ends the worker's thread: EThreadInterrupt thrown inside a
// job (the job is done, OnJobDone is told) or while the worker waits for
// one ends the loop without OnThreadExit. The context stays with its owner:
// whoever interrupted it either starts a fresh thread on it (a task's
// Cancel) or removes it (a pool's Shutdown). A worker that had to be
// terminated inside a job has its job reported done by Interrupt, so the
// owner's count of running jobs stays true. Interrupt and Start called on
// the worker's own thread do nothing.
//
// Thread safety: every operation may be called from any thread. A context
// is owned by its owner (SmartPtr); its thread keeps it alive while it runs.
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
  // The worker thread's stack as text ("" when it cannot be read).
  virtual std::string GetStack() = 0;
  virtual void Suspend() = 0;
  virtual void Resume() = 0;
  virtual void SetPriority(int priority) = 0;
  // Starts a thread running the worker loop; nothing while one still runs.
  virtual void Start() = 0;
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
