// The text forms (as_string, as_wstring, as_bstr) and as_variant, which types
// the VARIANT by the stored kind code.
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

// Numbers in radix ten, doubles with seven significant digits and the
// runtime's exponent form; both text forms say the same.
TEST(ValueText, ScalarsPrintTheirNumberWordOrText) {
  std::pair<_value_t, std::string> cases[] = {
      {_value_t(-3), "-3"},
      {_value_t(0.1 + 0.2), "0.3"},
      {_value_t(123456789.0), "1.234568e+008"},
      {_value_t(1.0 / 3), "0.3333333"},
      {_value_t(_time_t::invalid), "<invalid time>"},
      {_value_t(false), "false"},
      {_value_t(static_cast<const SmartPtrObj*>(nullptr)), "<null>"},
      {_value_t(_bstr_t(L"bstr")), "bstr"},
  };
  for (auto& [value, text] : cases) {
    EXPECT_EQ(value.as_string(), text);
    EXPECT_EQ(value.as_wstring(), std::wstring(text.begin(), text.end()));
  }
}

// Braced and comma-separated, each element in its scalar text, unquoted.
TEST(ValueText, ContainerIsBracedAndCommaSeparated) {
  EXPECT_EQ(_value_t(std::vector<int>{}).as_string(), "{}");
  EXPECT_EQ(_value_t(std::vector<bool>{true, false}).as_string(), "{true,false}");
  EXPECT_EQ(_value_t(std::vector<std::string>{"a,b", "c"}).as_string(), "{a,b,c}");
  _value_t objects = static_cast<SmartPtrObj*>(nullptr);
  objects.push_back(static_cast<SmartPtrObj*>(new Named));
  EXPECT_EQ(objects.as_wstring(), L"{<null>,named object}");
  const _bstr_t text = _value_t(std::vector<double>{-0.5, 123456789.0}).as_bstr();
  EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(text)), L"{-0.5,1.234568e+008}");
}

// Numbers keep their width and signedness, a bool is an automation bool, an
// object has no variant form.
TEST(ValueVariant, EachKindHasItsOwnVariantType) {
  std::pair<_value_t, VARTYPE> kinds[] = {{-7, VT_INT},  {4294967295UL, VT_UI4}, {0x100000005LL, VT_I8},
                                                {2.5, VT_R8}, {true, VT_BOOL}};
  for (auto& [value, type] : kinds) {
    const _variant_t variant = value.as_variant();
    EXPECT_EQ(V_VT(&variant), type);
    EXPECT_EQ(static_cast<double>(variant), type == VT_BOOL ? VARIANT_TRUE : value.as_double());
  }
  const _variant_t object = _value_t(static_cast<SmartPtrObj*>(new SmartPtrObj)).as_variant();
  EXPECT_EQ(V_VT(&object), VT_EMPTY);
}

TEST(ValueVariant, EveryTextKindAndTheFirstElementOfATextContainerIsABstr) {
  for (_value_t text : {_value_t("text"), _value_t(L"text"), _value_t(_bstr_t(L"text")),
                        _value_t(std::vector<std::wstring>{L"text", L"b"})}) {
    const _variant_t variant = text.as_variant();
    ASSERT_EQ(V_VT(&variant), VT_BSTR);
    EXPECT_EQ(std::wstring(V_BSTR(&variant)), L"text");
  }
}

TEST(ValueVariant, TimeIsAUtcDate) {
  const _time_t moment = _time_t::mktime("2020-01-02T03:04:05");
  const _variant_t date = _value_t(moment).as_variant();
  EXPECT_EQ(V_VT(&date), VT_DATE);
  EXPECT_EQ(_time_t(date, true), moment);
  const _variant_t none = _value_t(_time_t::invalid).as_variant();
  EXPECT_EQ(V_VT(&none), VT_DATE);
  EXPECT_EQ(V_DATE(&none), 0.0);
}

}  // namespace
