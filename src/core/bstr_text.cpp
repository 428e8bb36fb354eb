#include "core/bstr_text.h"

namespace qz_detail {

std::wstring wide_copy(const _bstr_t& text) {
  const wchar_t* data = text;
  return data ? std::wstring(data, text.length()) : std::wstring();
}

_bstr_t to_bstr(const std::wstring& text) {
  BSTR result = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (!result) _com_issue_error(E_OUTOFMEMORY);
  return _bstr_t(result, false);
}

}  // namespace qz_detail
