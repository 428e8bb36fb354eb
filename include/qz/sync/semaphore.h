// TSemaphore: a semaphore object of the system as an ILock, owned through
// THandle. Lock takes one unit, Unlock gives one back.
//
//   TSemaphore slots(4);          // four units, all free
//   TSemaphore jobs(1000, 0);     // at most 1000, none yet: maximum first!
//
// Waits are alertable: a queued user procedure call runs during them; Lock()
// then waits on, Lock(timeout) returns false. Every failing call throws
// ESystemException, releasing beyond the maximum included; a failed create
// or open leaves the null handle.
//
// Thread safety: any thread may take and give units. The object is not to
// be re-created or assigned while other threads use it.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>
#include <qz/sync/lock.h>

class QZ_API TSemaphore : public ILock, public THandle {
 public:
  // Maximum and initial count both `count`.
  explicit TSemaphore(int count);
  TSemaphore(int maximum, int initial);
  TSemaphore(const char* name, int maximum, int initial);
  TSemaphore(const wchar_t* name, int maximum, int initial);
  explicit TSemaphore(_DoNotInitialize) noexcept {}
  // Copies duplicate the handle (THandle).

  // Create or open, storing the handle over the old one without closing it.
  void CreateSemaphoreW(long maximum, long initial);
  void CreateSemaphoreW(long maximum, long initial, const char* name);
  void CreateSemaphoreW(long maximum, long initial, const wchar_t* name);
  void OpenSemaphoreW(const char* name, unsigned long access);
  void OpenSemaphoreW(const wchar_t* name, unsigned long access);

  bool Lock(unsigned int timeout) override;
  void Lock() override;
  void Unlock() override;
  // Gives back `count` units; returns the count before.
  long ReleaseSemaphore(long count);
};
