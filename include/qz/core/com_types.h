// The platform's COM support types (_bstr_t, _variant_t, _com_error) as qz
// uses them, with their failures routed to qz's exceptions.
//
// The compiler's COM support headers report a failed HRESULT through a
// per-module handler; including this header points that handler at
// throw_EGeneric_from_com_error, so _bstr_t and _variant_t failures throw
// EComException in every module that uses qz. The pieces of the COM support
// library that the headers only declare are in qz.dll (com_support_mingw.cpp).
#pragma once

#include <qz/export.h>

#include <windows.h>
#include <comutil.h>
#include <comdef.h>

// Builds EComException(hr, info), releases `info` when it is not null, and
// throws the exception. The handler COM support code calls for a failed HRESULT.
[[noreturn]] QZ_API void throw_EGeneric_from_com_error(long hr, IErrorInfo* info);

namespace qz_detail {
QZ_API void WINAPI com_error_handler(HRESULT hr, IErrorInfo* info);
// One registration per module that includes this header.
inline const bool com_errors_routed = (_set_com_error_handler(&com_error_handler), true);
}  // namespace qz_detail
