// Moving text between _bstr_t and std::wstring for the _bstr_t members of
// the string utilities. Both directions keep the full length, embedded null
// characters included; a null _bstr_t is the empty text.
#pragma once

#include <qz/core/com_types.h>

#include <string>

namespace qz_detail {

std::wstring wide_copy(const _bstr_t& text);
// Throws the COM error E_OUTOFMEMORY when the system string cannot be made.
_bstr_t to_bstr(const std::wstring& text);

}  // namespace qz_detail
