#include <qz/errors/exceptions.h>
#include <qz/sync/critical_section.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(TCriticalSection, TimedLockIsNotImplemented) {
  TCriticalSection lock;
  try {
    lock.Lock(10);
    FAIL() << "timed Lock returned";
  } catch (const ENotImplemented& e) {
    EXPECT_EQ(std::string(e.get_value("Function")), "TCriticalSection::Lock");
    EXPECT_EQ(std::string(e.get_value("SourceFile")), "CriticalSection");
    EXPECT_EQ(static_cast<int>(e.get_value("SourceLine")), 18);
  }
}

// Recursive for its owner, closed to others until the last Unlock.
TEST(TCriticalSection, IsRecursiveForItsOwnerAndClosedToOthers) {
  TCriticalSection section;
  section.Lock();
  section.Lock();
  section.Unlock();
  const auto other_enters = [&] {
    bool in = false;
    std::thread([&] {
      if ((in = TryEnterCriticalSection(&section) != FALSE)) LeaveCriticalSection(&section);
    }).join();
    return in;
  };
  EXPECT_FALSE(other_enters());
  section.Unlock();
  ASSERT_TRUE(other_enters());

  ILock& lock = section;  // and the same through ILock
  lock.Lock();
  EXPECT_FALSE(other_enters());
  lock.Unlock();
  EXPECT_TRUE(other_enters());
}

}  // namespace
