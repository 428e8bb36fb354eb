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
constexpr DWORD kRunMs = 2000;
// How far past its time-out a timed operation may return: a time-out bounds
// each single wait, and a thread that was woken but lost the race waits
// again; on top come the inner lock's back-off and a busy machine.
constexpr DWORD kTimedSlackMs = 2000;
// An untimed operation still running after this long counts as stuck.
constexpr DWORD kUntimedBoundMs = 15000;

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t at; (at = text.find(separator, start)) != std::string::npos; start = at + separator.size())
    parts.push_back(text.substr(start, at - start));
  parts.push_back(text.substr(start));
  return parts;
}

// What any snapshot of the lock must satisfy, or an empty text.
std::string Inconsistency(const std::string& text) {
  std::vector<std::string> parts = Split(text, ", ");
  const std::string state = parts[0];
  int upgraders = 0;
  if (parts.size() > 1 && parts.back().find(" r->w waiters") != std::string::npos) {
    upgraders = std::stoi(parts.back());
    parts.pop_back();
  }
  if (parts.size() > 2) return "malformed";
  if (upgraders > 1) return "more than one pending upgrade";
  const std::vector<std::string> holds = parts.size() == 2 ? Split(parts[1], ",") : std::vector<std::string>();
  int writes = 0;
  bool one_owner = true;
  for (const std::string& hold : holds) {
    const size_t colon = hold.find(':');
    if (colon == std::string::npos || colon + 2 != hold.size()) return "malformed hold";
    if (hold[colon + 1] == 'W') ++writes;
    one_owner = one_owner && hold.compare(0, colon + 1, holds[0], 0, holds[0].find(':') + 1) == 0;
  }
  if (state == "not_locked") return holds.empty() && upgraders == 0 ? "" : "free with holds";
  if (holds.empty()) return "locked without holds";
  if (state == "locked_read") return writes == 0 ? "" : "write hold while read-locked";
  if (state != "locked_write") return "unknown state";
  if (writes == 0) return "write-locked without a write hold";
  return one_owner ? "" : "write-locked by more than one owner";
}

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

  std::atomic<bool> stop{false}, releaser_stop{false};
  std::atomic<int> readers{0}, writers{0};
  std::atomic<long> taken{0}, released{0}, upgrades{0}, handed_over{0};

  // Per worker: when its current operation began (high half) and its
  // time-out (low half), or kIdle; the monitor uses these to spot a stuck
  // thread. One word, so that the two are always read together.
  static constexpr unsigned long long kIdle = ~0ull;
  std::atomic<unsigned long long> progress[kWorkers];

  void Worker(int index, unsigned int seed);
  void Releaser(unsigned int seed);
  void Monitor();

 private:
  // A hold was taken (counted) or is held; checks who else is inside.
  void Enter(bool write) {
    ++taken;
    Inside(write);
  }
  void Inside(bool write) {
    if (write && (++writers != 1 || readers.load() != 0)) Fail("writer beside others");
    if (!write && (++readers, writers.load() != 0)) Fail("reader beside a writer");
  }
  void Leave(bool write) { --(write ? writers : readers); }
  void Release() {
    lock_.Unlock();
    ++released;
  }

  void ExpectStatus(const std::string& expected, const char* where) {
    const std::string status = lock_.GetStatusString();
    if (status != expected) Fail(std::string(where) + ": \"" + status + "\" for \"" + expected + "\"");
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
    if (timeout != INFINITE && took > timeout + kTimedSlackMs)
      Fail("timed attempt of " + std::to_string(timeout) + " ms took " + std::to_string(took) + " ms");
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
  std::deque<bool> handed_;  // independent holds (write or not) for the releaser
};

void Stress::DoRead(int index, unsigned int timeout, bool nested) {
  if (!Attempted(index, timeout, [&] { return lock_.ReadLock(timeout); })) return;
  Enter(false);
  const std::string r = Read(GetCurrentThreadId());
  ExpectMine(r, "reader");
  if (nested) {
    lock_.ReadLock();
    ++taken;
    ExpectMine(r, "nested reader");
    Release();
  }
  if (GetTickCount() % 4 == 0) SwitchToThread();
  Leave(false);
  Release();
}

void Stress::DoWrite(int index, unsigned int timeout, bool nested) {
  if (!Attempted(index, timeout, [&] { return lock_.WriteLock(timeout); })) return;
  Enter(true);
  const std::string w = Write(GetCurrentThreadId());
  ExpectStatus("locked_write, " + w, "writer");
  if (nested) {
    lock_.ReadLock();
    lock_.WriteLock();
    taken += 2;
    ExpectStatus("locked_write, " + w + "," + Read(GetCurrentThreadId()) + "," + w, "nested writer");
    Release();
    Release();
  }
  if (GetTickCount() % 4 == 0) SwitchToThread();
  Leave(true);
  Release();
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
    if (std::string(e.get_value("Text")) != "Dead-lock in multilock") Fail("unexpected error on upgrade");
    const std::string status = e.get_value("Status");
    if (status.find(r) == std::string::npos || status.find(" 1 r->w waiters") == std::string::npos)
      Fail("dead-lock status \"" + status + "\"");
  }
  if (upgraded) {
    ++upgrades;
    Leave(false);
    Enter(true);  // a second hold, over the read
    ExpectStatus("locked_write, " + r + "," + Write(GetCurrentThreadId()), "upgrader");
    Leave(true);
    Release();
    Inside(false);  // the read is still held
  }
  ExpectMine(r, "reader after upgrade");
  Leave(false);
  Release();
}

// The hold goes to the releaser thread, which lets it go a little later.
void Stress::DoIndependent(int index, unsigned int timeout, bool write) {
  const bool ok = Attempted(index, timeout, [&] {
    return write ? lock_.WriteLockThreadIndependent(timeout) : lock_.ReadLockThreadIndependent(timeout);
  });
  if (!ok) return;
  Enter(write);
  if (write) ExpectStatus("locked_write, 0:W", "independent writer");
  ++handed_over;
  std::lock_guard<std::mutex> hold(handed_mutex_);
  handed_.push_back(write);
}

void Stress::Worker(int index, unsigned int seed) {
  std::mt19937 random(seed);
  const unsigned int timeouts[] = {0, 1, 5, 20, INFINITE};
  while (!stop) {
    const unsigned int kind = random() % 100;
    const unsigned int timeout = timeouts[random() % 5];
    const bool nested = random() % 3 == 0;
    if (kind < 45)
      DoRead(index, kind < 30 ? INFINITE : timeout, nested);
    else if (kind < 72)
      DoWrite(index, kind < 60 ? INFINITE : timeout, nested);
    else if (kind < 86)
      DoUpgrade(index, random() % 2 ? INFINITE : timeout);
    else
      DoIndependent(index, timeout, random() % 3 == 0);
  }
}

void Stress::Releaser(unsigned int seed) {
  std::mt19937 random(seed);
  for (;;) {
    std::unique_lock<std::mutex> hold(handed_mutex_);
    if (handed_.empty()) {
      hold.unlock();
      if (releaser_stop) return;
      Sleep(1);
      continue;
    }
    const bool write = handed_.front();
    handed_.pop_front();
    hold.unlock();
    if (random() % 4 == 0) Sleep(1);
    Leave(write);
    lock_.UnlockThreadIndependent();
    ++released;
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
  EXPECT_GT(stress->upgrades.load(), 0);
  EXPECT_GT(stress->handed_over.load(), 0);
  delete shared;
}

}  // namespace
