#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
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

// Numbers in radix ten, doubles with seven significant digits and the
// runtime's exponent form; both text forms say the same.
TEST(ValueText, ScalarsPrintTheirNumberWordOrText) {
  std::pair<_value_t, std::string> cases[] = {
      {_value_t(-3), "-3"},
      {_value_t(4294967295UL), "4294967295"},
      {_value_t(-9000000000LL), "-9000000000"},
      {_value_t(0.1 + 0.2), "0.3"},
      {_value_t(3.14159265), "3.141593"},
      {_value_t(123456789.0), "1.234568e+008"},
      {_value_t(1.0 / 3), "0.3333333"},
      {_value_t(_time_t::invalid), "<invalid time>"},
      {_value_t(true), "true"},
      {_value_t(false), "false"},
      {_value_t(static_cast<const SmartPtrObj*>(nullptr)), "<null>"},
      {_value_t(L"wide"), "wide"},
      {_value_t(_bstr_t(L"bstr")), "bstr"},
      {_value_t("narrow"), "narrow"},
  };
  for (auto& [value, text] : cases) {
    EXPECT_EQ(value.as_string(), text);
    EXPECT_EQ(value.as_wstring(), std::wstring(text.begin(), text.end()));
  }
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

TEST(ValueText, BstrFormIsTheWideText) {
  const _bstr_t text = _value_t(std::vector<int>{1, 2}).as_bstr();
  EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(text)), L"{1,2}");
  EXPECT_THROW(_value_t().as_bstr(), EBadCastException);
}

}  // namespace
