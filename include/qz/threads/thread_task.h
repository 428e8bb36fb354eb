// IThreadTask and TThreadTask: a job with an observable life.
//
//   class Export : public TThreadTask {
//     void Execute() override { ... }
//   };
//   SmartPtr<TThreadTask> task = new Export;
//   pool->QueueJob(task);
//   if (!task->WaitForFinish(30000)) task->Cancel();
//   if (task->IsException()) task->RethrowException();
//
// Life: created -> started (the worker calls TaskStarted before Execute) ->
// finished (TaskFinished after it, or Cancel). Both events are manual-reset
// and never reset again: a task runs once. IsRunning is true only between
// the two.
//
// An exception that leaves Execute is kept as an EGeneric copy: an EGeneric
// with all its values; any other std::exception as "Text" (its message) and
// "Type" (its type name); anything else as "Text" = "Unknown exception".
// RethrowException throws a copy of it (an EGeneric, whatever the original
// class was). EThreadInterrupt (a Cancel) is not kept.
//
// Cancel marks the task finished in every case. While the work runs, it
// also interrupts the worker (EThreadInterrupt at the work's next alertable
// wait; a worker that does not end within 5000 ms is terminated, and the
// job counts as done all the same) and starts a fresh thread in the
// worker's place, so the pool keeps its strength.
// Cancel from the task's own work only marks it finished. A Cancel that
// comes while the work runs without waiting alertably reaches the worker
// when the work returns: the worker waits for the interruption there, so it
// never lands in the next job. Work that neither waits nor returns within
// the 5000 ms is ended by termination.
//
// A task is a counted object, whose destructor cannot throw: a task with a
// member whose destructor may (a TEvent, any THandle) declares its own
// destructor noexcept, `~Export() noexcept override {}`.
//
// Suspend, Resume and SetPriority act on the worker only while the task
// runs, and do nothing otherwise. A priority set so stays with the worker.
//
// Thread safety: any number of threads may wait, ask and Cancel at once;
// the worker context is handed over under a lock, so TaskFinished and
// Cancel release it exactly once.
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/errors/generic.h>
#include <qz/export.h>
#include <qz/sync/event.h>
#include <qz/threads/thread_context.h>
#include <qz/threads/thread_job.h>

#include <windows.h>

class QZ_API IThreadTask : public IThreadJob {
 public:
  virtual bool IsStarted() const = 0;
  virtual bool IsFinished() const = 0;
  // Alertable waits: false on time-out and when a procedure call ended the
  // wait.
  virtual bool WaitForStart(int timeout) const = 0;
  virtual bool WaitForFinish(int timeout) const = 0;
  virtual void Cancel() = 0;
  virtual void Suspend() = 0;
  virtual void Resume() = 0;
  virtual void SetPriority(int priority) = 0;
  virtual bool IsException() const = 0;
  // Throws a copy of the kept exception; does nothing when there is none.
  virtual void RethrowException() = 0;
  virtual bool IsRunning() const = 0;

 protected:
  virtual void TaskStarted() = 0;
  virtual void TaskFinished() = 0;
};

class TThreadContext;

class QZ_API TThreadTask : public IThreadTask, public virtual SmartPtrObj {
 public:
  TThreadTask();
  TThreadTask(const TThreadTask&) = delete;
  TThreadTask& operator=(const TThreadTask&) = delete;
  ~TThreadTask() noexcept override;

  bool IsStarted() const override;
  bool IsFinished() const override;
  bool WaitForStart(int timeout) const override;
  bool WaitForFinish(int timeout) const override;
  void Cancel() override;
  void Suspend() override;
  void Resume() override;
  void SetPriority(int priority) override;
  bool IsException() const override;
  void RethrowException() override;
  bool IsRunning() const override;

 protected:
  // Sets the started event.
  void TaskStarted() override;
  // Sets the finished event, then lets go of the worker.
  void TaskFinished() override;

  // The worker running the task; null when none holds it.
  SmartPtr<IThreadContext> context;
  TEvent started_event;
  TEvent finished_event;
  // What the work ended with; null when it returned (or has not ended).
  EGeneric* exception;

 private:
  friend class TThreadContext;

  // The worker's side: runs the work between TaskStarted and TaskFinished,
  // keeping its exception; passes EThreadInterrupt on.
  void RunOn(SmartPtr<IThreadContext> worker);
  SmartPtr<IThreadContext> CurrentContext() const;
  SmartPtr<IThreadContext> TakeContext();
  // Cancel's side: the worker, taken unless the caller is the worker itself.
  SmartPtr<IThreadContext> TakeContextToInterrupt();

  mutable SRWLOCK context_lock;
  // The thread running the work, under context_lock; 0 before it starts.
  DWORD runner_thread;
};
