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

SmartPtr<IThreadJob> TThreadPool::PopJob() {
  write_hold hold(queue_lock);
  if (queue.empty()) return nullptr;
  SmartPtr<IThreadJob> job = std::move(queue.front());
  queue.pop_front();
  queue_length.store(queue.size());
  return job;
}

// The job keeps its place in the running count: it has not run yet.
void TThreadPool::Requeue(SmartPtr<IThreadJob> job) {
  write_hold hold(queue_lock);
  queue.push_front(job);
  queue_length.store(queue.size());
  job_semaphore.ReleaseSemaphore(1);
}

// One exchange per attempt, so that workers timing out together never take
// the count below the minimum between them.
bool TThreadPool::RetireIdle() {
  int now = idle.load();
  while (now > static_cast<int>(min_idle_threads.load())) {
    if (idle.compare_exchange_weak(now, now - 1)) return true;
  }
  return false;
}

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
      if (job || interrupted) {
        --idle;
        if (!interrupted) return job;
        if (job) run_uninterrupted([&] { Requeue(job); });
        throw EThreadInterrupt();
      }
      // No job for the count: the queue was cleared meanwhile.
    }
    if (RetireIdle()) return nullptr;
    --idle;
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
  if (threads.empty() && NeedMoreThreads()) AddThread();
}
