#include <qz/core/throw.h>
#include <qz/sync/waitable_timer.h>

#include "sync/named_object_security.h"

TWaitableTimer::TWaitableTimer(bool manual_reset) { CreateTimer(manual_reset); }

TWaitableTimer::TWaitableTimer(const char* name, bool manual_reset) {
  CreateTimer(name, manual_reset);
}

TWaitableTimer::TWaitableTimer(const wchar_t* name, bool manual_reset) {
  CreateTimer(name, manual_reset);
}

// Only INVALID_HANDLE_VALUE counts as failure here; a null handle is kept
// and reported by the first use. See the header.
void TWaitableTimer::StoreTimer(HANDLE timer) {
  handle = timer;
  if (timer == INVALID_HANDLE_VALUE) ThrowSystemException();
}

void TWaitableTimer::CreateTimer(bool manual_reset) {
  StoreTimer(::CreateWaitableTimerW(nullptr, manual_reset, nullptr));
}

void TWaitableTimer::CreateTimer(const char* name, bool manual_reset) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreTimer(::CreateWaitableTimerA(security.get(), manual_reset, name));
}

void TWaitableTimer::CreateTimer(const wchar_t* name, bool manual_reset) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreTimer(::CreateWaitableTimerW(security.get(), manual_reset, name));
}

void TWaitableTimer::OpenTimer(const char* name, unsigned long access) {
  StoreTimer(::OpenWaitableTimerA(access, FALSE, name));
}

void TWaitableTimer::OpenTimer(const wchar_t* name, unsigned long access) {
  StoreTimer(::OpenWaitableTimerW(access, FALSE, name));
}

// The system counts in 100 ns units and reads a negative due time as
// relative. The milliseconds are widened before the multiplication, so due
// times beyond 214748 ms do not overflow.
void TWaitableTimer::SetTimer(unsigned long due_ms, long period_ms) {
  Schedule(static_cast<__int64>(due_ms) * -10000, period_ms);
}

void TWaitableTimer::SetTimer(const _FILETIME& when) {
  ULARGE_INTEGER due;
  due.LowPart = when.dwLowDateTime;
  due.HighPart = when.dwHighDateTime;
  Schedule(static_cast<__int64>(due.QuadPart), 0);
}

// No completion routine, and a suspended machine is not woken up.
void TWaitableTimer::Schedule(__int64 due, long period_ms) {
  LARGE_INTEGER when;
  when.QuadPart = due;
  if (!SetWaitableTimer(handle, &when, period_ms, nullptr, nullptr, FALSE)) ThrowSystemException();
}

void TWaitableTimer::CancelTimer() {
  if (!CancelWaitableTimer(handle)) ThrowSystemException();
}
