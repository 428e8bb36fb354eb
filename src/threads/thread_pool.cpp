// The caller's side of TThreadPool: construction, queueing, limits and
// shutdown. The workers' side is in thread_pool_workers.cpp.
#include <qz/errors/generic.h>
#include <qz/core/throw.h>
#include <qz/threads/thread_pool.h>

#include "sync/lock_holds.h"
#include "threads/alertable_wait.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr unsigned kDefaultMaxTotalThreads = 50;
constexpr unsigned kDefaultMaxQueueLength = 1000000;
// How long Shutdown gives its workers to end before it terminates them.
constexpr DWORD kShutdownStopMs = 5000;

}  // namespace

TThreadPool::TThreadPool()
    : TThreadPool(kDefaultMaxTotalThreads, 0, 0, kDefaultMaxQueueLength) {}

TThreadPool::TThreadPool(unsigned max_total, unsigned min_idle, int thread_priority,
                         unsigned max_queue)
    : max_total_threads(max_total),
      min_idle_threads(min_idle),
      idle(0),
      threads_lock(1),
      queue_lock(1),
      job_semaphore(static_cast<int>(max_queue), 0),
      priority(thread_priority),
      max_queue_length(max_queue),
      all_done(true, true),
      running_jobs(0),
      queue_length(0),
      thread_count(0) {}

TThreadPool::~TThreadPool() noexcept = default;

// Under the queue lock, so that the all-done event follows the count in
// the order the count changes, and so that the idle count compared with
// the queue is the one its takers keep under that lock (see PopJob).
bool TThreadPool::PushJob(SmartPtr<IThreadJob> job, bool& short_of_workers) {
  if (!job) ThrowSystemException(ERROR_INVALID_PARAMETER);
  write_hold hold(queue_lock);
  if (queue.size() >= max_queue_length) return false;
  queue.push_back(job);
  try {
    if (running_jobs.fetch_add(1) == 0) all_done.Reset();
    job_semaphore.ReleaseSemaphore(1);
  } catch (...) {
    queue.pop_back();
    if (running_jobs.fetch_sub(1) == 1) all_done.Set();
    throw;
  }
  queue_length.store(queue.size());
  short_of_workers = UncoveredJobs() != 0;
  return true;
}

bool TThreadPool::TryQueueJob(SmartPtr<IThreadJob> job) {
  bool short_of_workers = false;
  return PushJob(job, short_of_workers);
}

bool TThreadPool::QueueJob(SmartPtr<IThreadJob> job) {
  bool short_of_workers = false;
  if (!PushJob(job, short_of_workers)) {
    throw EGeneric({"Text", "Thread pool overflowed"},
                   {"JobQueueSize", static_cast<int>(QueueLength())},
                   {"ThreadsSize", static_cast<int>(ThreadCount())});
  }
  if (short_of_workers && ThreadCount() < max_total_threads.load()) AddThread();
  return QueueLength() <= max_total_threads.load();
}

void TThreadPool::SetLimits(unsigned max_total, unsigned min_idle, int thread_priority) {
  max_total_threads.store(max_total);
  min_idle_threads.store(min_idle);
  priority.store(thread_priority);
  size_t missing = 0;
  {
    read_hold hold(queue_lock);
    missing = std::min<size_t>(UncoveredJobs(), max_total);
  }
  for (; missing != 0; --missing) AddThread();
}

// Only the time-out answers false: a procedure call that returns does not
// end the wait.
bool TThreadPool::WaitForAllJobs(unsigned timeout_ms) { return WaitOutlastingCalls(all_done, timeout_ms); }

// The semaphore is emptied with waits that run no procedure calls: an
// interruption between taking counts and clearing the queue would leave
// jobs that no count announces. The dropped jobs are given up and let go
// after the lock.
void TThreadPool::ClearQueue() {
  std::deque<SmartPtr<IThreadJob>> dropped;
  {
    write_hold hold(queue_lock);
    while (WaitForSingleObjectEx(job_semaphore, 0, FALSE) == WAIT_OBJECT_0) {
    }
    dropped.swap(queue);
    queue_length.store(0);
    const int count = static_cast<int>(dropped.size());
    if (count != 0 && running_jobs.fetch_sub(count) == count) all_done.Set();
  }
  for (const SmartPtr<IThreadJob>& job : dropped) job->Abandon();
}

// Every worker is asked to stop (and retired, so that no Cancel revives
// one) before any is waited for: all of them share one bound, and only
// those still alive after it are terminated. Their jobs are settled by
// the stops. The workers have ended (or were terminated) by then, so the
// contexts go without waiting.
void TThreadPool::Shutdown() {
  min_idle_threads.store(0);
  max_total_threads.store(0);
  ClearQueue();
  std::set<SmartPtr<IThreadContext>> workers;
  {
    read_hold hold(threads_lock);
    workers = threads;
  }
  for (const SmartPtr<IThreadContext>& worker : workers) worker->BeginStop();
  const DWORD deadline = GetTickCount() + kShutdownStopMs;
  for (const SmartPtr<IThreadContext>& worker : workers) worker->FinishStop(deadline);
  ClearQueue();
  write_hold hold(threads_lock);
  for (const SmartPtr<IThreadContext>& worker : workers) threads.erase(worker);
  thread_count.store(threads.size());
}

// Idle workers and the queue are compared under the queue lock, where
// both change together; the thread count is checked again by AddThread.
bool TThreadPool::NeedMoreThreads() {
  size_t uncovered = 0;
  {
    read_hold hold(queue_lock);
    uncovered = UncoveredJobs();
  }
  return uncovered != 0 && thread_count.load() < max_total_threads.load();
}

// A worker counts as idle from before its wait for a job until the pop
// that gives it one (PopJob), so each idle worker takes one queued job.
size_t TThreadPool::UncoveredJobs() const {
  const size_t waiting_workers = static_cast<size_t>(std::max(idle.load(), 0));
  return queue.size() > waiting_workers ? queue.size() - waiting_workers : 0;
}

bool TThreadPool::HasExcessIdle() {
  return idle.load() > static_cast<int>(min_idle_threads.load());
}

bool TThreadPool::HasExcessThreads() { return thread_count.load() > max_total_threads.load(); }

// The limit is checked again under the lock: two callers that both saw room
// for one more worker start one between them.
void TThreadPool::AddThread() {
  write_hold hold(threads_lock);
  if (threads.size() >= max_total_threads.load()) return;
  const SmartPtr<IThreadContext> worker = CreateNewThreadContext(static_cast<IThreadOwner*>(this));
  threads.insert(worker);
  thread_count.store(threads.size());
  try {
    worker->Start();
  } catch (...) {
    threads.erase(worker);
    thread_count.store(threads.size());
    throw;
  }
  const int worker_priority = priority.load();
  if (worker_priority != 0) worker->SetPriority(worker_priority);
}

size_t TThreadPool::QueueLength() const { return queue_length.load(); }

size_t TThreadPool::ThreadCount() const { return thread_count.load(); }

std::string TThreadPool::ToString() const {
  char address[16];
  _itoa(static_cast<int>(reinterpret_cast<uintptr_t>(this) & 0xFFFFFFFFu), address, 16);
  return std::string("Thread Pool 0x") + address + " RunningJobs=" + std::to_string(running_jobs.load()) +
         " Threads=" + std::to_string(ThreadCount()) + " Queue=" + std::to_string(QueueLength()) +
         " Idle=" + std::to_string(idle.load()) + " MaxTotalThreads=" + std::to_string(max_total_threads.load()) +
         " MinIdleThreads=" + std::to_string(min_idle_threads.load());
}
