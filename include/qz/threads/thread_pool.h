// IThreadPool and TThreadPool: a bounded pool of worker threads that runs
// queued jobs in first-in, first-out order.
//
//   SmartPtr<IThreadPool> pool = CreateNewThreadPool(8, 1);  // <= 8 threads, 1 stays idle
//   pool->QueueJob(new Resize(...));
//   pool->WaitForAllJobs(INFINITE);
//   pool->Shutdown();
//
// Growth. QueueJob starts a worker when the queued jobs outnumber the idle
// workers, never beyond max total threads; a pool starts with none. The
// two are compared under the queue lock, where a worker stops counting as
// idle in the step that takes its job, so every queued job has an idle
// worker or a start, whatever the timing (a worker that leaves a full pool
// hands its place to a job that found none). A worker that has had no job
// for 10000 ms retires while more than min idle threads workers are idle
// and the others cover the queue; the first min idle threads idle workers
// stay for good. Jobs queued while the limit is 0 (also after Shutdown)
// wait in the queue until SetLimits raises it. A lower limit reaches a
// worker when it next asks for a job: a worker already waiting for one may
// still take the next job.
//
// Accounting. "Running jobs" counts jobs queued or running: +1 by QueueJob,
// -1 exactly once per job, by whoever ends it: the worker when the job has
// run, ClearQueue when it dropped it, the stop that had to terminate the
// worker inside it. The all-done event (WaitForAllJobs) is set exactly
// while it is 0. A job given up unrun is told so (IThreadJob::Abandon): a
// dropped or terminated TThreadTask ends finished, so its waiters wake.
//
// Bad input. A null job is refused with ESystemException
// (ERROR_INVALID_PARAMETER) by QueueJob and TryQueueJob; no count changes.
//
// Overflow. A queue already holding max queue length jobs makes QueueJob
// throw EGeneric with, in this order, "Text" = "Thread pool overflowed",
// "JobQueueSize" = the queue length and "ThreadsSize" = the thread count;
// nothing is queued then. TryQueueJob answers false instead.
//
// Shutdown: both limits to 0, the queue dropped, every worker asked to stop
// at once (EThreadInterrupt at its job's next alertable wait) and retired,
// so that no task's Cancel restarts it; then all of them are waited for
// within one bound of 5000 ms, and those still alive after it are
// terminated (their jobs count as done, their tasks end finished). The
// queue is dropped again, and the workers are released. It returns when
// the workers have ended; the pool keeps no thread afterwards.
//
// Cost. Queueing is a push under the queue lock and one semaphore release
// (plus an event reset when the pool was all done); a worker pays one
// semaphore wait, a pop under the queue lock and the done count under it
// again. `scripts/bench pool` (Wine, 4 workers, empty jobs) puts the pool at
// 0.92-1.09x the throughput of a bare pool built from the same lock and
// semaphore, for 1, 2 and 4 producers (five runs on a shared machine).
//
// Text form (ToString), e.g. for the default pool before any work:
//   Thread Pool 0x<low 32 bits of the address, lower-case hex> RunningJobs=0
//   Threads=0 Queue=0 Idle=0 MaxTotalThreads=50 MinIdleThreads=0
// (on one line, single spaces).
//
// Lifetime. A pool is made with new and held by SmartPtr, as the factories
// do (never on the stack: its workers count references to it). Workers
// hold their pool: a pool whose workers never retire
// (min idle threads above 0) lives until Shutdown. The process-wide pool of
// GetSystemThreadPool is never destroyed. A worker that retires leaves the
// pool at once and ends its thread by itself: no other thread waits for
// it or terminates it (see IThreadContext).
//
// Thread safety: every operation may be called from any thread at any
// time, from the pool's own jobs too (Shutdown from a job leaves that job's
// worker alone; it ends once the job is done and it finds no more work).
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>
#include <qz/sync/event.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/semaphore.h>
#include <qz/threads/thread_context.h>
#include <qz/threads/thread_job.h>

#include <atomic>
#include <deque>
#include <set>
#include <string>

class QZ_API IThreadPool : public virtual SmartPtrObj {
 public:
  // Queues `job` (starting a worker when one is needed) and answers whether
  // the queue is now no longer than max total threads, i.e. whether the job
  // can expect to start without waiting for earlier jobs to finish.
  virtual bool QueueJob(SmartPtr<IThreadJob> job) = 0;
  virtual void Shutdown() = 0;
  // Stores the limits, then starts a worker for each queued job that no
  // idle worker will take (as many as the new limit allows).
  virtual void SetLimits(unsigned max_total, unsigned min_idle, int priority) = 0;
  // True when every queued job has run (or was dropped) within the time-out;
  // an alertable wait that procedure calls which return do not end (an
  // interruption ends it by its exception).
  virtual bool WaitForAllJobs(unsigned timeout_ms) = 0;
  // Drops the jobs that have not started, abandoning each (a task ends
  // finished, never started); running ones go on.
  virtual void ClearQueue() = 0;
};

class QZ_API TThreadPool : public IThreadPool, public IThreadOwner {
 public:
  // 50 threads at most, none kept idle, default priority, 1000000 queued jobs.
  TThreadPool();
  // `priority` 0 leaves new workers at the default priority. A queue length
  // of 0 or above 2147483647 is refused (ESystemException: the semaphore
  // that counts the queue cannot be made).
  TThreadPool(unsigned max_total_threads, unsigned min_idle_threads, int priority,
              unsigned max_queue_length);
  TThreadPool(const TThreadPool&) = delete;
  TThreadPool& operator=(const TThreadPool&) = delete;
  ~TThreadPool() noexcept override;

  bool QueueJob(SmartPtr<IThreadJob> job) override;
  void Shutdown() override;
  void SetLimits(unsigned max_total, unsigned min_idle, int priority) override;
  bool WaitForAllJobs(unsigned timeout_ms) override;
  void ClearQueue() override;

  // The queueing step of QueueJob alone: no worker started, false (and
  // nothing queued) when the queue is full.
  virtual bool TryQueueJob(SmartPtr<IThreadJob> job);
  // The front job, taken out of the queue for the calling worker, which no
  // longer counts as idle; null (and still idle) when the queue is empty.
  virtual SmartPtr<IThreadJob> PopJob();
  // Idle workers fewer than queued jobs (read under the queue lock), and
  // room for another thread.
  virtual bool NeedMoreThreads();
  // More workers idle than min idle threads.
  virtual bool HasExcessIdle();
  // More workers than max total threads.
  virtual bool HasExcessThreads();
  // Starts one more worker unless the pool already has max total threads.
  virtual void AddThread();

  // The workers' side: see IThreadOwner.
  SmartPtr<IThreadJob> GetNextJob(SmartPtr<IThreadContext> self) override;
  void OnThreadExit(SmartPtr<IThreadContext> self) override;
  void OnJobDone(SmartPtr<IThreadContext> self) override;

  std::string ToString() const override;

 protected:
  std::atomic<unsigned> max_total_threads;
  std::atomic<unsigned> min_idle_threads;
  std::atomic<int> idle;
  std::set<SmartPtr<IThreadContext>> threads;
  mutable TMultiLock threads_lock;
  std::deque<SmartPtr<IThreadJob>> queue;
  mutable TMultiLock queue_lock;
  TSemaphore job_semaphore;
  std::atomic<int> priority;
  unsigned max_queue_length;
  TEvent all_done;
  std::atomic<int> running_jobs;

 private:
  // The queue's length and the number of workers, changed under the queue
  // lock and the threads lock and read without them.
  std::atomic<size_t> queue_length;
  std::atomic<size_t> thread_count;

  // The queueing step, under the queue lock; `short_of_workers` says, under
  // that same hold, whether the queued jobs now outnumber the idle workers.
  bool PushJob(SmartPtr<IThreadJob> job, bool& short_of_workers);
  // Queued jobs that no idle worker will take; under the queue lock.
  size_t UncoveredJobs() const;
  // Takes one idle worker off the count unless that would leave fewer than
  // min idle threads, or fewer idle workers than queued jobs; true when it
  // did (the worker retires).
  bool RetireIdle();
  // Back at the front of the queue: a job a worker took but could not keep.
  void Requeue(SmartPtr<IThreadJob> job);
  size_t QueueLength() const;
  size_t ThreadCount() const;
};

// A new pool, each argument as TThreadPool's constructor takes it; the
// rest keep their defaults.
QZ_API SmartPtr<IThreadPool> CreateNewThreadPool();
QZ_API SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle);
QZ_API SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle, int priority);
QZ_API SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle, int priority,
                                                 int max_queue_length);
// The process-wide pool (made by the first call, from any number of threads
// at once, with CreateNewThreadPool()); the same pool on every call.
QZ_API SmartPtr<IThreadPool> GetSystemThreadPool();
