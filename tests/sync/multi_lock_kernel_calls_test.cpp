// The multi-lock asks the kernel only while somebody waits: once waiters
// are gone, uncontended holds leave the events alone. Spinning before a
// sleep never stretches a time-out. (Waking sleepers is in the waking and
// stress tests.)
#include "multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using namespace multi_lock_test;

constexpr unsigned int kFree = 2, kSoleOwner = 4, kReadOpen = 8;
constexpr unsigned int kAllBits[] = {kFree, kSoleOwner, kReadOpen};

bool IsSet(HANDLE event) { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; }

// Threads that write, read and upgrade over each other; now and then a hold
// lasts long enough for the others to give up spinning and sleep.
void Contend(TMultiLock& lock) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&lock, t] {
      for (int i = 0; i < 1000; ++i) {
        t % 2 ? lock.ReadLock() : lock.WriteLock();
        try {
          if (t % 2 && i % 7 == 0) lock.WriteLock(), lock.Unlock();
        } catch (const EGeneric&) {  // two upgraders: the dead-lock rule
        }
        if (i % 100 == 0) Sleep(2);
        lock.Unlock();
      }
    });
  for (std::thread& t : threads) t.join();
}

TEST(TMultiLockKernelCalls, WaitersAreCountedOffAndUncontendedHoldsLeaveTheEventsAlone) {
  ProbedLock lock;
  Contend(lock);
  ASSERT_EQ(lock.GetStatusString(), "not_locked");
  for (unsigned int bit : kAllBits) EXPECT_EQ(lock.waiters(bit), 0u) << "bit " << bit;
  ASSERT_TRUE(lock.has_event(kFree)) << "nobody slept";

  // An event nobody waits on stays as it was, whatever the holds do.
  const HANDLE free_event = lock.event_for(kFree);
  ResetEvent(free_event);
  Do(lock, "ruwu");
  EXPECT_FALSE(IsSet(free_event)) << "a release set the free event with nobody waiting";
  SetEvent(free_event);
  lock.WriteLock();
  EXPECT_TRUE(IsSet(free_event)) << "a hold reset the free event with nobody waiting";
  lock.Unlock();
}

// Time-outs bound the whole call, spin included: 0 never waits, a short one
// ends near its time while the holder stays.
TEST(TMultiLockKernelCalls, TimedCallsEndInTimeWhileTheLockIsHeld) {
  ProbedLock lock;
  Actor holder;
  ReleaseOnExit cleanup(lock);
  ASSERT_TRUE(holder.Run([&] { lock.WriteLock(); }));
  for (unsigned int timeout : {0u, 200u})
    for (bool read : {true, false}) {
      const DWORD start = GetTickCount();
      EXPECT_FALSE(read ? lock.ReadLock(timeout) : lock.WriteLock(timeout));
      const DWORD took = GetTickCount() - start;
      EXPECT_LT(took, timeout + 1500) << (read ? "read" : "write") << " with time-out " << timeout;
      EXPECT_GE(took + 20, timeout);
    }
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(holder.id()));
  for (unsigned int bit : kAllBits) EXPECT_EQ(lock.waiters(bit), 0u);
  ASSERT_TRUE(holder.Run([&] { lock.Unlock(); }));
}

}  // namespace
