// TEvent: an event object of the system, owned through THandle. Not an ILock.
//
//   TEvent done;                 // manual reset, not signalled
//   ... another thread: done.Set();
//   if (done.Signaled(1000)) ...
//
// A named event is created open to every user (its access list is present
// but null), so processes of other accounts can open it. Every failing call
// throws ESystemException; a failed create or open leaves the null handle.
// Waits are alertable: queued user procedure calls run during them;
// WaitForSignal then waits on, Signaled returns false.
//
// Thread safety: any number of threads may set, reset and wait on one
// object; it is not to be re-created or assigned while others use it.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TEvent : public THandle {
 public:
  explicit TEvent(bool manual_reset = true, bool initially_signaled = false);
  TEvent(const char* name, bool manual_reset, bool initially_signaled);
  TEvent(const wchar_t* name, bool manual_reset, bool initially_signaled);
  // Holds no event until CreateEventW or OpenEventW.
  explicit TEvent(_DoNotInitialize) noexcept {}

  // Create or open, storing the handle over the old one without closing it.
  void CreateEventW(bool manual_reset, bool initially_signaled);
  void CreateEventW(bool manual_reset, bool initially_signaled, const char* name);
  void CreateEventW(bool manual_reset, bool initially_signaled, const wchar_t* name);
  void OpenEventW(const char* name, unsigned long access);
  void OpenEventW(const wchar_t* name, unsigned long access);

  void Set();
  void SetEvent() { Set(); }
  void Reset();
  void ResetEvent() { Reset(); }
  void Pulse();
  void PulseEvent() { Pulse(); }

  // One wait of at most `timeout` ms; true only when the event was signalled.
  bool Signaled(int timeout) const;
  // Waits without end until the event is signalled.
  void WaitForSignal() const;
};
