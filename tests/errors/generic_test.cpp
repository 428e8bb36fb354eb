#include <qz/errors/exceptions.h>

#include "errors/errors_test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

// Exposes the protected editing members the diagnostic layers use.
class EditableError : public EGeneric {
 public:
  using EGeneric::EGeneric;
  using EGeneric::find_value;
  using EGeneric::move_to_back;
};

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

TEST(EGenericValues, LookUpFoldsOnlyAsciiLetters) {
  EGeneric e({"Code", 1});
  e.put_value("code", 7);
  ASSERT_EQ(e.values().size(), 1u);
  EXPECT_EQ(e.values()[0].first, "Code");  // the first spelling stays
  EXPECT_EQ(static_cast<int>(e.get_value("CODE")), 7);

  // "\xC4" and "\xE4" are one letter in two cases in the ANSI code page, but
  // names fold ASCII only.
  EGeneric accented({"\xC4", 1});
  EXPECT_TRUE(accented.get_value("\xE4").empty());
}

TEST(EGenericValues, ConstReadsNeverAddEntries) {
  const EGeneric e({"A", 1});
  EXPECT_TRUE(e.get_value("Missing").empty() && e["Missing"].empty());
  EXPECT_EQ(e.values().size(), 1u);
}

TEST(EGenericValues, ConstructorsAppendDuplicatesButSubscriptFindsAnyCase) {
  EGeneric e({"A", 1}, {"a", 2}, {"B", 3});
  EXPECT_EQ(NamesOf(e), "A,a,B,");
  EXPECT_EQ(static_cast<int>(e.get_value("a")), 1);  // the first match wins
  EGeneric one({"A", 1});
  one["B"] = 2;  // subscript appends a missing name and returns a writable value
  one["a"] = 3;
  EXPECT_EQ(NamesOf(one), "A,B,");
  EXPECT_STREQ(one.what(), "A: 3 (0x3)\nB: 2 (0x2)");
}

TEST(EGenericValues, MoveToBackSwapsWithTheLastEntry) {
  EditableError e({"A", 1}, {"Stack", 2}, {"B", 3}, {"C", 4});
  e.move_to_back("stack");
  EXPECT_EQ(NamesOf(e), "A,C,B,Stack,");
  e.move_to_back("Stack");  // already last
  e.move_to_back("Missing");
  EXPECT_EQ(NamesOf(e), "A,C,B,Stack,");
}

TEST(EGenericMiniDump, CancelDeletesTheFileAndRemovesTheEntry) {
  wchar_t directory[MAX_PATH];
  wchar_t path[MAX_PATH];
  ASSERT_NE(GetTempPathW(MAX_PATH, directory), 0u);
  ASSERT_NE(GetTempFileNameW(directory, L"qz", 0, path), 0u);
  EGeneric e({"Text", "crash"}, {"MiniDump", std::wstring(path)}, {"Code", 1});
  e.cancel_minidump();
  EXPECT_EQ(GetFileAttributesW(path), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(NamesOf(e), "Text,Code,");
  e.cancel_minidump();  // nothing left to cancel
  EXPECT_EQ(NamesOf(e), "Text,Code,");
}

TEST(Assertion, FailedConditionThrowsItsSourceLocation) {
  try {
    QZ_ASSERT(1 + 1 == 3);
    FAIL() << "no exception";
  } catch (const EGeneric& e) {
    EXPECT_EQ(std::string(e.get_value("Text")), "Condition not meet");
    EXPECT_EQ(std::string(e.get_value("Condition")), "1 + 1 == 3");
    EXPECT_NE(std::string(e.get_value("SourceFile")).find("generic_test.cpp"), std::string::npos);
    EXPECT_GT(static_cast<int>(e.get_value("SourceLine")), 0);
    EXPECT_EQ(std::string(e.get_value("SourceFunction")), "TestBody");
  }
}

}  // namespace
