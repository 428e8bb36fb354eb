// TWaitableTimer: a waitable timer of the system, owned through THandle. Not
// an ILock; wait for it with THandle::WaitForSingleObject.
//
//   TWaitableTimer tick(false);     // auto reset
//   tick.SetTimer(0, 100);          // at once, then every 100 ms
//
// Unlike the other kernel-object wrappers, create and open complain only when
// the system answers INVALID_HANDLE_VALUE, which it does not do: a failed
// create or open stores the null handle silently and the fault shows at the
// first SetTimer, CancelTimer or wait, each of which throws ESystemException.
// Callers rely on that leniency, so it stays.
//
// Thread safety: any thread may set, cancel and wait. The object is not to
// be re-created or assigned while other threads use it.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TWaitableTimer : public THandle {
 public:
  explicit TWaitableTimer(bool manual_reset = true);
  TWaitableTimer(const char* name, bool manual_reset);
  TWaitableTimer(const wchar_t* name, bool manual_reset);
  explicit TWaitableTimer(_DoNotInitialize) noexcept {}

  // Create or open, storing the handle over the old one without closing it.
  void CreateTimer(bool manual_reset);
  void CreateTimer(const char* name, bool manual_reset);
  void CreateTimer(const wchar_t* name, bool manual_reset);
  void OpenTimer(const char* name, unsigned long access);
  void OpenTimer(const wchar_t* name, unsigned long access);

  // Due `due_ms` from now, then every `period_ms` (0: once).
  void SetTimer(unsigned long due_ms, long period_ms);
  void Set(unsigned long due_ms, long period_ms) { SetTimer(due_ms, period_ms); }
  // Due at the absolute time `when` (UTC), once.
  void SetTimer(const _FILETIME& when);
  void Set(const _FILETIME& when) { SetTimer(when); }

  void CancelTimer();
  void Cancel() { CancelTimer(); }

 private:
  void StoreTimer(HANDLE timer);
  void Schedule(__int64 due, long period_ms);
};
