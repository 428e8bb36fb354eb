// Appending through _value_t::push_back, and the element views of a bool
// container (the one kind whose elements are bits, not objects).
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Nothing, then a scalar, then a container of the same kind, in order.
template <class T>
void ExpectGrowth(const T& first, const T& second) {
  SCOPED_TRACE(typeid(T).name());
  _value_t value;
  value.push_back(first);
  EXPECT_EQ(static_cast<T>(value), first);
  EXPECT_THROW(value[1], std::out_of_range);  // still a scalar
  value.push_back(second);
  EXPECT_EQ(static_cast<T>(value[0]), first);
  EXPECT_EQ(static_cast<T>(value[1]), second);
}

TEST(ValueGrowth, EveryKindGrowsFromNothingToAScalarToAContainer) {
  ExpectGrowth(7ul, 4000000000ul);
  ExpectGrowth(static_cast<__int64>(-1), static_cast<__int64>(1) << 40);
  ExpectGrowth(true, false);
  ExpectGrowth(0.5, -2.0);
  ExpectGrowth(std::string("a"), std::string("b"));
  ExpectGrowth(std::wstring(L"\u00E4"), std::wstring(L"z"));
  ExpectGrowth(_time_t(86400), _time_t::invalid);

  _value_t texts;
  texts.push_back("narrow");
  texts.push_back("text");
  EXPECT_EQ(texts.as_string(), "{narrow,text}");
  EXPECT_THROW(texts.push_back(_bstr_t(L"bstr")), EBadCastException);  // its own kind only
  _value_t bstrs;
  bstrs.push_back(_bstr_t(L"b"));
  bstrs.push_back(_bstr_t(L"str"));
  EXPECT_EQ(bstrs.as_string(), "{b,str}");
  _value_t wide;
  wide.push_back(L"wide");
  wide.push_back(L"text");
  EXPECT_EQ(wide.as_wstring(), L"{wide,text}");
  _value_t objects;
  objects.push_back(static_cast<const SmartPtrObj*>(nullptr));
  objects.push_back(static_cast<const SmartPtrObj*>(nullptr));
  EXPECT_EQ(objects.as_string(), "{<null>,<null>}");
}

// A refused element leaves the value as it was, scalar or container.
TEST(ValueGrowth, RefusedElementLeavesTheValueAsItWas) {
  _value_t scalar = 1;
  EXPECT_THROW(scalar.push_back(std::string("x")), EBadCastException);
  EXPECT_EQ(scalar.as_string(), "1");
  _value_t container = std::vector<double>{1.5};
  EXPECT_THROW(container.push_back(L"x"), EBadCastException);
  EXPECT_EQ(container.as_string(), "{1.5}");
  _value_t nothing;
  EXPECT_THROW(nothing.push_back(_value_t()), EBadCastException);
  EXPECT_TRUE(nothing.empty());
}

// Writing a bit through a view reaches every handle sharing the container;
// a view has only index 0, compares as its bit, and a value grown or copied
// from it owns its bit instead of viewing the container.
TEST(BoolElementView, WritesReachTheSharedContainerAndCopiesOwnTheirBit) {
  _value_t bits = std::vector<bool>{true, false};
  _value_t sharing = bits;
  const _value_t& read_only = sharing;
  bits[1] = true;
  EXPECT_EQ(sharing.as_string(), "{true,true}");

  _value_t element = bits[0];
  EXPECT_TRUE(element == _value_t(true));
  EXPECT_FALSE(element < _value_t(true));
  EXPECT_TRUE(static_cast<bool>(element[0]));
  EXPECT_TRUE(static_cast<bool>(read_only[0][0]));
  EXPECT_THROW(element[1], std::out_of_range);
  EXPECT_THROW(read_only[1][1], std::out_of_range);

  _value_t grown = bits[0];
  grown.push_back(false);
  _value_t owned;
  owned.push_back(bits[0]);
  bits[0] = false;
  EXPECT_EQ(grown.as_string(), "{true,false}");
  EXPECT_EQ(owned.as_string(), "true");
  EXPECT_EQ(sharing.as_string(), "{false,true}");
}

}  // namespace
