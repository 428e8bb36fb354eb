// IThreadJob: one unit of work for a thread pool.
//
//   class Resize : public IThreadJob {
//     void Execute() override { ... }
//   };
//   GetSystemThreadPool()->QueueJob(new Resize(...));
//
// A job is counted (SmartPtrObj) and held by the pool from QueueJob until it
// has run or was given up. Execute runs once, on a worker thread. An
// exception it lets out is caught there and logged to Debug as
//   "(!) Thread pool job failed with exception " <type>":" ["\n" when the
//       message has several lines] <message> "\n"   (a std::exception)
//   "(!) Thread pool job failed with unknown exception\n"   (anything else)
// and never reaches the pool; EThreadInterrupt (the worker is being
// interrupted) ends the job quietly. A job that should report its outcome
// is a TThreadTask.
//
// The worker reaches every job through RunOn, which runs Execute; a job
// that keeps a life of its own (TThreadTask) wraps Execute in it. The pool
// gives a job up through Abandon when it will not run it to its end:
// ClearQueue or Shutdown dropped it before it began, or its worker had to
// be terminated inside it. Each job is either run or abandoned by the
// pool, never both, and counted done exactly once.
//
// Thread safety: Execute runs on one worker thread; anything the job shares
// with other threads is the job's to guard. Abandon may run on any thread,
// also while a Cancel or another caller looks at the job.
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>

class IThreadContext;

class QZ_API IThreadJob : public virtual SmartPtrObj {
 public:
  virtual void Execute() = 0;
  // Called by the worker `worker` on its own thread: runs Execute().
  virtual void RunOn(IThreadContext& worker);
  // The pool will not run the job (any more); nothing here. Must not throw.
  virtual void Abandon() noexcept;
};
