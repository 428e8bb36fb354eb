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
  const std::vector<int> vector = numbers;
  const std::list<int> list = numbers;
  const std::set<int> set = numbers;
  EXPECT_EQ(vector, (std::vector<int>{3, 1, 3, 2}));
  EXPECT_EQ(list, (std::list<int>{3, 1, 3, 2}));
  EXPECT_EQ(set, (std::set<int>{1, 2, 3}));
  EXPECT_EQ(count_of(numbers), 4u);  // binds a const std::vector<int>&
  std::vector<std::string> words{"old"};  // assignment replaces an existing sequence
  words = _value_t(std::vector<std::string>{"a", "b"});
  EXPECT_EQ(words, (std::vector<std::string>{"a", "b"}));
}

TEST(ValueSequence, ElementsConvertAsTheStrictReadersDo) {
  const _value_t numbers = std::vector<int>{-1, 2};
  const std::vector<double> doubles = numbers;
  const std::vector<unsigned long> same_bits = numbers;
  EXPECT_EQ(doubles, (std::vector<double>{-1.0, 2.0}));
  EXPECT_EQ(same_bits, (std::vector<unsigned long>{4294967295UL, 2UL}));
  const std::set<std::string> narrow = _value_t(std::vector<std::wstring>{L"b", L"a"});
  EXPECT_EQ(narrow, (std::set<std::string>{"a", "b"}));
  const std::list<bool> bits = _value_t(std::vector<bool>{true, false});
  EXPECT_EQ(bits, (std::list<bool>{true, false}));
}

TEST(ValueSequence, ScalarIsASequenceOfOneAndEmptyContainerOfNone) {
  const std::vector<__int64> wide = _value_t(7);
  EXPECT_EQ(wide, (std::vector<__int64>{7}));
  const std::set<std::wstring> text = _value_t("x");
  EXPECT_EQ(text, (std::set<std::wstring>{L"x"}));
  int watched = 4;
  const std::list<int> viewed = _value_t::view(watched);
  EXPECT_EQ(viewed, (std::list<int>{4}));
  EXPECT_TRUE(read<std::vector<int>>(_value_t(std::vector<int>{})).empty());
}

TEST(ValueSequence, UnreadableElementKindAndEmptyValueThrowBadCast) {
  EXPECT_THROW(read<std::vector<int>>(_value_t(std::vector<std::string>{"1"})), EBadCastException);
  // An int never reads as bool.
  EXPECT_THROW(read<std::set<bool>>(_value_t(std::vector<int>{1})), EBadCastException);
  const _value_t empty;
  try {
    const std::vector<int> items = empty;
    FAIL() << "read " << items.size() << " elements from an empty value";
  } catch (const EBadCastException& e) {
    EXPECT_EQ(std::string(e.get_value("From")), "void");
  }
  EXPECT_THROW(read<std::set<_time_t>>(empty), EBadCastException);
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
