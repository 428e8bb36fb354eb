#include <qz/core/com_types.h>
#include <qz/errors/exceptions.h>
#include <qz/core/throw.h>
#include <qz/errors/tuning.h>

#include "support/errors_test_support.h"
#include "support/error_code.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <errno.h>

#include <string>
#include <vector>

namespace {

using errors_test::NamesOf;
using errors_test::TextOf;

TEST(ESystemException, CarriesCodeAndTheSystemTextWithoutTrailingLineBreakThenCallerPairs) {
  ESystemException e(ERROR_ACCESS_DENIED);
  EXPECT_EQ(NamesOf(e), "Code,Text,");
  EXPECT_EQ(qz_test::CodeOf(e), 5);
  const std::string text = TextOf(e, "Text");
  EXPECT_FALSE(text.empty());
  EXPECT_NE(text.back(), '\n');
  EXPECT_NE(text.back(), '\r');
  EXPECT_EQ(std::string(e.what()), "Code: 5 (0x5)\nText: " + text);
  ESystemException unknown(0x7ffffff0, {"File", "a.txt"});  // empty text, caller pairs follow
  EXPECT_EQ(NamesOf(unknown), "Code,Text,File,");
  EXPECT_EQ(TextOf(unknown, "Text"), "");
  SetLastError(ERROR_FILE_NOT_FOUND);  // ThrowSystemException takes the thread's last error
  EXPECT_EQ(qz_test::CodeThrownBy([] { ThrowSystemException(); }), ERROR_FILE_NOT_FOUND);
}

TEST(ERuntimeException, PutsTheRuntimeTextAfterTheCallersPairs) {
  ERuntimeException e(ENOENT, {"Path", "x"});
  EXPECT_EQ(NamesOf(e), "Code,Path,Text,");
  EXPECT_EQ(TextOf(e, "Text"), "No such file or directory");
}

TEST(EComException, FromAnHresultWithoutErrorInfoOrAComError) {
  EComException e(static_cast<long>(0x80004005), nullptr);
  EXPECT_EQ(qz_test::CodeOf(e), -2147467259);
  EXPECT_EQ(TextOf(e, "HRESULT"), "80004005");
  EXPECT_EQ(NamesOf(e).rfind("Code,HRESULT,", 0), 0u);
  EComException from_com_error(_com_error(E_POINTER));
  EXPECT_EQ(NamesOf(from_com_error), "HRESULT,Text,Description,");
  EXPECT_EQ(static_cast<int>(from_com_error.get_value("HRESULT")), static_cast<int>(E_POINTER));
  EXPECT_EQ(TextOf(from_com_error, "Description"), "");
}

// An error info that reports fixed texts and counts its references.
class FakeErrorInfo : public IErrorInfo {
 public:
  ULONG refs = 1;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override { return *out = nullptr, E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }
  HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) override { return *guid = GUID(), S_OK; }
  HRESULT STDMETHODCALLTYPE GetSource(BSTR* text) override { return *text = SysAllocString(L"Demo.Component"), S_OK; }
  HRESULT STDMETHODCALLTYPE GetDescription(BSTR* text) override { return *text = SysAllocString(L"it broke"), S_OK; }
  HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* text) override { return *text = nullptr, E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* context) override { return *context = 0, E_NOTIMPL; }
};

TEST(EComException, ErrorInfoAddsDescriptionAndSourceAndIsReleasedByTheThrower) {
  FakeErrorInfo info;
  info.AddRef();  // the thrower's reference
  try {
    throw_EGeneric_from_com_error(E_INVALIDARG, &info);
  } catch (const EComException& e) {
    EXPECT_EQ(TextOf(e, "Description"), "it broke");
    EXPECT_EQ(TextOf(e, "Source"), "Demo.Component");
    EXPECT_EQ(TextOf(e, "HRESULT"), "80070057");
  }
  EXPECT_EQ(info.refs, 1u);
}

TEST(EBadCastException, NamesTheTypesReadably) {
  EBadCastException e(typeid(int), typeid(double));
  EXPECT_STREQ(e.what(), "Text: Bad cast\nFrom: int\nTo: double");
  EBadCastException real(typeid(void), typeid(std::string), typeid(EGeneric));
  EXPECT_EQ(TextOf(real, "To"), "std::string");
  EXPECT_EQ(TextOf(real, "RealType"), "EGeneric");
}

TEST(ELegacyException, OnSysLibExcThrowsCodeTypeAndText) {
  try {
    OnSysLibExc("Socket", "connection reset", 10054);
    FAIL();
  } catch (const ELegacyException& e) {
    EXPECT_STREQ(e.what(), "Code: 10054 (0x2746)\nType: Socket\nText: connection reset");
  }
}

TEST(ENotImplemented, NamesTheSourceLocation) {
  ENotImplemented e("file.cpp", 12, "Foo::Bar");
  EXPECT_STREQ(e.what(), "Text: Not implemented\nSourceFile: file.cpp\nSourceLine: 12 (0xc)\nFunction: Foo::Bar");
  EXPECT_THROW(_my_purecall_translator(), EPurecallException);
  EXPECT_STREQ(EPurecallException().what(), "Purecall");
}

// Built by hand, so no dumps; real faults and their texts are in
// structured_exceptions_test.cpp.
EStructuredException Built(DWORD code, const std::vector<ULONG_PTR>& parameters) {
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = code;
  for (ULONG_PTR parameter : parameters) record.ExceptionInformation[record.NumberParameters++] = parameter;
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  return EStructuredException(code, &pointers, 0);
}

TEST(EStructuredException, TextsOfCodesAndParameterNames) {
  qz_test::ScopedSetting<bool> no_dumps(SaveMiniDumpOnStructuredException, false);
  const EStructuredException high = Built(EXCEPTION_ACCESS_VIOLATION, {1, 0xdeadbeef00ull});
  EXPECT_EQ(TextOf(high, "Text"), "Access Violation (write to 0xdeadbeef00)");
  const EStructuredException unknown = Built(0xC0000097, {});
  EXPECT_EQ(TextOf(unknown, "Text"), "<none>");  // unknown codes have no text
  EXPECT_EQ(qz_test::CodeOf(unknown), static_cast<int>(0xC0000097));
  // Parameter names run on past the digits.
  const EStructuredException many = Built(0xE0000001, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  EXPECT_EQ(static_cast<int>(many.get_value("Parameter9")), 9);
  EXPECT_EQ(static_cast<int>(many.get_value("Parameter:")), 10);
  EXPECT_EQ(static_cast<int>(many.get_value("Parameter;")), 11);
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

}  // namespace
