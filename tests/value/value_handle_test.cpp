#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include "value/value_test_support.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using value_test::bad_cast_of;

TEST(ValueHandle, DefaultValueIsEmptyAndEveryReaderThrowsBadCastFromVoid) {
  _value_t v;
  EXPECT_TRUE(v.empty());
  EXPECT_EQ(v.type(), typeid(void));
  EXPECT_EQ(bad_cast_of([&] { v.as_string(); }), "void>std::string");
  EXPECT_EQ(bad_cast_of([&] { static_cast<void>(static_cast<int>(v)); }), "void>int");
  EXPECT_THROW(v[0], EBadCastException);
}

TEST(ValueHandle, KindIsFixedByTheFirstAssignment) {
  _value_t v = 5;
  EXPECT_EQ(bad_cast_of([&] { v = 7.5; }), "double>int");
  v = 7UL;
  EXPECT_EQ(v.type(), typeid(int));
  EXPECT_EQ(static_cast<int>(v), 7);
}

TEST(ValueHandle, CopiesShareStorageUntilOneIsWritten) {
  _value_t first = 1;
  _value_t second = first;
  EXPECT_EQ(first.data(), second.data());
  second = 3;
  EXPECT_NE(first.data(), second.data());
  EXPECT_EQ(static_cast<int>(first), 1);
  EXPECT_EQ(static_cast<int>(second), 3);
  _value_t a = std::string("text");
  _value_t b = 1;
  b = a;  // assignment shares too, and self-assignment keeps it
  EXPECT_EQ(a.data()->ref_count(), 2);
  const _value_t& alias = b;
  b = alias;
  EXPECT_EQ(b.as_string(), "text");
  EXPECT_EQ(a.data()->ref_count(), 2);
}

TEST(ValueHandle, AssigningASequenceReplacesTheKindAndANullTextPointerIsEmptyText) {
  _value_t v = std::string("text");
  v = std::vector<int>{1, 2};
  EXPECT_TRUE(v.data()->container());
  EXPECT_EQ(v.type(), typeid(int));
  EXPECT_EQ(v.as_string(), "{1,2}");
  EXPECT_EQ(static_cast<std::string>(_value_t(static_cast<const char*>(nullptr))), "");
}

TEST(ValueHandlePushBack, FirstMakesAScalarSecondAContainerAndTextLiteralsAppendStrings) {
  _value_t v;
  v.push_back("abc");
  EXPECT_FALSE(v.data()->container());
  EXPECT_EQ(v.type(), typeid(std::string));  // not a bool
  EXPECT_THROW(v.push_back(L"def"), EBadCastException);  // a wide text is another kind
  v.push_back("def");
  EXPECT_TRUE(v.data()->container());
  EXPECT_EQ(v.data()->size(), 2u);
  EXPECT_EQ(v.as_string(), "{abc,def}");
}

TEST(ValueHandlePushBack, RefusedElementLeavesTheScalarAsItWas) {
  _value_t v = 5;
  EXPECT_THROW(v.push_back(std::string("x")), EBadCastException);
  EXPECT_FALSE(v.data()->container());
  EXPECT_EQ(static_cast<int>(v), 5);
}

TEST(ValueHandlePushBack, ContainerTakesItsOwnKindOrAValueThroughItsReaderAndCopiesIfShared) {
  _value_t v = std::vector<__int64>{1};
  const _value_t before = v;
  EXPECT_EQ(bad_cast_of([&] { v.push_back(2); }), "int>long long");
  v.push_back(_value_t(-2));  // an int reads as a sign-extended __int64
  EXPECT_EQ(v.as_string(), "{1,-2}");
  EXPECT_EQ(_value_t(before).as_string(), "{1}");
  EXPECT_THROW(v.push_back(_value_t("3")), EBadCastException);
  EXPECT_EQ(bad_cast_of([&] { v.push_back(_value_t()); }), "void>long long");
}

TEST(ValueHandleViews, WritableViewWritesThroughUntilCopied) {
  int x = 1;
  _value_t v = _value_t::view(x);
  v = 2;
  EXPECT_EQ(x, 2);
  _value_t copy = v;
  copy = 3;  // shared: the copy gets its own owned scalar
  EXPECT_EQ(x, 2);
  EXPECT_EQ(static_cast<int>(copy), 3);
  v = 4;  // no longer shared: writes through again
  EXPECT_EQ(x, 4);
  x = 5;
  EXPECT_EQ(static_cast<int>(v), 5);
}

TEST(ValueHandleViews, ConstViewRefusesWritesFromTheAssignedKind) {
  const std::string text = "fixed";
  _value_t v = _value_t::const_view(text);
  EXPECT_EQ(bad_cast_of([&] { v = std::wstring(L"other"); }), "std::wstring>std::string");
  EXPECT_EQ(text, "fixed");
  EXPECT_THROW(v[0], EBadCastException);  // no writable element
  EXPECT_EQ(_value_t(static_cast<const _value_t&>(v)[0]).as_string(), "fixed");
}

TEST(ValueHandleElements, ScalarHasOnlyIndexZeroWhichWritesTheScalar) {
  _value_t v = 7;
  const _value_t& constant = v;
  EXPECT_EQ(static_cast<int>(v[0]), 7);
  EXPECT_EQ(static_cast<int>(constant[0]), 7);
  try {
    v[1];
    FAIL() << "index 1 of a scalar";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "out of range");
  }
  EXPECT_THROW(constant[1], std::out_of_range);
  v[0] = 8;  // the element of a scalar writes the scalar
  EXPECT_EQ(static_cast<int>(v), 8);
}

TEST(ValueHandleElements, WritableElementReachesEverySharerAndConstElementIsReadOnly) {
  _value_t a = std::vector<int>{1, 2};
  const _value_t b = a;
  a[0] = 9;
  EXPECT_EQ(_value_t(b).as_string(), "{9,2}");
  _value_t element = b[0];
  EXPECT_THROW(element = 3, EBadCastException);
  EXPECT_EQ(_value_t(b).as_string(), "{9,2}");
}

TEST(ValueHandleElements, ElementKeepsItsStorageAliveAfterTheHandlesMoveOn) {
  const long before = _value_t_data::live_count();
  {
    _value_t a = std::vector<std::string>{"x", "y"};
    _value_t element = a[1];
    a = _value_t(5);  // the container's last handle lets go
    EXPECT_EQ(element.as_string(), "y");
    _value_t b = std::vector<std::string>{"p"};
    _value_t first = b[0];
    b.push_back("q");  // shared with the view, so copied before growing
    first = std::string("r");
    EXPECT_EQ(b.as_string(), "{p,q}");
    EXPECT_EQ(first.as_string(), "r");
  }
  EXPECT_EQ(_value_t_data::live_count(), before);
}

TEST(ValueHandleElements, BoolElementsReadAndWriteTheirBits) {
  _value_t bits = std::vector<bool>{true, false, true};
  bits[1] = true;
  bits[2] = false;
  EXPECT_EQ(bits.as_string(), "{true,true,false}");
  EXPECT_TRUE(static_cast<bool>(bits[0]));
  EXPECT_EQ(static_cast<int>(bits[1]), 1);
  EXPECT_THROW(bits[0] = 1, EBadCastException);  // a bool accepts only bool
  const _value_t& constant = bits;
  _value_t element = constant[0];
  EXPECT_THROW(element = false, EBadCastException);
  _value_t writable = bits[2];
  _value_t copy = writable;  // a copied element stops writing through
  copy = true;
  EXPECT_EQ(bits.as_string(), "{true,true,false}");
  writable = true;
  EXPECT_EQ(bits.as_string(), "{true,true,true}");
}

TEST(ValueHandleObjects, ValueHoldsAReferenceToItsObject) {
  SmartPtrObj* object = new SmartPtrObj;
  SmartPtr<SmartPtrObj> keep(object);
  {
    _value_t v = object;
    EXPECT_EQ(object->ref_count(), 2);
    EXPECT_EQ(v.type(), typeid(SmartPtr<SmartPtrObj>));
    const _value_t c = static_cast<const SmartPtrObj*>(object);
    EXPECT_EQ(c.type(), typeid(SmartPtr<SmartPtrObj const>));
    EXPECT_EQ(object->ref_count(), 3);
  }
  EXPECT_EQ(object->ref_count(), 1);
}

}  // namespace
