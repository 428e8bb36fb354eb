// Several threads use one TMultiLock for a few seconds in random mixes of
// reads, writes, upgrades, timed attempts and thread-independent holds
// (released by another thread), while everything that must hold is checked
// all the time:
//   - a writer is never inside beside anybody else;
//   - the status always describes a possible state, and each holder finds
//     its own holds in it;
//   - no hold is lost: at the end the lock is free and every hold taken
//     was released;
//   - no timed operation lasts long past its time-out, and every thread
//     finishes once the others stop.
#include <qz/errors/generic.h>
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace {

using namespace multi_lock_test;
using qz_test::WorkerThread;

constexpr int kWorkers = 6;
constexpr DWORD kRunMs = 2000;
// How far past its time-out a timed operation may return: a time-out bounds
// each single wait, and a thread that was woken but lost the race waits
// again; on top come the inner lock's back-off and a busy machine.
constexpr DWORD kTimedSlackMs = 2000;
// A thread not ended this long after the stop counts as stuck.
constexpr DWORD kEndBoundMs = 15000;

// What makes a snapshot of the status impossible, or an empty text.
std::string Inconsistency(const std::string& status) {
  static const std::regex form(
      "(not_locked|locked_read|locked_write)(, ([0-9]+:[RW](,[0-9]+:[RW])*))?(, ([0-9]+) r->w waiters)?");
  std::smatch m;
  if (!std::regex_match(status, m, form)) return "malformed";
  const std::string state = m[1], holds = m[3];
  if (m[6].matched && std::stoi(m[6]) > 1) return "more than one pending upgrade";
  if (state == "not_locked") return holds.empty() && !m[6].matched ? "" : "free with holds";
  if (holds.empty()) return "locked without holds";
  const bool writes = holds.find('W') != std::string::npos;
  if (state == "locked_read") return writes ? "write hold while read-locked" : "";
  if (!writes) return "write-locked without a write hold";
  const std::string owner = holds.substr(0, holds.find(':') + 1);
  for (size_t at = 0; (at = holds.find(',', at)) != std::string::npos;)
    if (holds.compare(++at, owner.size(), owner) != 0) return "write-locked by more than one owner";
  return "";
}

// The lock, the threads using it and what they count. Left alive if a
// thread never comes back, rather than freed under it.
struct Stress {
  TMultiLock lock;
  std::atomic<bool> stop{false}, releaser_stop{false};
  std::atomic<int> readers{0}, writers{0};
  std::atomic<long> taken{0}, released{0}, upgrades{0}, handed_over{0};
  std::mutex mutex;                   // guards the two below
  std::vector<std::string> failures;
  std::deque<bool> handed;            // independent holds (write or not) for the releaser
  std::vector<std::unique_ptr<WorkerThread>> threads;  // the workers, then the releaser

  void Fail(const std::string& what) {
    std::lock_guard<std::mutex> hold(mutex);
    if (failures.size() < 20) failures.push_back(what);
  }
  void CheckStatus() {
    const std::string status = lock.GetStatusString(), wrong = Inconsistency(status);
    if (!wrong.empty()) Fail(wrong + ": \"" + status + "\"");
  }
  // The status is `expected`; or, not `exact`, read-locked with `expected` among the holds.
  void Expect(const std::string& expected, bool exact) {
    const std::string s = lock.GetStatusString();
    if (exact ? s != expected : s.compare(0, 13, "locked_read, ") != 0 || s.find(expected) == std::string::npos)
      Fail("\"" + s + "\" for \"" + expected + "\"");
  }
  // A hold was taken (counted) or is held; checks who else is inside.
  void Enter(bool write) { ++taken, Inside(write); }
  void Inside(bool write) {
    if (write && (++writers != 1 || readers.load() != 0)) Fail("writer beside others");
    if (!write && (++readers, writers.load() != 0)) Fail("reader beside a writer");
  }
  void Leave(bool write) { --(write ? writers : readers); }
  void Release() { lock.Unlock(), ++released; }
  // Runs one attempt and checks that it ended in time.
  template <class Attempt>
  bool Timed(unsigned int timeout, Attempt attempt) {
    const DWORD started = GetTickCount();
    const bool ok = attempt();
    const DWORD took = GetTickCount() - started;
    if (timeout != INFINITE && took > timeout + kTimedSlackMs)
      Fail("timed attempt of " + std::to_string(timeout) + " ms took " + std::to_string(took) + " ms");
    return ok;
  }

  // A read or a write, now and then with more holds nested inside it.
  void DoHold(bool write, unsigned int timeout, bool nested) {
    if (!Timed(timeout, [&] { return write ? lock.WriteLock(timeout) : lock.ReadLock(timeout); })) return;
    Enter(write);
    const std::string mine = write ? "locked_write, " + Write(Me()) : Read(Me());
    Expect(mine, write);
    if (nested) {
      lock.ReadLock();
      if (write) lock.WriteLock();
      taken += write ? 2 : 1;
      Expect(write ? mine + "," + Read(Me()) + "," + Write(Me()) : mine, write);
      Release();
      if (write) Release();
    }
    if (GetTickCount() % 4 == 0) SwitchToThread();
    Leave(write);
    Release();
  }

  // Read, then write over the read. Another reader upgrading at the same
  // time makes one of the two get the dead-lock error; it keeps its read.
  void DoUpgrade(unsigned int timeout) {
    lock.ReadLock();
    Enter(false);
    const std::string r = Read(Me());
    bool upgraded = false;
    try {
      upgraded = Timed(timeout, [&] { return lock.WriteLock(timeout); });
    } catch (const EGeneric& e) {
      const std::string text = e.get_value("Text"), status = e.get_value("Status");
      if (text != "Dead-lock in multilock" || status.find(r) == std::string::npos ||
          status.find(" 1 r->w waiters") == std::string::npos)
        Fail("upgrade error \"" + text + "\" with \"" + status + "\"");
    }
    if (upgraded) {
      ++upgrades;
      Leave(false);
      Enter(true);  // a second hold, over the read
      Expect("locked_write, " + r + "," + Write(Me()), true);
      Leave(true);
      Release();
      Inside(false);  // the read is still held
    }
    Expect(r, false);
    Leave(false);
    Release();
  }

  // The hold goes to the releaser thread, which lets it go a little later.
  void DoIndependent(unsigned int timeout, bool write) {
    const auto take = [&] { return write ? lock.WriteLockThreadIndependent(timeout) : lock.ReadLockThreadIndependent(timeout); };
    if (!Timed(timeout, take)) return;
    Enter(write);
    if (write) Expect("locked_write, 0:W", true);
    ++handed_over;
    std::lock_guard<std::mutex> hold(mutex);
    handed.push_back(write);
  }

  void Worker(unsigned int seed) {
    std::mt19937 random(seed);
    const unsigned int timeouts[] = {0, 1, 5, 20, INFINITE};
    while (!stop) {
      const unsigned int kind = random() % 100, timeout = timeouts[random() % 5];
      const bool nested = random() % 3 == 0;
      if (kind < 45)
        DoHold(false, kind < 30 ? INFINITE : timeout, nested);
      else if (kind < 72)
        DoHold(true, kind < 60 ? INFINITE : timeout, nested);
      else if (kind < 86)
        DoUpgrade(random() % 2 ? INFINITE : timeout);
      else
        DoIndependent(timeout, random() % 3 == 0);
    }
  }

  void Releaser(unsigned int seed) {
    std::mt19937 random(seed);
    for (;;) {
      std::unique_lock<std::mutex> hold(mutex);
      if (handed.empty()) {
        hold.unlock();
        if (releaser_stop) return;
        Sleep(1);
        continue;
      }
      const bool write = handed.front();
      handed.pop_front();
      hold.unlock();
      if (random() % 4 == 0) Sleep(1);
      Leave(write);
      lock.UnlockThreadIndependent(), ++released;
    }
  }
};

TEST(TMultiLockStress, RandomMixesKeepEveryRuleAndLoseNoHold) {
  auto* stress = new Stress();
  const unsigned int seed = GetTickCount();
  std::printf("  seed %u\n", seed);
  for (int i = 0; i < kWorkers; ++i)
    stress->threads.emplace_back(new WorkerThread([stress, seed, i] { stress->Worker(seed + i); }));
  stress->threads.emplace_back(new WorkerThread([stress, seed] { stress->Releaser(seed + kWorkers); }));

  for (const DWORD start = GetTickCount(); GetTickCount() - start < kRunMs; Sleep(1)) stress->CheckStatus();
  stress->stop = true;
  const DWORD stopped = GetTickCount();
  bool all_ended = true;
  for (int i = 0; i < kWorkers; ++i) {
    while (!stress->threads[i]->Join(10) && GetTickCount() - stopped < kEndBoundMs) stress->CheckStatus();
    all_ended = all_ended && stress->threads[i]->Join(0);
  }
  stress->releaser_stop = true;
  all_ended = all_ended && stress->threads[kWorkers]->Join(kEndBoundMs);
  ASSERT_TRUE(all_ended) << "a thread is stuck: " << stress->lock.GetStatusString();

  for (const auto& thread : stress->threads) EXPECT_EQ(thread->error(), "");
  for (const std::string& failure : stress->failures) ADD_FAILURE() << failure;
  EXPECT_EQ(stress->lock.GetStatusString(), "not_locked");
  EXPECT_EQ(stress->taken.load(), stress->released.load());
  EXPECT_EQ(stress->readers.load() + stress->writers.load(), 0);
  EXPECT_GT(stress->upgrades.load(), 0);
  EXPECT_GT(stress->handed_over.load(), 0);
  delete stress;
}

}  // namespace
