#include <qz/core/throw.h>
#include <qz/sync/event.h>

#include "sync/named_object_security.h"

TEvent::TEvent(bool manual_reset, bool initially_signaled) {
  CreateEventW(manual_reset, initially_signaled);
}

TEvent::TEvent(const char* name, bool manual_reset, bool initially_signaled) {
  CreateEventW(manual_reset, initially_signaled, name);
}

TEvent::TEvent(const wchar_t* name, bool manual_reset, bool initially_signaled) {
  CreateEventW(manual_reset, initially_signaled, name);
}

void TEvent::CreateEventW(bool manual_reset, bool initially_signaled) {
  StoreCreated(::CreateEventW(nullptr, manual_reset, initially_signaled, nullptr));
}

void TEvent::CreateEventW(bool manual_reset, bool initially_signaled, const char* name) {
  // Named events are shared across accounts on purpose: see the header.
  qz_detail::named_object_security security(qz_detail::named_object_access::everyone);
  StoreCreated(::CreateEventA(security.get(), manual_reset, initially_signaled, name));
}

void TEvent::CreateEventW(bool manual_reset, bool initially_signaled, const wchar_t* name) {
  qz_detail::named_object_security security(qz_detail::named_object_access::everyone);
  StoreCreated(::CreateEventW(security.get(), manual_reset, initially_signaled, name));
}

void TEvent::OpenEventW(const char* name, unsigned long access) {
  StoreCreated(::OpenEventA(access, FALSE, name));
}

void TEvent::OpenEventW(const wchar_t* name, unsigned long access) {
  StoreCreated(::OpenEventW(access, FALSE, name));
}

void TEvent::Set() {
  if (!::SetEvent(handle)) ThrowSystemException();
}

void TEvent::Reset() {
  if (!::ResetEvent(handle)) ThrowSystemException();
}

void TEvent::Pulse() {
  if (!::PulseEvent(handle)) ThrowSystemException();
}

bool TEvent::Signaled(int timeout) const {
  return WaitForSingleObject(static_cast<DWORD>(timeout), TRUE) == WAIT_OBJECT_0;
}

// A user procedure call ends the wait early; it is simply taken up again.
void TEvent::WaitForSignal() const {
  while (WaitForSingleObject(INFINITE, TRUE) != WAIT_OBJECT_0) {
  }
}
