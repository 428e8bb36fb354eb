#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include "value/value_test_support.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using value_test::bad_cast_of;

// Every storage a test makes is released again by its end, also on the paths
// that throw half-way.
class ValueHandle : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(_value_t_data::live_count(), baseline_) << "storages leaked"; }
  const long baseline_ = _value_t_data::live_count();
};

// Every reader refuses an empty value with a bad cast from void to its result.
TEST_F(ValueHandle, DefaultValueIsEmptyAndEveryReaderThrowsBadCastFromVoid) {
  _value_t v;
  EXPECT_TRUE(v.empty());
  EXPECT_EQ(v.type(), typeid(void));
  EXPECT_EQ(bad_cast_of([&] { v.as_string(); }), "void>std::string");
  EXPECT_EQ(bad_cast_of([&] { static_cast<void>(static_cast<int>(v)); }), "void>int");
  EXPECT_EQ(bad_cast_of([&] { v.as_int64(); }), "void>long long");
  EXPECT_EQ(bad_cast_of([&] { v.as_time(); }), "void>_time_t");
  EXPECT_EQ(bad_cast_of([&] { v.as_variant(); }), "void>_variant_t");
  EXPECT_EQ(bad_cast_of([&] { const std::vector<int> items = v; }).substr(0, 5), "void>");
  EXPECT_THROW(v[0], EBadCastException);
}

TEST_F(ValueHandle, KindIsFixedByTheFirstAssignmentUntilASequenceReplacesIt) {
  _value_t v = 5;
  _value_t shared = v;
  EXPECT_EQ(bad_cast_of([&] { v = 7.5; }), "double>int");  // after the copy on write
  v = 7UL;
  EXPECT_EQ(v.type(), typeid(int));
  EXPECT_EQ(static_cast<int>(v), 7);
  v = std::vector<std::string>{"a", "b"};
  EXPECT_EQ(v.type(), typeid(std::string));
  EXPECT_EQ(v.as_string(), "{a,b}");
  EXPECT_EQ(static_cast<std::string>(_value_t(static_cast<const char*>(nullptr))), "");  // empty text
}

TEST_F(ValueHandle, CopiesShareStorageUntilOneIsWritten) {
  _value_t first = 1;
  _value_t second = first;
  EXPECT_EQ(_value_t_data::live_count(), baseline_ + 1);
  second = 3;
  EXPECT_EQ(_value_t_data::live_count(), baseline_ + 2);
  EXPECT_EQ(static_cast<int>(first), 1);
  EXPECT_EQ(static_cast<int>(second), 3);
  _value_t b = 1;
  b = first;  // assignment shares too, and self-assignment keeps it
  const _value_t& alias = b;
  b = alias;
  EXPECT_EQ(first.data()->ref_count(), 2);
  _value_t moved = std::move(b);
  b = std::move(moved);
  EXPECT_EQ(static_cast<int>(b), 1);
}

TEST_F(ValueHandle, FirstMakesAScalarSecondAContainerAndTextLiteralsAppendStrings) {
  _value_t v;
  v.push_back("abc");
  EXPECT_FALSE(v.data()->container());
  EXPECT_EQ(v.type(), typeid(std::string));  // not a bool
  EXPECT_THROW(v.push_back(L"def"), EBadCastException);  // a wide text is another kind
  v.push_back("def");
  EXPECT_EQ(v.as_string(), "{abc,def}");
  _value_t number = 5;
  EXPECT_THROW(number.push_back(std::string("x")), EBadCastException);
  EXPECT_FALSE(number.data()->container());  // a refused element leaves the scalar as it was
}

TEST_F(ValueHandle, ContainerTakesItsOwnKindOrAValueThroughItsReaderAndCopiesIfShared) {
  _value_t v = std::vector<__int64>{1};
  const _value_t before = v;
  EXPECT_EQ(bad_cast_of([&] { v.push_back(2); }), "int>long long");
  v.push_back(_value_t(-2));  // an int reads as a sign-extended __int64
  EXPECT_EQ(v.as_string(), "{1,-2}");
  EXPECT_EQ(_value_t(before).as_string(), "{1}");
  EXPECT_EQ(bad_cast_of([&] { v.push_back(_value_t()); }), "void>long long");
}

TEST_F(ValueHandle, WritableViewWritesThroughUntilCopied) {
  int x = 1;
  _value_t v = _value_t::view(x);
  v = 2;
  EXPECT_EQ(x, 2);
  _value_t copy = v;
  copy = 3;  // shared: the copy gets its own owned scalar
  EXPECT_EQ(x, 2);
  v = 4;  // no longer shared: writes through again
  EXPECT_EQ(x, 4);
  x = 5;
  EXPECT_EQ(static_cast<int>(v), 5);
}

TEST_F(ValueHandle, ConstViewRefusesWritesFromTheAssignedKind) {
  const std::string text = "fixed";
  _value_t v = _value_t::const_view(text);
  EXPECT_EQ(bad_cast_of([&] { v = std::wstring(L"other"); }), "std::wstring>std::string");
  EXPECT_THROW(v[0], EBadCastException);  // no writable element
  EXPECT_EQ(_value_t(static_cast<const _value_t&>(v)[0]).as_string(), "fixed");
}

TEST_F(ValueHandle, ScalarHasOnlyIndexZeroWhichWritesTheScalar) {
  _value_t v = 7;
  const _value_t& constant = v;
  EXPECT_EQ(static_cast<int>(constant[0]), 7);
  try {
    v[1];
    FAIL() << "index 1 of a scalar";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "out of range");
  }
  EXPECT_THROW(constant[1], std::out_of_range);
  v[0] = 8;
  EXPECT_EQ(static_cast<int>(v), 8);
}

// A writable element reaches every sharer; a const one is read-only; an
// element keeps its storage alive after the handles move on.
TEST_F(ValueHandle, ElementsWriteThroughAndKeepTheirStorageAlive) {
  _value_t a = std::vector<std::string>{"x", "y"};
  _value_t b = a;
  a[0] = std::string("z");
  EXPECT_EQ(b.as_string(), "{z,y}");
  _value_t element = static_cast<const _value_t&>(b)[1];
  EXPECT_THROW(element = std::string("w"), EBadCastException);
  a = b = _value_t(5);  // the container's last handles let go
  EXPECT_EQ(element.as_string(), "y");
  _value_t c = std::vector<std::string>{"p"};
  _value_t first = c[0];
  c.push_back("q");  // shared with the element, so copied before growing
  first = std::string("r");
  EXPECT_EQ(c.as_string(), "{p,q}");
  EXPECT_EQ(first.as_string(), "r");
}

TEST_F(ValueHandle, BoolElementsReadAndWriteTheirBits) {
  _value_t bits = std::vector<bool>{true, false, true};
  bits[1] = true;
  EXPECT_EQ(static_cast<int>(bits[1]), 1);
  EXPECT_THROW(bits[0] = 1, EBadCastException);  // a bool accepts only bool
  _value_t element = static_cast<const _value_t&>(bits)[0];
  EXPECT_THROW(element = false, EBadCastException);
  _value_t writable = bits[2];
  _value_t copy = writable;  // a copied element stops writing through
  copy = false;
  EXPECT_EQ(bits.as_string(), "{true,true,true}");
  writable = false;
  EXPECT_EQ(bits.as_string(), "{true,true,false}");
}

}  // namespace
