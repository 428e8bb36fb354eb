// The workers' side of TThreadPool (IThreadOwner): handing out jobs, idle
// retirement and the books kept when a job or a worker ends.
//
// A worker may be interrupted at any alertable wait in here. Every path
// keeps the books straight then: the idle count is given back, a job taken
// from the queue goes back to its front with its semaphore count, and the
// bookkeeping under a lock is done again before the interruption goes on.
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_pool.h>

#include "sync/lock_holds.h"
#include "threads/uninterrupted.h"

#include <utility>

namespace {

// How long a worker waits for a job before it may retire.
constexpr unsigned int kIdleRetireMs = 10000;

}  // namespace

// The taker stops counting as idle in the same hold that gives it the
// job: a job queued meanwhile sees the idle workers that are left, never
// one that is already busy (PushJob).
SmartPtr<IThreadJob> TThreadPool::PopJob() {
  write_hold hold(queue_lock);
  if (queue.empty()) return nullptr;
  SmartPtr<IThreadJob> job = std::move(queue.front());
  queue.pop_front();
  queue_length.store(queue.size());
  --idle;
  return job;
}

// The job keeps its place in the running count: it has not run yet.
void TThreadPool::Requeue(SmartPtr<IThreadJob> job) {
  write_hold hold(queue_lock);
  queue.push_front(job);
  queue_length.store(queue.size());
  job_semaphore.ReleaseSemaphore(1);
}

// A worker retires only while the idle workers left cover the queue and
// stay at the minimum or above: one that timed out just as a job came in
// takes that job instead. Under the queue lock, so that workers timing out
// together, and jobs coming in, see each other.
bool TThreadPool::RetireIdle() {
  write_hold hold(queue_lock);
  const int now = idle.load();
  if (now <= static_cast<int>(min_idle_threads.load()) || static_cast<size_t>(now) <= queue.size()) return false;
  --idle;
  return true;
}

// `idle` counts the workers in here that have no job yet; PopJob takes a
// worker off it with its job.
SmartPtr<IThreadJob> TThreadPool::GetNextJob(SmartPtr<IThreadContext> /*self*/) {
  if (HasExcessThreads()) return nullptr;
  for (;;) {
    ++idle;
    bool counted = false;
    try {
      counted = job_semaphore.Lock(kIdleRetireMs);
    } catch (...) {
      --idle;
      throw;
    }
    if (counted) {
      SmartPtr<IThreadJob> job;
      const bool interrupted = run_uninterrupted([&] { job = PopJob(); });
      if (job && !interrupted) return job;
      if (job) {
        run_uninterrupted([&] { Requeue(job); });
        throw EThreadInterrupt();
      }
      if (interrupted) {
        --idle;
        throw EThreadInterrupt();
      }
      // No job for the count: the queue was cleared meanwhile.
    }
    // A worker that retired leaves even when an interruption came meanwhile:
    // it ends anyway, and the pool must hear of it.
    bool retire = false;
    const bool interrupted = run_uninterrupted([&] { retire = RetireIdle(); });
    if (retire) return nullptr;
    --idle;
    if (interrupted) throw EThreadInterrupt();
  }
}

void TThreadPool::OnJobDone(SmartPtr<IThreadContext> /*self*/) {
  write_hold hold(queue_lock);
  if (running_jobs.fetch_sub(1) == 1) all_done.Set();
}

// The worker's own thread holds its context to the end, so the pool just
// lets go of it: the last reference falls on that thread.
void TThreadPool::OnThreadExit(SmartPtr<IThreadContext> self) {
  write_hold hold(threads_lock);
  const auto found = threads.find(self);
  if (found != threads.end()) {
    threads.erase(found);
    thread_count.store(threads.size());
  }
  // A job may have come in while this worker was leaving and found the
  // pool full: the place it leaves is that job's.
  if (NeedMoreThreads()) AddThread();
}
