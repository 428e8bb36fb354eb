// The strict sequence conversions read every element through its own typed
// reader; a scalar is a sequence of one.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <list>
#include <set>
#include <string>
#include <vector>

namespace {

size_t count_of(const std::vector<int>& items) { return items.size(); }

// Copy-initialisation, the form the conversions are meant for.
template <class Sequence>
Sequence read(const _value_t& value) {
  return value;
}

TEST(ValueSequence, ContainerCopiesIntoEachSequenceType) {
  const _value_t numbers = std::vector<int>{3, 1, 3, 2};
  EXPECT_EQ(read<std::list<int>>(numbers), (std::list<int>{3, 1, 3, 2}));
  EXPECT_EQ(read<std::set<int>>(numbers), (std::set<int>{1, 2, 3}));
  EXPECT_EQ(count_of(numbers), 4u);  // binds a const std::vector<int>&
  std::vector<std::string> words{"old"};  // assignment replaces an existing sequence
  words = _value_t(std::vector<std::string>{"a", "b"});
  EXPECT_EQ(words, (std::vector<std::string>{"a", "b"}));
}

TEST(ValueSequence, ElementsConvertAsTheStrictReadersDo) {
  const _value_t numbers = std::vector<int>{-1, 2};
  EXPECT_EQ(read<std::vector<double>>(numbers), (std::vector<double>{-1.0, 2.0}));
  EXPECT_EQ(read<std::vector<unsigned long>>(numbers), (std::vector<unsigned long>{4294967295UL, 2UL}));
  EXPECT_EQ(read<std::set<std::string>>(_value_t(std::vector<std::wstring>{L"b", L"a"})),
            (std::set<std::string>{"a", "b"}));
  EXPECT_EQ(read<std::list<bool>>(_value_t(std::vector<bool>{true, false})), (std::list<bool>{true, false}));
  EXPECT_THROW(read<std::vector<int>>(_value_t(std::vector<std::string>{"1"})), EBadCastException);
  EXPECT_THROW(read<std::set<bool>>(_value_t(std::vector<int>{1})), EBadCastException);  // never int as bool
}

TEST(ValueSequence, ScalarIsASequenceOfOneAndEmptyContainerOfNone) {
  EXPECT_EQ(read<std::vector<__int64>>(_value_t(7)), (std::vector<__int64>{7}));
  EXPECT_EQ(read<std::set<std::wstring>>(_value_t("x")), (std::set<std::wstring>{L"x"}));
  int watched = 4;
  EXPECT_EQ(read<std::list<int>>(_value_t::view(watched)), (std::list<int>{4}));
  EXPECT_TRUE(read<std::vector<int>>(_value_t(std::vector<int>{})).empty());
}

TEST(ValueSequence, ObjectsReadAsConstObjects) {
  SmartPtr<SmartPtrObj> object(new SmartPtrObj);
  const _value_t objects = std::vector<SmartPtr<SmartPtrObj>>{object, nullptr};
  const std::vector<SmartPtr<SmartPtrObj const>> constant = objects;
  ASSERT_EQ(constant.size(), 2u);
  EXPECT_EQ(constant[0].get(), object.get());
  EXPECT_EQ(constant[1].get(), nullptr);
}

}  // namespace
