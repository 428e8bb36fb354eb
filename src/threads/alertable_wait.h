// Alertable waits that procedure calls do not cut short (private to the
// library).
#pragma once

#include <qz/os/handle.h>

#include <windows.h>

// Waits alertably for `object` until the tick count reaches `deadline`
// (INFINITE: no deadline). A procedure call that runs and returns does not
// end the wait; one that throws (an interruption) leaves it by its
// exception. True when the object was signalled; a failed wait throws.
inline bool WaitUntil(const THandle& object, DWORD deadline, bool no_deadline) {
  for (;;) {
    DWORD left = INFINITE;
    if (!no_deadline) {
      const LONG remaining = static_cast<LONG>(deadline - GetTickCount());
      left = remaining > 0 ? static_cast<DWORD>(remaining) : 0;
    }
    const DWORD result = object.WaitForSingleObject(left, TRUE);
    if (result != WAIT_IO_COMPLETION) return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  }
}

// The same wait for at most `ms` (INFINITE: without end).
inline bool WaitOutlastingCalls(const THandle& object, DWORD ms) {
  return WaitUntil(object, GetTickCount() + ms, ms == INFINITE);
}
