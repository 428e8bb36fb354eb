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
// Life, one state changed only by single steps under the task's lock:
//
//   queued ---(a worker takes it)---> running ---(the work ends)---> finished
//     |                                 |
//     | Cancel, ClearQueue, Shutdown    | Cancel from another thread:
//     v                                 v it interrupts the worker
//   cancelled <--(the worker ended)-- stopping
//
// TaskStarted is called as the task enters running, TaskFinished as it
// leaves it by itself. Both events are manual-reset and never reset again:
// a task runs once. IsRunning is true only between the two events.
//
// An exception that leaves Execute is kept as an EGeneric copy: an EGeneric
// with all its values; any other std::exception as "Text" (its message) and
// "Type" (its type name); anything else as "Text" = "Unknown exception".
// RethrowException throws a copy of it (an EGeneric, whatever the original
// class was). EThreadInterrupt (a Cancel) is not kept.
//
// Cancel. After Cancel returns the work has either never begun (and never
// will) or is over, and the finished event is set. A queued task is just
// marked: no worker will start it. A running one is interrupted
// (EThreadInterrupt at the work's next alertable wait; a worker that does
// not end within 5000 ms is terminated, and the job counts as done all the
// same); Cancel waits for that, then starts a fresh thread in the worker's
// place, so the pool keeps its strength. Another Cancel meanwhile waits
// for the first one to end. A Cancel that comes while the
// work runs without waiting alertably ends the worker as the work returns:
// the interruption never lands in the next job. Cancel from the task's own
// work only sets the finished event; the work goes on to its end (it is
// the caller). Cancel after the task finished does nothing more.
//
// Given up by the pool. A task that ClearQueue or Shutdown drops from the
// queue ends as if cancelled before it started: finished, never started,
// so its waiters wake. A task whose worker Shutdown had to terminate is
// finished too.
//
// A task is a counted object, whose destructor cannot throw: a task with a
// member whose destructor may (a TEvent, any THandle) declares its own
// destructor noexcept, `~Export() noexcept override {}`.
//
// Suspend, Resume and SetPriority act on the worker only while the task
// runs, and do nothing otherwise, with one exception: Resume undoes the
// task's own suspensions on the worker they were made on, also once the
// task is over (a Suspend racing the task's end may land on the worker's
// next job; its Resume frees it there). A priority set so stays with the
// worker.
//
// Thread safety: any number of threads may wait, ask and Cancel at once;
// the state and the worker context change together under a lock, so the
// work starts at most once and TaskFinished and Cancel release the context
// exactly once.
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

  // The worker's side (IThreadJob): runs the work between TaskStarted and
  // TaskFinished unless the task was cancelled first, keeping its
  // exception; passes EThreadInterrupt on.
  void RunOn(IThreadContext& worker) override;
  // The pool gives the task up: it ends finished (see above).
  void Abandon() noexcept override;

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
  // `stopping`: cancelled while running; the Cancel that took the worker
  // is interrupting it.
  enum class Life { queued, running, stopping, finished, cancelled };

  SmartPtr<IThreadContext> CurrentContext() const;
  // Under suspend_lock: the worker the task's suspensions were made on,
  // else the running worker; null when there is neither.
  SmartPtr<IThreadContext> ControlledWorker() const;
  // One suspension fewer; the worker is let go with the last.
  void ForgetSuspension();
  SmartPtr<IThreadContext> TakeContext();
  // The work has ended on the worker: running becomes finished and true;
  // false when a Cancel took the task meanwhile.
  bool EndRun();
  // The end of every Cancel but a waiting one: stopping becomes cancelled,
  // and the finished event is set.
  void EndCancel();

  mutable SRWLOCK context_lock;
  // Under context_lock.
  Life life;
  // The thread running the work, under context_lock; 0 before it starts.
  DWORD runner_thread;
  // The worker that Suspend suspended and how many times, until Resume has
  // undone them all: under suspend_lock, which the worker's thread never
  // waits for, so no control waits behind a thread it suspended.
  SRWLOCK suspend_lock;
  SmartPtr<IThreadContext> suspended_worker;
  int suspensions = 0;
};
