#include <qz/sync/event.h>
#include <qz/sync/mutex.h>
#include <qz/sync/semaphore.h>

#include "support/error_code.h"
#include "support/test_threads.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::CodeThrownBy;
using qz_test::UniqueName;
using qz_test::WorkerThread;

// One name, created through one character width and opened through the
// other: both objects must reach the same kernel object.
struct Name {
  explicit Name(const wchar_t* stem) : wide(UniqueName(stem)), narrow(wide.begin(), wide.end()) {}
  std::wstring wide;
  std::string narrow;
};

TEST(NamedSyncObjects, OpenedByNameTheyShareTheCreatedObject) {
  const Name event_name(L"event"), mutex_name(L"mutex"), semaphore_name(L"semaphore");

  TEvent created_event(event_name.narrow.c_str(), true, false);
  TEvent opened_event(DoNotInitialize);
  opened_event.OpenEventW(event_name.wide.c_str(), EVENT_ALL_ACCESS);
  created_event.Set();
  EXPECT_TRUE(opened_event.Signaled(0));

  TSemaphore created_semaphore(semaphore_name.wide.c_str(), 3, 0);
  TSemaphore opened_semaphore(DoNotInitialize);
  opened_semaphore.OpenSemaphoreW(semaphore_name.narrow.c_str(), SEMAPHORE_ALL_ACCESS);
  EXPECT_EQ(opened_semaphore.ReleaseSemaphore(2), 0);
  EXPECT_TRUE(created_semaphore.Lock(0));
  EXPECT_TRUE(created_semaphore.Lock(0));
  EXPECT_FALSE(opened_semaphore.Lock(0));

  TMutex created_mutex(mutex_name.wide.c_str());
  TMutex opened_mutex(DoNotInitialize);
  opened_mutex.OpenMutexW(mutex_name.narrow.c_str(), MUTEX_ALL_ACCESS);
  created_mutex.Lock();
  bool taken_elsewhere = true;
  WorkerThread([&] { taken_elsewhere = opened_mutex.Lock(0); }).Join(10000);
  EXPECT_FALSE(taken_elsewhere);
  created_mutex.Unlock();

  // A second create of the name opens the existing object as well.
  TMutex again(mutex_name.narrow.c_str());
  EXPECT_TRUE(again.Lock(0));
  again.Unlock();
}

// Opening a name nobody created throws the system's error for either width.
TEST(NamedSyncObjects, OpeningAMissingNameThrows) {
  const Name missing(L"missing");
  TEvent event(DoNotInitialize);
  TMutex mutex(DoNotInitialize);
  TSemaphore semaphore(DoNotInitialize);
  EXPECT_EQ(CodeThrownBy([&] { event.OpenEventW(missing.narrow.c_str(), EVENT_ALL_ACCESS); }),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(CodeThrownBy([&] { mutex.OpenMutexW(missing.wide.c_str(), MUTEX_ALL_ACCESS); }),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(CodeThrownBy([&] { semaphore.OpenSemaphoreW(missing.wide.c_str(), SEMAPHORE_ALL_ACCESS); }),
            ERROR_FILE_NOT_FOUND);
}

}  // namespace
