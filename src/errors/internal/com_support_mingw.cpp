// The COM support library pieces mingw-w64's comutil.h/comdef.h declare but
// do not define. Failures go to qz's exceptions instead of _com_error.
#include <qz/core/com_types.h>
#include <qz/core/throw.h>

#include <cstring>
#include <new>

void WINAPI qz_detail::com_error_handler(HRESULT hr, IErrorInfo* info) { throw_EGeneric_from_com_error(hr, info); }

// The system headers declare these without export attributes; qz.dll exports
// them so that every module using _bstr_t or _com_ptr_t links them from here.

// Like _com_issue_error, but with the error info `unknown` reports for `iid`.
QZ_API void WINAPI _com_issue_errorex(HRESULT hr, IUnknown* unknown, REFIID iid) {
  IErrorInfo* info = nullptr;
  ISupportErrorInfo* support = nullptr;
  if (unknown && SUCCEEDED(unknown->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(&support)))) {
    if (support->InterfaceSupportsErrorInfo(iid) == S_OK && GetErrorInfo(0, &info) != S_OK) info = nullptr;
    support->Release();
  }
  throw_EGeneric_from_com_error(hr, info);
}

namespace {

[[noreturn]] void throw_last_conversion_error() {
  const DWORD error = GetLastError();
  throw_EGeneric_from_com_error(error ? HRESULT_FROM_WIN32(error) : E_FAIL, nullptr);
}

}  // namespace

QZ_API BSTR WINAPI _com_util::ConvertStringToBSTR(const char* text) {
  if (!text) return nullptr;
  const int length = static_cast<int>(std::strlen(text));
  if (length == 0) {
    BSTR empty = SysAllocString(L"");
    if (!empty) throw_EGeneric_from_com_error(E_OUTOFMEMORY, nullptr);
    return empty;
  }
  const int wide_length = MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
  if (wide_length == 0) throw_last_conversion_error();
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(wide_length));
  if (!result) throw_EGeneric_from_com_error(E_OUTOFMEMORY, nullptr);
  if (MultiByteToWideChar(CP_ACP, 0, text, length, result, wide_length) == 0) {
    SysFreeString(result);
    throw_last_conversion_error();
  }
  return result;
}

// The result is released by _bstr_t with delete[].
QZ_API char* WINAPI _com_util::ConvertBSTRToString(BSTR text) {
  if (!text) return nullptr;
  const int length = static_cast<int>(SysStringLen(text));
  const int narrow_length =
      length ? WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr) : 0;
  if (length && narrow_length == 0) throw_last_conversion_error();
  char* result = new (std::nothrow) char[static_cast<size_t>(narrow_length) + 1];
  if (!result) throw_EGeneric_from_com_error(E_OUTOFMEMORY, nullptr);
  if (length && WideCharToMultiByte(CP_ACP, 0, text, length, result, narrow_length, nullptr, nullptr) == 0) {
    delete[] result;
    throw_last_conversion_error();
  }
  result[narrow_length] = '\0';
  return result;
}
