// as_variant types the VARIANT by the stored kind code.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(ValueVariant, EachKindHasItsOwnVariantType) {
  const _variant_t whole = _value_t(-7).as_variant();
  EXPECT_EQ(V_VT(&whole), VT_INT);
  EXPECT_EQ(V_INT(&whole), -7);
  const _variant_t unsigned_ = _value_t(4294967295UL).as_variant();
  EXPECT_EQ(V_VT(&unsigned_), VT_UI4);
  EXPECT_EQ(V_UI4(&unsigned_), 4294967295UL);
  const _variant_t wide = _value_t(0x100000005LL).as_variant();
  EXPECT_EQ(V_VT(&wide), VT_I8);
  EXPECT_EQ(V_I8(&wide), 0x100000005LL);
  const _variant_t real = _value_t(2.5).as_variant();
  EXPECT_EQ(V_VT(&real), VT_R8);
  EXPECT_EQ(V_R8(&real), 2.5);
  const _variant_t yes = _value_t(true).as_variant();  // an automation bool
  EXPECT_EQ(V_VT(&yes), VT_BOOL);
  EXPECT_EQ(V_BOOL(&yes), VARIANT_TRUE);
  const _variant_t no = _value_t(false).as_variant();
  EXPECT_EQ(V_BOOL(&no), VARIANT_FALSE);
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
  EXPECT_DOUBLE_EQ(V_DATE(&date), moment.varianttime());
  EXPECT_EQ(_time_t(date, true), moment);
  const _variant_t none = _value_t(_time_t::invalid).as_variant();
  EXPECT_EQ(V_VT(&none), VT_DATE);
  EXPECT_EQ(V_DATE(&none), 0.0);
}

TEST(ValueVariant, EmptyValueThrowsBadCastFromVoid) {
  try {
    _value_t().as_variant();
    FAIL() << "as_variant of an empty value";
  } catch (const EBadCastException& e) {
    EXPECT_EQ(std::string(e.get_value("From")), "void");
    EXPECT_EQ(std::string(e.get_value("To")), "_variant_t");
  }
}

}  // namespace
