#include <qz/errors/exceptions.h>
#include <qz/sync/critical_section.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(TCriticalSection, TimedLockIsNotImplemented) {
  TCriticalSection lock;
  for (unsigned int timeout : {0u, 10u, INFINITE}) {
    try {
      lock.Lock(timeout);
      FAIL() << "timed Lock returned";
    } catch (const ENotImplemented& e) {
      EXPECT_EQ(std::string(e.get_value("Function")), "TCriticalSection::Lock");
      EXPECT_EQ(std::string(e.get_value("SourceFile")), "CriticalSection");
      EXPECT_EQ(static_cast<int>(e.get_value("SourceLine")), 18);
    }
  }
}

TEST(TCriticalSection, IsRecursiveForTheOwningThread) {
  TCriticalSection lock;
  lock.Lock();
  lock.Lock();
  lock.Unlock();
  bool other_entered = true;
  std::thread([&] { other_entered = TryEnterCriticalSection(&lock) != FALSE; }).join();
  EXPECT_FALSE(other_entered);
  lock.Unlock();
  std::thread([&] {
    other_entered = TryEnterCriticalSection(&lock) != FALSE;
    if (other_entered) LeaveCriticalSection(&lock);
  }).join();
  EXPECT_TRUE(other_entered);
}

TEST(TCriticalSection, SerialisesThreadsThroughILock) {
  TCriticalSection section;
  ILock& lock = section;
  long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        lock.Lock();
        counter = counter + 1;
        lock.Unlock();
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 80000);
}

}  // namespace
