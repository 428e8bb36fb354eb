// TMutex: a mutex object of the system as an ILock, owned through THandle.
// Recursive for the owning thread. Unlike TCriticalSection it can be named
// (shared between processes) and locked with a time-out.
//
// A mutex whose owner thread ended without releasing it ("abandoned") is
// taken over by the next Lock as if it had been released normally. Waits are
// alertable: a queued user procedure call runs during them; Lock() then
// waits on, Lock(timeout) returns false. Every failing call throws
// ESystemException; a failed create or open leaves the null handle.
//
// Thread safety: any thread may lock; only the owner unlocks. The object is
// not to be re-created or assigned while other threads use it.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>
#include <qz/sync/lock.h>

class QZ_API TMutex : public ILock, public THandle {
 public:
  // Not owned by anybody.
  TMutex();
  explicit TMutex(const char* name);
  explicit TMutex(const wchar_t* name);
  explicit TMutex(_DoNotInitialize) noexcept {}
  // Copies duplicate the handle (THandle).

  // Create or open, storing the handle over the old one without closing it.
  void CreateMutexW(bool initial_owner);
  void CreateMutexW(const char* name, bool initial_owner);
  void CreateMutexW(const wchar_t* name, bool initial_owner);
  void OpenMutexW(const char* name, unsigned long access);
  void OpenMutexW(const wchar_t* name, unsigned long access);

  bool Lock(unsigned int timeout) override;
  void Lock() override;
  void Unlock() override;
  void ReleaseMutex() { Unlock(); }
};
