#include <qz/core/auto_ptr.h>

#include <gtest/gtest.h>

#include <utility>

TEST(AutoPtr, AllocatesOneBufferThatMovesAndResets) {
  AutoPtr<int> first;
  EXPECT_FALSE(first);
  int* buffer = first.allocate(4 * sizeof(int));
  buffer[3] = 5;  // the whole size is usable
  AutoPtr<int> second(std::move(first));
  EXPECT_FALSE(first);
  EXPECT_EQ(second.get(), buffer);
  AutoPtr<int> third;
  third = std::move(second);
  EXPECT_EQ(third.get(), buffer);
  third.reset();
  EXPECT_FALSE(third);
}
