#include <qz/sync/semaphore.h>

#include "support/error_code.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

namespace {

using qz_test::UniqueName;

TEST(TSemaphore, CountsAgainstTheMaximumAndReleaseReturnsThePreviousCount) {
  TSemaphore semaphore(5, 1);  // the maximum comes before the initial count
  EXPECT_TRUE(semaphore.Lock(0));
  EXPECT_FALSE(semaphore.Lock(0));
  EXPECT_EQ(semaphore.ReleaseSemaphore(2), 0);
  semaphore.Unlock();
  EXPECT_EQ(semaphore.ReleaseSemaphore(2), 3);  // up to the maximum of 5
  EXPECT_EQ(qz_test::CodeThrownBy([&] { semaphore.Unlock(); }), ERROR_TOO_MANY_POSTS);
  EXPECT_THROW(TSemaphore(1, 2), ESystemException);

  TSemaphore full(2);  // a single count starts full
  full.Lock();
  EXPECT_TRUE(full.Lock(0));
  EXPECT_FALSE(full.Lock(0));
}

TEST(TSemaphore, NamedSemaphoreIsSharedByName) {
  const std::wstring name = UniqueName(L"semaphore");
  const std::string narrow(name.begin(), name.end());
  TSemaphore named(narrow.c_str(), 4, 0);
  TSemaphore opened(DoNotInitialize);
  opened.OpenSemaphoreW(name.c_str(), SEMAPHORE_ALL_ACCESS);
  TSemaphore copy(opened);
  copy.Unlock();
  EXPECT_TRUE(named.Lock(0));
  EXPECT_FALSE(named.Lock(0));

  TSemaphore missing(DoNotInitialize);
  EXPECT_EQ(qz_test::CodeThrownBy([&] { missing.OpenSemaphoreW(UniqueName(L"missing").c_str(), SYNCHRONIZE); }),
            ERROR_FILE_NOT_FOUND);
}

}  // namespace
