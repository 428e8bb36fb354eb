#include <qz/sync/semaphore.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

namespace {

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

}  // namespace
