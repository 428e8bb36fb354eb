// Several threads use one TMultiLock for a few seconds in random mixes of
// reads, writes, upgrades, timed attempts and thread-independent holds
// (released by another thread), while everything that must hold is checked
// all the time:
//   - a writer is never inside beside anybody else;
//   - the status always describes a possible state (the owners agree with
//     it), and each holder finds its own holds in it;
//   - no hold is lost: at the end the lock is free and every hold taken
//     was released;
//   - no thread stays in a timed operation long past its time-out, and
//     every thread finishes once the others stop.
#include <qz/errors/generic.h>
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <deque>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace {

using multi_lock_test::Read;
using multi_lock_test::Write;

constexpr int kWorkers = 6;
constexpr DWORD kRunMs = 3000;
// How far past its time-out a timed operation may return: a time-out bounds
// each single wait, and a thread that was woken but lost the race waits
// again; on top come the inner lock's back-off and a busy machine.
constexpr DWORD kTimedSlackMs = 2000;
// An untimed operation still running after this long counts as stuck.
constexpr DWORD kUntimedBoundMs = 15000;

// The parts of a status text: state, holds, and pending upgrades.
struct Status {
  std::string state;
  std::vector<std::string> holds;
  int upgraders = 0;
  bool well_formed = true;
};

Status Parse(const std::string& text) {
  Status status;
  size_t start = 0;
  std::vector<std::string> parts;
  for (size_t comma; (comma = text.find(", ", start)) != std::string::npos; start = comma + 2)
    parts.push_back(text.substr(start, comma - start));
  parts.push_back(text.substr(start));
  status.state = parts[0];
  for (size_t i = 1; i < parts.size(); ++i) {
    const std::string& part = parts[i];
    if (part.find(" r->w waiters") != std::string::npos) {
      status.upgraders = std::stoi(part);
      status.well_formed = status.well_formed && i + 1 == parts.size();
    } else if (i == 1) {
      for (size_t at = 0, next; at <= part.size(); at = next + 1) {
        next = part.find(',', at);
        if (next == std::string::npos) next = part.size();
        status.holds.push_back(part.substr(at, next - at));
      }
    } else {
      status.well_formed = false;
    }
  }
  return status;
}

// What any snapshot of the lock must satisfy, or an empty text.
std::string Inconsistency(const std::string& text) {
  const Status s = Parse(text);
  if (!s.well_formed) return "malformed";
  if (s.upgraders > 1) return "more than one pending upgrade";
  int writes = 0;
  bool one_owner = true;
  for (const std::string& hold : s.holds) {
    const size_t colon = hold.find(':');
    if (colon == std::string::npos || colon + 2 != hold.size()) return "malformed hold";
    if (hold[colon + 1] == 'W') ++writes;
    one_owner = one_owner && hold.compare(0, colon + 1, s.holds[0], 0, s.holds[0].find(':') + 1) == 0;
  }
  if (s.state == "not_locked") return s.holds.empty() && s.upgraders == 0 ? "" : "free with holds";
  if (s.holds.empty()) return "locked without holds";
  if (s.state == "locked_read") return writes == 0 ? "" : "write hold while read-locked";
  if (s.state == "locked_write") {
    if (writes == 0) return "write-locked without a write hold";
    return one_owner ? "" : "write-locked by more than one owner";
  }
  return "unknown state";
}

// A thread-independent hold waiting for the releaser.
struct Handed {
  bool write;
};

class Stress {
 public:
  explicit Stress(TMultiLock& lock) : lock_(lock) {
    for (auto& p : progress) p = kIdle;
  }

  void Fail(const std::string& what) {
    std::lock_guard<std::mutex> hold(failures_mutex_);
    if (failures_.size() < 20) failures_.push_back(what);
  }
  std::vector<std::string> failures() {
    std::lock_guard<std::mutex> hold(failures_mutex_);
    return failures_;
  }

  std::atomic<bool> stop{false};
  std::atomic<bool> releaser_stop{false};
  std::atomic<int> readers{0}, writers{0};
  std::atomic<long> taken{0}, released{0}, timed_out{0}, dead_locks{0}, upgrades{0}, handed_over{0};
  // The most a timed attempt took beyond its time-out, in ms.
  std::atomic<long> overshoot{0};

  // Per worker: when its current operation began (high half) and its
  // time-out (low half), or kIdle; the monitor uses these to spot a stuck
  // thread. One word, so that the two are always read together.
  static constexpr unsigned long long kIdle = ~0ull;
  std::atomic<unsigned long long> progress[kWorkers];

  void Worker(int index, unsigned int seed);
  void Releaser(unsigned int seed);
  void Monitor();

 private:
  std::string Me() const { return std::to_string(GetCurrentThreadId()); }

  // A hold was taken: counts it and comes in.
  void Enter(bool write) {
    ++taken;
    Inside(write);
  }
  void Inside(bool write) {
    if (write) {
      const int w = ++writers;
      if (w != 1 || readers.load() != 0) Fail("writer beside others");
    } else {
      ++readers;
      if (writers.load() != 0) Fail("reader beside a writer");
    }
  }
  void Leave(bool write) {
    if (write)
      --writers;
    else
      --readers;
  }
  void Released() { ++released; }

  void ExpectStatus(bool exact, const std::string& expected, const char* where) {
    const std::string status = lock_.GetStatusString();
    const bool ok = exact ? status == expected : status.compare(0, expected.size(), expected) == 0;
    if (!ok) Fail(std::string(where) + ": \"" + status + "\" for \"" + expected + "\"");
  }
  void ExpectMine(const std::string& hold, const char* where) {
    const std::string status = lock_.GetStatusString();
    if (status.compare(0, 13, "locked_read, ") != 0 || status.find(hold) == std::string::npos)
      Fail(std::string(where) + ": \"" + status + "\" lacks " + hold);
  }

  // Runs one timed or untimed attempt, timing it against its bound.
  template <class Attempt>
  bool Attempted(int index, unsigned int timeout, Attempt attempt) {
    const DWORD started = GetTickCount();
    progress[index] = static_cast<unsigned long long>(started) << 32 | timeout;
    const bool ok = attempt();
    progress[index] = kIdle;
    const DWORD took = GetTickCount() - started;
    if (timeout != INFINITE && took > timeout) {
      long over = static_cast<long>(took - timeout), seen = overshoot.load();
      while (over > seen && !overshoot.compare_exchange_weak(seen, over)) {
      }
    }
    if (timeout != INFINITE && took > timeout + kTimedSlackMs)
      Fail("timed attempt of " + std::to_string(timeout) + " ms took " + std::to_string(took) + " ms");
    if (!ok) ++timed_out;
    return ok;
  }

  void DoRead(int index, unsigned int timeout, bool nested);
  void DoWrite(int index, unsigned int timeout, bool nested);
  void DoUpgrade(int index, unsigned int timeout);
  void DoIndependent(int index, unsigned int timeout, bool write);

  TMultiLock& lock_;
  std::mutex failures_mutex_;
  std::vector<std::string> failures_;
  std::mutex handed_mutex_;
  std::deque<Handed> handed_;
};

void Stress::DoRead(int index, unsigned int timeout, bool nested) {
  if (!Attempted(index, timeout, [&] { return lock_.ReadLock(timeout); })) return;
  Enter(false);
  ExpectMine(Read(GetCurrentThreadId()), "reader");
  if (nested) {
    lock_.ReadLock();
    ++taken;
    ExpectMine(Read(GetCurrentThreadId()), "nested reader");
    lock_.Unlock();
    Released();
  }
  if (GetTickCount() % 4 == 0) SwitchToThread();
  Leave(false);
  lock_.Unlock();
  Released();
}

void Stress::DoWrite(int index, unsigned int timeout, bool nested) {
  if (!Attempted(index, timeout, [&] { return lock_.WriteLock(timeout); })) return;
  Enter(true);
  const std::string w = Write(GetCurrentThreadId());
  ExpectStatus(true, "locked_write, " + w, "writer");
  if (nested) {
    lock_.ReadLock();
    lock_.WriteLock();
    taken += 2;
    ExpectStatus(true, "locked_write, " + w + "," + Read(GetCurrentThreadId()) + "," + w, "nested writer");
    lock_.Unlock();
    lock_.Unlock();
    released += 2;
  }
  if (GetTickCount() % 4 == 0) SwitchToThread();
  Leave(true);
  lock_.Unlock();
  Released();
}

// Read, then write over the read. Another reader upgrading at the same time
// makes one of the two get the dead-lock error; it keeps its read.
void Stress::DoUpgrade(int index, unsigned int timeout) {
  if (!Attempted(index, INFINITE, [&] { return lock_.ReadLock(INFINITE); })) return;
  Enter(false);
  const std::string r = Read(GetCurrentThreadId());
  bool upgraded = false;
  try {
    upgraded = Attempted(index, timeout, [&] { return lock_.WriteLock(timeout); });
  } catch (const EGeneric& e) {
    ++dead_locks;
    if (std::string(e.get_value("Text")) != "Dead-lock in multilock") Fail("unexpected error on upgrade");
    const std::string status = e.get_value("Status");
    if (status.find(r) == std::string::npos || status.find(" 1 r->w waiters") == std::string::npos)
      Fail("dead-lock status \"" + status + "\"");
  }
  if (upgraded) {
    ++upgrades;
    Leave(false);
    Enter(true);  // a second hold, over the read
    ExpectStatus(true, "locked_write, " + r + "," + Write(GetCurrentThreadId()), "upgrader");
    Leave(true);
    lock_.Unlock();
    Released();
    Inside(false);  // the read is still held
  }
  ExpectMine(r, "reader after upgrade");
  Leave(false);
  lock_.Unlock();
  Released();
}

// The hold goes to the releaser thread, which lets it go a little later.
void Stress::DoIndependent(int index, unsigned int timeout, bool write) {
  const bool ok = Attempted(index, timeout, [&] {
    return write ? lock_.WriteLockThreadIndependent(timeout) : lock_.ReadLockThreadIndependent(timeout);
  });
  if (!ok) return;
  Enter(write);
  if (write) ExpectStatus(true, "locked_write, 0:W", "independent writer");
  ++handed_over;
  std::lock_guard<std::mutex> hold(handed_mutex_);
  handed_.push_back({write});
}

void Stress::Worker(int index, unsigned int seed) {
  std::mt19937 random(seed);
  const unsigned int timeouts[] = {0, 1, 5, 20, INFINITE};
  while (!stop) {
    const unsigned int kind = random() % 100;
    const unsigned int timeout = timeouts[random() % 5];
    const bool nested = random() % 3 == 0;
    if (kind < 30)
      DoRead(index, INFINITE, nested);
    else if (kind < 45)
      DoRead(index, timeout, nested);
    else if (kind < 60)
      DoWrite(index, INFINITE, nested);
    else if (kind < 72)
      DoWrite(index, timeout, nested);
    else if (kind < 86)
      DoUpgrade(index, random() % 2 ? INFINITE : timeout);
    else
      DoIndependent(index, timeout, random() % 3 == 0);
  }
}

void Stress::Releaser(unsigned int seed) {
  std::mt19937 random(seed);
  for (;;) {
    bool have = false;
    Handed next{};
    {
      std::lock_guard<std::mutex> hold(handed_mutex_);
      if (!handed_.empty()) {
        next = handed_.front();
        handed_.pop_front();
        have = true;
      }
    }
    if (!have) {
      if (releaser_stop) return;
      Sleep(1);
      continue;
    }
    if (random() % 4 == 0) Sleep(1);
    Leave(next.write);
    lock_.UnlockThreadIndependent();
    Released();
  }
}

void Stress::Monitor() {
  const std::string status = lock_.GetStatusString();
  const std::string wrong = Inconsistency(status);
  if (!wrong.empty()) Fail(wrong + ": \"" + status + "\"");
  const DWORD now = GetTickCount();
  for (int i = 0; i < kWorkers; ++i) {
    const unsigned long long p = progress[i];
    if (p == kIdle) continue;
    const DWORD timeout = static_cast<DWORD>(p), took = now - static_cast<DWORD>(p >> 32);
    const DWORD bound = timeout == INFINITE ? kUntimedBoundMs : timeout + kTimedSlackMs;
    if (took > bound) Fail("worker " + std::to_string(i) + " stuck for " + std::to_string(took) + " ms");
  }
}

struct Thread {
  HANDLE handle;
  std::function<void()> body;
  static DWORD WINAPI Run(void* self) {
    static_cast<Thread*>(self)->body();
    return 0;
  }
};

TEST(TMultiLockStress, RandomMixesKeepEveryRuleAndLoseNoHold) {
  // Left alive if a thread never comes back, rather than freed under it.
  struct Shared {
    TMultiLock lock;
    Stress stress{lock};
  };
  auto* shared = new Shared();
  TMultiLock* lock = &shared->lock;
  Stress* stress = &shared->stress;
  const unsigned int seed = GetTickCount();
  std::printf("  seed %u\n", seed);

  std::vector<Thread> threads(kWorkers + 1);
  for (int i = 0; i < kWorkers; ++i) threads[i].body = [=] { stress->Worker(i, seed + i); };
  threads[kWorkers].body = [=] { stress->Releaser(seed + kWorkers); };
  for (Thread& t : threads) t.handle = CreateThread(nullptr, 0, &Thread::Run, &t, 0, nullptr);

  const DWORD start = GetTickCount();
  while (GetTickCount() - start < kRunMs) {
    stress->Monitor();
    Sleep(1);
  }
  stress->stop = true;
  bool all_ended = true;
  const DWORD deadline = GetTickCount() + kUntimedBoundMs;
  for (int i = 0; i < kWorkers; ++i) {
    while (WaitForSingleObject(threads[i].handle, 10) == WAIT_TIMEOUT && GetTickCount() < deadline)
      stress->Monitor();
    all_ended = all_ended && WaitForSingleObject(threads[i].handle, 0) == WAIT_OBJECT_0;
  }
  stress->releaser_stop = true;
  all_ended = all_ended && WaitForSingleObject(threads[kWorkers].handle, kUntimedBoundMs) == WAIT_OBJECT_0;
  for (Thread& t : threads) CloseHandle(t.handle);
  ASSERT_TRUE(all_ended) << "a thread is stuck: " << lock->GetStatusString();

  for (const std::string& failure : stress->failures()) ADD_FAILURE() << failure;
  EXPECT_EQ(lock->GetStatusString(), "not_locked");
  EXPECT_EQ(stress->taken.load(), stress->released.load());
  EXPECT_EQ(stress->readers.load(), 0);
  EXPECT_EQ(stress->writers.load(), 0);
  std::printf("  %ld holds, %ld upgrades, %ld dead-locks told, %ld timed attempts given up, %ld handed over, "
              "%ld ms most past a time-out\n",
              stress->taken.load(), stress->upgrades.load(), stress->dead_locks.load(), stress->timed_out.load(),
              stress->handed_over.load(), stress->overshoot.load());
  EXPECT_GT(stress->upgrades.load(), 0);
  EXPECT_GT(stress->handed_over.load(), 0);
  delete shared;
}

}  // namespace
