#include <qz/errors/exceptions.h>
#include <qz/errors/throw.h>
#include <qz/errors/tuning.h>

#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <errno.h>

#include <string>
#include <type_traits>

namespace {

std::string text_of(const EGeneric& e, const char* name) {
  _value_t value = e.get_value(name);
  return value.empty() ? "<none>" : value.as_string();
}

std::string names_of(const EGeneric& e) {
  std::string names;
  for (const auto& entry : e.values()) names += entry.first + ",";
  return names;
}

TEST(ESystemException, CarriesCodeAndTheSystemTextWithoutTrailingLineBreakThenCallerPairs) {
  ESystemException e(ERROR_ACCESS_DENIED);
  EXPECT_EQ(names_of(e), "Code,Text,");
  EXPECT_EQ(static_cast<int>(e.get_value("Code")), 5);
  const std::string text = text_of(e, "Text");
  EXPECT_FALSE(text.empty());
  EXPECT_NE(text.back(), '\n');
  EXPECT_NE(text.back(), '\r');
  EXPECT_EQ(std::string(e.what()), "Code: 5 (0x5)\nText: " + text);
  ESystemException unknown(0x7ffffff0, {"File", "a.txt"});  // empty text, caller pairs follow
  EXPECT_EQ(names_of(unknown), "Code,Text,File,");
  EXPECT_EQ(text_of(unknown, "Text"), "");
}

TEST(ThrowSystemException, UsesTheThreadsLastError) {
  SetLastError(ERROR_FILE_NOT_FOUND);
  try {
    ThrowSystemException();
  } catch (const ESystemException& e) {
    EXPECT_EQ(static_cast<int>(e.get_value("Code")), ERROR_FILE_NOT_FOUND);
  }
  EXPECT_THROW(ThrowSystemException(ERROR_INVALID_HANDLE), EGeneric);
}

TEST(ERuntimeException, PutsTheRuntimeTextAfterTheCallersPairs) {
  ERuntimeException e(ENOENT, {"Path", "x"});
  EXPECT_EQ(names_of(e), "Code,Path,Text,");
  EXPECT_EQ(text_of(e, "Text"), "No such file or directory");
}

TEST(EComException, FromAnHresultWithoutErrorInfoOrAComError) {
  EComException e(static_cast<long>(0x80004005), nullptr);
  EXPECT_EQ(static_cast<int>(e.get_value("Code")), -2147467259);
  EXPECT_EQ(text_of(e, "HRESULT"), "80004005");
  EXPECT_EQ(names_of(e).rfind("Code,HRESULT,", 0), 0u);
  EComException from_com_error(_com_error(E_POINTER));
  EXPECT_EQ(names_of(from_com_error), "HRESULT,Text,Description,");
  EXPECT_EQ(static_cast<int>(from_com_error.get_value("HRESULT")), static_cast<int>(E_POINTER));
  EXPECT_EQ(text_of(from_com_error, "Description"), "");
}

// An error info that reports fixed texts and counts its references.
class FakeErrorInfo : public IErrorInfo {
 public:
  ULONG refs = 1;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }
  HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) override {
    *guid = GUID();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetSource(BSTR* text) override {
    *text = SysAllocString(L"Demo.Component");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDescription(BSTR* text) override {
    *text = SysAllocString(L"the widget broke");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* text) override {
    *text = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* context) override {
    *context = 0;
    return E_NOTIMPL;
  }
};

TEST(EComException, ErrorInfoAddsDescriptionAndSourceAndIsReleasedByTheThrower) {
  FakeErrorInfo info;
  info.AddRef();  // the thrower's reference
  try {
    throw_EGeneric_from_com_error(E_INVALIDARG, &info);
  } catch (const EComException& e) {
    EXPECT_EQ(text_of(e, "Description"), "the widget broke");
    EXPECT_EQ(text_of(e, "Source"), "Demo.Component");
    EXPECT_EQ(text_of(e, "HRESULT"), "80070057");
  }
  EXPECT_EQ(info.refs, 1u);
}

TEST(EBadCastException, NamesTheTypesReadably) {
  EBadCastException e(typeid(int), typeid(double));
  EXPECT_STREQ(e.what(), "Text: Bad cast\nFrom: int\nTo: double");
  EBadCastException real(typeid(void), typeid(std::string), typeid(EGeneric));
  EXPECT_EQ(text_of(real, "To"), "std::string");
  EXPECT_EQ(text_of(real, "RealType"), "EGeneric");
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

EXCEPTION_RECORD make_record(DWORD code, std::initializer_list<ULONG_PTR> parameters) {
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = code;
  record.ExceptionAddress = reinterpret_cast<void*>(0x123456789abcdef0ull);
  for (ULONG_PTR parameter : parameters) record.ExceptionInformation[record.NumberParameters++] = parameter;
  return record;
}

// Built by hand here, so no dumps: the dump tests are about dumps.
TEST(EStructuredException, AccessViolationNamesTheDirectionAndAddress) {
  qz_test::ScopedSetting<bool> no_dumps(SaveMiniDumpOnStructuredException, false);
  EXCEPTION_RECORD record = make_record(EXCEPTION_ACCESS_VIOLATION, {0, 0x10});
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  EStructuredException read(EXCEPTION_ACCESS_VIOLATION, &pointers, GetCurrentThreadId());
  EXPECT_EQ(text_of(read, "Text"), "Access Violation (read from 0x10)");
  EXPECT_EQ(names_of(read), "Text,Code,Address,Parameter0,Parameter1,");
  EXPECT_EQ(static_cast<int>(read.get_value("Address")), static_cast<int>(0x9abcdef0));

  record = make_record(EXCEPTION_ACCESS_VIOLATION, {1, 0xdeadbeef00ull});
  EStructuredException write(EXCEPTION_ACCESS_VIOLATION, &pointers, GetCurrentThreadId());
  EXPECT_EQ(text_of(write, "Text"), "Access Violation (write to 0xdeadbeef00)");
}

TEST(EStructuredException, NamesKnownCodesOnly) {
  qz_test::ScopedSetting<bool> no_dumps(SaveMiniDumpOnStructuredException, false);
  EXCEPTION_RECORD record = make_record(EXCEPTION_STACK_OVERFLOW, {});
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  EXPECT_EQ(text_of(EStructuredException(0xC00000FD, &pointers, 0), "Text"), "Stack Overflow");
  EXPECT_EQ(text_of(EStructuredException(0xC0000092, &pointers, 0), "Text"), "FPU Error");
  EXPECT_EQ(text_of(EStructuredException(0xC0000097, &pointers, 0), "Text"), "<none>");
  EXPECT_EQ(static_cast<int>(EStructuredException(0xC0000097, &pointers, 0).get_value("Code")),
            static_cast<int>(0xC0000097));
}

TEST(EStructuredException, ParameterNamesRunPastTheDigits) {
  qz_test::ScopedSetting<bool> no_dumps(SaveMiniDumpOnStructuredException, false);
  EXCEPTION_RECORD record = make_record(0xE0000001, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  EXCEPTION_POINTERS pointers = {&record, nullptr};
  EStructuredException e(0xE0000001, &pointers, 0);
  EXPECT_EQ(static_cast<int>(e.get_value("Parameter9")), 9);
  EXPECT_EQ(static_cast<int>(e.get_value("Parameter:")), 10);
  EXPECT_EQ(static_cast<int>(e.get_value("Parameter;")), 11);
}

TEST(EThreadInterrupt, IsNotCaughtAsEGeneric) {
  EXPECT_FALSE((std::is_base_of_v<EGeneric, EThreadInterrupt>));
  EXPECT_THROW(throw EThreadInterrupt(), EThreadInterrupt);
}

}  // namespace
