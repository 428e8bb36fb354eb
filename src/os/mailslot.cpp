#include <qz/core/throw.h>
#include <qz/os/mailslot.h>

TMailslot::TMailslot(const char* name, DWORD readTimeout, DWORD maxMessageSize) {
  CreateMailslotW(name, maxMessageSize, readTimeout);
}

TMailslot::TMailslot(const wchar_t* name, DWORD readTimeout, DWORD maxMessageSize) {
  CreateMailslotW(name, maxMessageSize, readTimeout);
}

void TMailslot::CreateMailslotW(const char* name, DWORD maxMessageSize, DWORD readTimeout) {
  handle = ::CreateMailslotA(name, maxMessageSize, readTimeout, nullptr);
  if (handle == INVALID_HANDLE_VALUE) ThrowSystemException();
}

void TMailslot::CreateMailslotW(const wchar_t* name, DWORD maxMessageSize, DWORD readTimeout) {
  handle = ::CreateMailslotW(name, maxMessageSize, readTimeout, nullptr);
  if (handle == INVALID_HANDLE_VALUE) ThrowSystemException();
}
