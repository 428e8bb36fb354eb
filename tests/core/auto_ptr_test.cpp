#include <qz/core/auto_ptr.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <utility>

namespace {

// A record that carries its own string, as the system returns them.
struct Record {
  int size;
  wchar_t name[1];
};

}  // namespace

TEST(AutoPtr, HoldsOneVariableSizeBuffer) {
  AutoPtr<Record> record;
  EXPECT_FALSE(record);
  record.allocate(sizeof(Record) + 16 * sizeof(wchar_t));
  ASSERT_TRUE(record);
  record->size = 5;
  std::wcscpy(record->name, L"named");
  EXPECT_EQ(record->size, 5);
  EXPECT_STREQ(record->name, L"named");
  record.reset();
  EXPECT_FALSE(record);
}

TEST(AutoPtr, MoveHandsTheBufferOver) {
  AutoPtr<int> first;
  int* buffer = first.allocate(4 * sizeof(int));
  AutoPtr<int> second(std::move(first));
  EXPECT_FALSE(first);
  EXPECT_EQ(second.get(), buffer);
  AutoPtr<int> third;
  third = std::move(second);
  EXPECT_EQ(third.get(), buffer);
}
