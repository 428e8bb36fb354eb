#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class Named : public SmartPtrObj {
 public:
  std::string ToString() const override { return "named object"; }
};

TEST(ValueText, ContainerIsBracedAndCommaSeparated) {
  EXPECT_EQ(_value_t(std::vector<int>{1, 2, 3}).as_string(), "{1,2,3}");
  EXPECT_EQ(_value_t(std::vector<int>{}).as_string(), "{}");
  EXPECT_EQ(_value_t(std::vector<std::wstring>{L"a", L"b c"}).as_string(), "{a,b c}");
  EXPECT_EQ(_value_t(std::vector<bool>{true, false}).as_string(), "{true,false}");
}

TEST(ValueText, NumbersInRadixTen) {
  EXPECT_EQ(_value_t(-3).as_string(), "-3");
  EXPECT_EQ(_value_t(4294967295UL).as_string(), "4294967295");
  EXPECT_EQ(_value_t(-9000000000LL).as_wstring(), L"-9000000000");
}

TEST(ValueText, DoubleHasSevenSignificantDigitsAndTheRuntimesExponentForm) {
  EXPECT_EQ(_value_t(0.1 + 0.2).as_string(), "0.3");
  EXPECT_EQ(_value_t(3.14159265).as_wstring(), L"3.141593");
  EXPECT_EQ(_value_t(123456789.0).as_string(), "1.234568e+008");
  EXPECT_EQ(_value_t(1.0 / 3).as_wstring(), L"0.3333333");
  EXPECT_EQ(_value_t(std::vector<double>{-0.5, 123456789.0}).as_string(), "{-0.5,1.234568e+008}");
}

TEST(ValueText, ContainerElementsUseTheirScalarText) {
  const _time_t first(static_cast<__int64>(0));
  const _time_t second(static_cast<__int64>(86400));
  EXPECT_EQ(_value_t(std::vector<_time_t>{first, second}).as_string(),
            "{" + first.ctime() + "," + second.ctime() + "}");
  EXPECT_EQ(_value_t(std::vector<std::string>{"a,b", "c"}).as_string(), "{a,b,c}");  // no quoting
  _value_t objects = static_cast<SmartPtrObj*>(nullptr);
  objects.push_back(static_cast<SmartPtrObj*>(new Named));
  EXPECT_EQ(objects.as_wstring(), L"{<null>,named object}");
}

TEST(ValueText, OtherScalarsPrintTheirWordsOrText) {
  EXPECT_EQ(_value_t(_time_t::invalid).as_wstring(), L"<invalid time>");
  EXPECT_EQ(_value_t(true).as_string(), "true");
  EXPECT_EQ(_value_t(false).as_wstring(), L"false");
  EXPECT_EQ(_value_t(static_cast<const SmartPtrObj*>(nullptr)).as_wstring(), L"<null>");
  EXPECT_EQ(_value_t(L"wide").as_string(), "wide");
  EXPECT_EQ(_value_t(_bstr_t(L"bstr")).as_string(), "bstr");
  EXPECT_EQ(_value_t("narrow").as_wstring(), L"narrow");
}

TEST(ValueText, BstrFormIsTheWideText) {
  const _bstr_t text = _value_t(std::vector<int>{1, 2}).as_bstr();
  EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(text)), L"{1,2}");
  EXPECT_THROW(_value_t().as_bstr(), EBadCastException);
}

}  // namespace
