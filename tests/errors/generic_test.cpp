#include <qz/errors/exceptions.h>

#include "support/errors_test_support.h"
#include "support/error_code.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using errors_test::NamesOf;

TEST(EGenericWhat, OneNamedLinePerEntryHexForIntegersBareTextWhenAlone) {
  EGeneric text_and_code({"Text", "boom"});
  text_and_code.put_value("Code", 5);
  EGeneric fresh;
  fresh["Fresh"];
  EGeneric fresh_then_text = fresh;  // a copy written leaves its original as it was
  fresh_then_text.put_value("Text", "x");
  const struct {
    EGeneric e;
    const char* what;
  } cases[] = {
      {EGeneric({"Text", "boom"}), "boom"},
      {EGeneric({"text", "boom"}), "text: boom"},  // the bare text's name is case-sensitive
      {text_and_code, "Text: boom\nCode: 5 (0x5)"},
      {EGeneric({"Code", static_cast<int>(0x80004005)}, {"Count", 26ul}, {"Big", 5ll}),
       "Code: -2147467259 (0x80004005)\nCount: 26 (0x1a)\nBig: 5"},
      {EGeneric(), ""},
      {fresh, "Fresh: "},
      {fresh_then_text, "Fresh: \nText: x"},
  };
  for (const auto& c : cases) EXPECT_STREQ(c.e.what(), c.what);
}

TEST(EGenericValues, ConstructorsAppendDuplicatesLookUpsFoldAsciiOnlyAndConstReadsAddNothing) {
  EGeneric e({"A", 1}, {"a", 2}, {"B", 3});
  EXPECT_EQ(NamesOf(e), "A,a,B,");
  EXPECT_EQ(static_cast<int>(e.get_value("a")), 1);  // the first match wins
  e.put_value("b", 7);
  EXPECT_EQ(NamesOf(e), "A,a,B,");  // the first spelling stays
  EXPECT_EQ(static_cast<int>(e.get_value("B")), 7);
  e["C"] = 2;  // subscript appends a missing name and returns a writable value
  e["c"] = 3;
  EXPECT_EQ(NamesOf(e), "A,a,B,C,");
  EXPECT_STREQ(e.what(), "A: 1 (0x1)\na: 2 (0x2)\nB: 7 (0x7)\nC: 3 (0x3)");

  const EGeneric& read_only = e;
  EXPECT_TRUE(read_only.get_value("Missing").empty() && read_only["Missing"].empty());
  EXPECT_EQ(e.values().size(), 4u);

  // "\xC4" and "\xE4" are one letter in two cases in the ANSI code page, but
  // names fold ASCII only.
  EXPECT_TRUE(EGeneric({"\xC4", 1}).get_value("\xE4").empty());
}

TEST(Assertion, FailedConditionThrowsItsSourceLocation) {
  const int line = __LINE__ + 2;
  try {
    QZ_ASSERT(1 + 1 == 3);
    FAIL() << "no exception";
  } catch (const EGeneric& e) {
    EXPECT_EQ(qz_test::ValuesOf(e), "Text=Condition not meet;Condition=1 + 1 == 3;SourceFile=" + std::string(__FILE__) +
                                        ";SourceLine=" + std::to_string(line) + ";SourceFunction=TestBody;");
  }
}

}  // namespace
