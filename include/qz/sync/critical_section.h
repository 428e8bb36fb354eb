// TCriticalSection: the cheapest ILock, a process-local critical section of
// the operating system. Recursive for the owning thread: every Lock() needs
// its own Unlock().
//
// Lock waits without end and not alertably (the system's critical section
// cannot): it is no interruption point, and a thread blocked in it ends
// only by termination. Where a waiting thread must stay interruptible, use
// TMutex or TMultiLock.
//
// Thread safety: Lock and Unlock may be called from any thread; a thread
// unlocks only what it locked.
#pragma once

#include <qz/export.h>
#include <qz/sync/lock.h>

#include <windows.h>

class QZ_API TCriticalSection : public ILock, public CRITICAL_SECTION {
 public:
  TCriticalSection();
  // Copies the source's record as raw bytes without initialising a new one;
  // only meaningful for a lock that has never been used.
  TCriticalSection(const TCriticalSection& other);
  TCriticalSection& operator=(const TCriticalSection& other);
  ~TCriticalSection();

  // Not supported: always throws ENotImplemented, whatever the time-out.
  bool Lock(unsigned int timeout) override;
  void Lock() override;
  void Unlock() override;
};
