#include <qz/sync/mutex.h>
#include <qz/sync/tlock.h>

#include "support/error_code.h"
#include "support/test_threads.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

namespace {

using qz_test::CodeThrownBy;
using qz_test::UniqueName;
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

// Opened by name; copies duplicate it; failures throw the system error.
TEST(TMutex, NamedMutexIsOpenedByNameAndFailuresThrow) {
  const std::wstring name = UniqueName(L"mutex");
  TMutex named(name.c_str());
  TMutex opened(DoNotInitialize);
  const std::string narrow(name.begin(), name.end());
  opened.OpenMutexW(narrow.c_str(), MUTEX_ALL_ACCESS);
  TMutex copy(opened);
  EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(opened));
  TLock hold(named);
  EXPECT_FALSE(FreeForOthers(copy));
  TMutex created(DoNotInitialize);
  created.CreateMutexW(true);  // owned from the start
  EXPECT_FALSE(FreeForOthers(created));
  created.Unlock();

  TMutex mutex(DoNotInitialize);
  EXPECT_EQ(CodeThrownBy([&] { mutex.OpenMutexW(UniqueName(L"missing").c_str(), SYNCHRONIZE); }),
            ERROR_FILE_NOT_FOUND);
  EXPECT_THROW(mutex.Lock(0), ESystemException);
  EXPECT_EQ(CodeThrownBy([] { TMutex().Unlock(); }), ERROR_NOT_OWNER);
}

}  // namespace
