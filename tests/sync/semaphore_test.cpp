#include <qz/sync/semaphore.h>

#include "support/error_code.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

namespace {

using qz_test::CodeOf;
using qz_test::UniqueName;

TEST(TSemaphore, CountsAgainstTheMaximumAndReleaseReturnsThePreviousCount) {
  TSemaphore semaphore(5, 1);  // the maximum comes before the initial count
  EXPECT_TRUE(semaphore.Lock(0));
  EXPECT_FALSE(semaphore.Lock(0));
  EXPECT_EQ(semaphore.ReleaseSemaphore(2), 0);
  semaphore.Unlock();
  EXPECT_EQ(semaphore.ReleaseSemaphore(2), 3);  // up to the maximum of 5

  TSemaphore full(2);  // a single count starts full
  full.Lock();
  EXPECT_TRUE(full.Lock(0));
  EXPECT_FALSE(full.Lock(0));
  full.Unlock();
  EXPECT_EQ(full.ReleaseSemaphore(1), 1);
}

TEST(TSemaphore, ReleasingBeyondTheMaximumThrows) {
  TSemaphore semaphore(3, 2);
  try {
    semaphore.ReleaseSemaphore(2);
    FAIL() << "released beyond the maximum";
  } catch (const ESystemException& e) {
    EXPECT_EQ(CodeOf(e), ERROR_TOO_MANY_POSTS);
    EXPECT_FALSE(std::string(e.get_value("Text")).empty());
  }
  semaphore.Unlock();  // 3 of 3
  EXPECT_THROW(semaphore.Unlock(), ESystemException);
}

TEST(TSemaphore, NamedSemaphoreIsSharedByName) {
  const std::wstring name = UniqueName(L"semaphore");
  const std::string narrow(name.begin(), name.end());
  TSemaphore named(narrow.c_str(), 4, 0);
  TSemaphore opened(DoNotInitialize);
  opened.OpenSemaphoreW(name.c_str(), SEMAPHORE_ALL_ACCESS);
  EXPECT_EQ(named.ReleaseSemaphore(1), 0);
  EXPECT_TRUE(opened.Lock(0));
  EXPECT_FALSE(named.Lock(0));

  TSemaphore copy(opened);
  copy.Unlock();
  EXPECT_TRUE(named.Lock(0));
}

TEST(TSemaphore, ImpossibleCountsThrow) {
  EXPECT_THROW(TSemaphore(1, 2), ESystemException);
  EXPECT_THROW(TSemaphore(0), ESystemException);
  TSemaphore empty(DoNotInitialize);
  EXPECT_THROW(empty.OpenSemaphoreW(UniqueName(L"missing").c_str(), SYNCHRONIZE), ESystemException);
  EXPECT_EQ(static_cast<void*>(empty), nullptr);
}

}  // namespace
