#include <qz/errors/exceptions.h>

#include <qz/core/codepage.h>
#include <qz/core/number_text.h>

#include "errors/system_message.h"

namespace {

std::wstring message_of(const _com_error& error) {
  const TCHAR* message = error.ErrorMessage();
  if (!message) return std::wstring();
#ifdef UNICODE
  return message;
#else
  return as_wstring(basic_const_string<char>(message), CP_ACP);
#endif
}

std::wstring description_of(const _com_error& error) {
  const _bstr_t description = error.Description();
  const wchar_t* text = description;
  return text ? std::wstring(text) : std::wstring();
}

// Puts the text of a BSTR the error info hands out, when it hands out one.
template <class Getter>
void put_info_text(EGeneric& e, const char* name, Getter get) {
  BSTR text = nullptr;
  if (SUCCEEDED(get(&text)) && text) e.put_value(name, _bstr_t(text, false));
}

}  // namespace

EComException::EComException(const _com_error& error)
    : EGeneric({"HRESULT", static_cast<int>(error.Error())}, {"Text", message_of(error)},
               {"Description", description_of(error)}) {}

EComException::EComException(long hr, IErrorInfo* info) {
  put_value("Code", static_cast<int>(hr));
  put_value("HRESULT", i64toa(static_cast<__int64>(static_cast<unsigned long>(hr)), 16));
  std::wstring message;
  if (system_message(static_cast<DWORD>(hr), FORMAT_MESSAGE_MAX_WIDTH_MASK, message)) put_value("Text", message);
  if (info) {
    put_info_text(*this, "Description", [info](BSTR* text) { return info->GetDescription(text); });
    put_info_text(*this, "Source", [info](BSTR* text) { return info->GetSource(text); });
  }
}

void throw_EGeneric_from_com_error(long hr, IErrorInfo* info) {
  EComException error(hr, info);
  if (info) info->Release();
  throw error;
}
