// What TMultiLock costs next to the platform's slim reader/writer lock (SRW),
// measured in one run. Run it with `scripts/bench multi`.
//
//   1. Uncontended, before any thread ever waited (no event exists): ns per
//      read cycle plus write cycle (lock + unlock each).
//   2. The same once every event exists: a lock that once saw contention
//      must go back to making no kernel call.
//   3. Two threads adding to one counter under write locks.
//   4. Four threads, nine reads of a shared value to one write.
//   5. What the lock's spin before a sleep is weighed against: a pause
//      instruction, giving up the processor, and one sleep on an event
//      woken by another thread.
//
// Single-thread figures are the best of several rounds, which filters out
// rounds the machine spent on something else; contended figures are the
// median of three rounds of a second, each with a fresh lock.
#include <qz/sync/multi_lock.h>

#include "bench_support.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

using bench::best_ns;
using bench::now;
using bench::ticks_per_ns;

void row(const char* what, double ns) { std::printf("  %-46s %10.1f ns\n", what, ns); }

bench::goals goals;

void compare(const char* name, double ours, double floor, double limit) {
  std::printf("  %-46s %10.2f x\n", "TMultiLock vs SRW", ours / floor);
  goals.within(name, ours / floor, limit);
}

// One read cycle and one write cycle through the interface, as callers use it.
double multi_cycle_ns(IMultiLock& lock, int rounds, int count) {
  return best_ns(rounds, count, [&](int n) {
    for (int i = 0; i < n; ++i) {
      lock.ReadLock();
      lock.Unlock();
      lock.WriteLock();
      lock.Unlock();
    }
  });
}

double srw_cycle_ns(int rounds, int count) {
  SRWLOCK srw = SRWLOCK_INIT;
  return best_ns(rounds, count, [&](int n) {
    for (int i = 0; i < n; ++i) {
      AcquireSRWLockShared(&srw);
      ReleaseSRWLockShared(&srw);
      AcquireSRWLockExclusive(&srw);
      ReleaseSRWLockExclusive(&srw);
    }
  });
}

// Makes a thread wait once for each of the lock's three events, so that
// all of them exist afterwards.
void make_events(TMultiLock& lock) {
  struct Waiter {
    TMultiLock* lock;
    bool upgrade;
    static DWORD WINAPI Run(void* p) {
      auto* w = static_cast<Waiter*>(p);
      if (w->upgrade) {
        w->lock->ReadLock();
        w->lock->WriteLock(1);  // beside another reader: waits for sole-owner or free
        w->lock->Unlock();
      } else {
        w->lock->ReadLock(1);  // beside a writer: waits for read-open or free
      }
      return 0;
    }
  };
  for (bool upgrade : {false, true}) {
    if (upgrade)
      lock.ReadLock();
    else
      lock.WriteLock();
    Waiter waiter{&lock, upgrade};
    HANDLE thread = CreateThread(nullptr, 0, &Waiter::Run, &waiter, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    lock.Unlock();
  }
}

void uncontended() {
  const int rounds = 7, count = 500000;
  std::printf("\nUncontended read + write cycle (best of %d rounds of %d):\n", rounds, count);
  TMultiLock fresh;
  const double before = multi_cycle_ns(fresh, rounds, count);
  TMultiLock met;
  make_events(met);
  const double after = multi_cycle_ns(met, rounds, count);
  const double srw = srw_cycle_ns(rounds, count);
  row("TMultiLock, before any wait", before);
  row("TMultiLock, once its events exist", after);
  row("SRW lock shared + exclusive", srw);
  compare("uncontended-before-wait", before, srw, 1.5);
  compare("uncontended-after-wait", after, srw, 2.0);
}

// `threads` threads call `op(counter, i)` with i = 0, 1, 2... for `ms`
// milliseconds; ns per call over all threads. Checks that every write
// reached the counter (every call writes, or those with i % 10 == 0).
double hammer_once(int threads, const std::function<void(long&, long)>& op, bool all_writes, DWORD ms,
                   bool& right) {
  struct Shared {
    const std::function<void(long&, long)>* op;
    std::atomic<bool> stop{false};
    long counter = 0;
    std::atomic<long> calls{0};
    std::atomic<long> writes{0};
    bool all_writes;
  } shared;
  shared.op = &op;
  shared.all_writes = all_writes;
  auto body = [](void* p) -> DWORD {
    auto* s = static_cast<Shared*>(p);
    long i = 0;
    for (; !s->stop; ++i) (*s->op)(s->counter, i);
    s->calls += i;
    s->writes += s->all_writes ? i : (i + 9) / 10;
    return 0;
  };
  std::vector<HANDLE> handles(threads);
  const __int64 start = now();
  for (HANDLE& t : handles) t = CreateThread(nullptr, 0, body, &shared, 0, nullptr);
  Sleep(ms);
  shared.stop = true;
  WaitForMultipleObjects(threads, handles.data(), TRUE, INFINITE);
  const double elapsed_ns = static_cast<double>(now() - start) / ticks_per_ns();
  for (HANDLE t : handles) CloseHandle(t);
  right = right && shared.counter == shared.writes.load();
  return elapsed_ns / shared.calls.load();
}

// The median of three rounds, each with a fresh lock from `make`, and the
// spread, which for a lock that ends up in the kernel is wide.
double hammer(const char* what, int threads, bool all_writes,
              const std::function<std::function<void(long&, long)>()>& make) {
  double ns[3];
  bool right = true;
  for (double& n : ns) n = hammer_once(threads, make(), all_writes, 1000, right);
  std::sort(ns, ns + 3);
  std::printf("  %-46s %10.1f ns  (%.1f .. %.1f%s)\n", what, ns[1], ns[0], ns[2], right ? "" : ", COUNT WRONG");
  return ns[1];
}

// Every call writes when `all_writes`; otherwise one call in ten writes and
// the others read the counter.
template <class Lock, class Read, class Write>
std::function<void(long&, long)> mixed(Lock* lock, Read read, Write write, bool all_writes) {
  return [=](long& counter, long i) {
    if (all_writes || i % 10 == 0) {
      write(lock, [&] { ++counter; });
    } else {
      read(lock, [&] {
        volatile long seen = counter;
        (void)seen;
      });
    }
  };
}

void contended(const char* title, const char* goal, int threads, bool all_writes) {
  std::printf("\n%s (median of 3 rounds of 1 s, ns per operation):\n", title);
  const auto multi_read = [](TMultiLock* l, const std::function<void()>& f) { l->ReadLock(); f(); l->Unlock(); };
  const auto multi_write = [](TMultiLock* l, const std::function<void()>& f) { l->WriteLock(); f(); l->Unlock(); };
  const auto srw_read = [](SRWLOCK* l, const std::function<void()>& f) {
    AcquireSRWLockShared(l);
    f();
    ReleaseSRWLockShared(l);
  };
  const auto srw_write = [](SRWLOCK* l, const std::function<void()>& f) {
    AcquireSRWLockExclusive(l);
    f();
    ReleaseSRWLockExclusive(l);
  };
  std::vector<std::unique_ptr<TMultiLock>> multis;
  const double ours = hammer("TMultiLock", threads, all_writes, [&] {
    multis.push_back(std::make_unique<TMultiLock>());
    return mixed(multis.back().get(), multi_read, multi_write, all_writes);
  });
  std::vector<std::unique_ptr<SRWLOCK>> srws;
  const double srw = hammer("SRW lock", threads, all_writes, [&] {
    srws.push_back(std::make_unique<SRWLOCK>());
    InitializeSRWLock(srws.back().get());
    return mixed(srws.back().get(), srw_read, srw_write, all_writes);
  });
  compare(goal, ours, srw, 5.0);
}

// One thread wakes another through an auto-reset event and is woken back:
// ns per wake, which is what a waiter pays for sleeping instead of spinning.
double wake_ns() {
  struct Pair {
    HANDLE ping = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE pong = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    int count = 20000;
  } pair;
  HANDLE thread = CreateThread(nullptr, 0, [](void* p) -> DWORD {
    auto* q = static_cast<Pair*>(p);
    for (int i = 0; i < q->count; ++i) {
      WaitForSingleObject(q->ping, INFINITE);
      SetEvent(q->pong);
    }
    return 0;
  }, &pair, 0, nullptr);
  const __int64 start = now();
  for (int i = 0; i < pair.count; ++i) SignalObjectAndWait(pair.ping, pair.pong, INFINITE, FALSE);
  const double ns = static_cast<double>(now() - start) / ticks_per_ns() / (2.0 * pair.count);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  CloseHandle(pair.ping);
  CloseHandle(pair.pong);
  return ns;
}

void spin_bounds() {
  std::printf("\nWhat a spin is weighed against (best of 5 rounds):\n");
  row("pause instruction", best_ns(5, 1000000, [](int n) {
        for (int i = 0; i < n; ++i) YieldProcessor();
      }));
  row("SwitchToThread, nothing else ready", best_ns(5, 100000, [](int n) {
        for (int i = 0; i < n; ++i) SwitchToThread();
      }));
  row("one sleep on an event, woken by another thread", wake_ns());
}

}  // namespace

int main() {
  std::printf("TMultiLock benchmark\n");
  uncontended();
  contended("Two threads adding to one counter under write locks", "two-threads-writes", 2, true);
  contended("Four threads, nine reads to one write", "four-threads-9-reads-1-write", 4, false);
  spin_bounds();
  std::printf("\n");
  goals.print();
  return 0;
}
