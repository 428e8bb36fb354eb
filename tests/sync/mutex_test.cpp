#include <qz/sync/mutex.h>

#include "support/test_threads.h"

#include <gtest/gtest.h>

namespace {

using qz_test::WorkerThread;

// Whether another thread can take `mutex` right now (and gives it back).
bool FreeForOthers(TMutex& mutex) {
  bool taken = false;
  WorkerThread([&] {
    if ((taken = mutex.Lock(0))) mutex.Unlock();
  }).Join(10000);
  return taken;
}

TEST(TMutex, ExcludesOtherThreadsAndIsRecursiveForTheOwner) {
  TMutex mutex;
  mutex.Lock();
  EXPECT_TRUE(mutex.Lock(0));
  mutex.Unlock();
  EXPECT_FALSE(FreeForOthers(mutex));
  mutex.ReleaseMutex();
  EXPECT_TRUE(FreeForOthers(mutex));
}

// Taken over by a timed or an untimed Lock, as one hold.
TEST(TMutex, AbandonedMutexIsTakenOver) {
  TMutex mutex;
  for (const bool timed : {true, false}) {
    WorkerThread([&] { mutex.Lock(); }).Join(10000);  // ends still owning it
    if (timed) EXPECT_TRUE(mutex.Lock(10000)); else mutex.Lock();
    mutex.Unlock();
    EXPECT_TRUE(FreeForOthers(mutex));
  }
}

}  // namespace
