#include <qz/core/com_types.h>
#include <qz/errors/exceptions.h>
#include <qz/errors/tuning.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(ComSupport, BstrConvertsBetweenNarrowAndWideText) {
  _bstr_t text("caf\xE9");  // narrow, ANSI code page
  EXPECT_EQ(text.length(), 4u);
  const char* narrow = text;  // back through ConvertBSTRToString
  EXPECT_STREQ(narrow, "caf\xE9");
  EXPECT_EQ(static_cast<const wchar_t*>(_bstr_t(L"x")), std::wstring(L"x"));
  const char* none = nullptr;
  EXPECT_EQ(static_cast<const wchar_t*>(_bstr_t(none)), nullptr);
}

TEST(ComSupport, FailedHresultsBecomeComExceptions) {
  try {
    _com_issue_error(E_ACCESSDENIED);
    FAIL();
  } catch (const EComException& e) {
    EXPECT_EQ(static_cast<int>(e.get_value("Code")), static_cast<int>(E_ACCESSDENIED));
  }
  EXPECT_THROW(_com_issue_errorex(E_FAIL, nullptr, IID_IUnknown), EComException);
  EXPECT_THROW(_com_util::CheckError(E_OUTOFMEMORY), EComException);
}

// The switches are data imported from qz.dll, and their default texts are
// read by the crash-dump code: a typo or a missing export shows here. The
// dump defaults of faults and of the file name are where dumps are tested.
TEST(TuningGlobals, AreImportedWithTheirDefaults) {
  EXPECT_TRUE(UseVEH);
  EXPECT_EQ(SkipModulesForError, "kernel32;ntdll;nt;qz;MSVCR90D;MSVCR90;MSVCP90D;MSVCP90;KERNELBASE");
  EXPECT_FALSE(SaveMiniDumpOnCppException);
  EXPECT_FALSE(ExtendDebugInformationFromException);
  EXPECT_EQ(MiniDumpType, 0u);
  EXPECT_EQ(MiniDumpExcludedTypes, "EThreadInterrupt;EStructuredException;C++");
}

}  // namespace
