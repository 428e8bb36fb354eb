// IThreadJob: one unit of work for a thread pool.
//
//   class Resize : public IThreadJob {
//     void Execute() override { ... }
//   };
//   GetSystemThreadPool()->QueueJob(new Resize(...));
//
// A job is counted (SmartPtrObj) and held by the pool from QueueJob until it
// has run or was dropped by ClearQueue. Execute runs once, on a worker
// thread. An exception it lets out is caught there and logged to Debug as
//   "(!) Thread pool job failed with exception " <type>":" ["\n" when the
//       message has several lines] <message> "\n"   (a std::exception)
//   "(!) Thread pool job failed with unknown exception\n"   (anything else)
// and never reaches the pool; EThreadInterrupt (the worker is being
// interrupted) ends the job quietly. A job that should report its outcome
// is a TThreadTask.
//
// Thread safety: Execute runs on one worker thread; anything the job shares
// with other threads is the job's to guard.
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>

class QZ_API IThreadJob : public virtual SmartPtrObj {
 public:
  virtual void Execute() = 0;
};
