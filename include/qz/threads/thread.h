// TThread: an operating-system thread, owned through THandle, with the
// thread operations as methods.
//
//   unsigned int Work(void* argument);
//   TThread worker(&Work, &state);      // runs at once
//   worker.SetThreadPriority(THREAD_PRIORITY_BELOW_NORMAL);
//   worker.WaitForSingleObject(INFINITE, TRUE);
//
// The thread starts through the C runtime's thread-starting call (default
// stack size, not suspended), so it may use the whole runtime. Destroying a
// TThread closes the handle only: the thread runs on. Every failing system
// call throws ESystemException.
//
// DisableThreadPriorityBoost is a kept quirk: it does not touch priority
// boosting but sets the thread's priority to the flag's value, 0 or 1.
//
// Thread safety: as THandle; one object belongs to one thread at a time, and
// the thread it names may be anywhere. Sleep and Pause act on the caller.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TThread : public THandle {
 public:
  using entry_t = unsigned int (*)(void*);
  using apc_routine_t = void (*)(unsigned long long);

  // Starts `entry(argument)` on a new thread; a null entry throws
  // ESystemException (ERROR_INVALID_PARAMETER).
  TThread(entry_t entry, void* argument);
  // No thread until CreateThread.
  explicit TThread(_DoNotInitialize) noexcept {}
  // Copies duplicate the handle (THandle).

  // Starts a thread as the constructor does, with a stack of `stack_size`
  // bytes (0: the default), and stores its handle over the old one without
  // closing it.
  void CreateThread(entry_t entry, void* argument, unsigned long stack_size);

  // The previous suspend count.
  unsigned long SuspendThread();
  unsigned long ResumeThread();
  void SetThreadPriority(int priority);
  void TerminateThread(unsigned long exit_code);
  // The thread impersonates `token`; null makes it revert to its own.
  void SetThreadToken(void* token);
  // Sets the priority to 1 when `value`, else to 0 (see above).
  void DisableThreadPriorityBoost(bool value);
  // Runs `routine(argument)` on the thread at its next alertable wait.
  void QueueUserAPC(apc_routine_t routine, unsigned long long argument);

  // Sleeps the calling thread; with `alertable` non-zero, procedure calls
  // queued to it run and end the sleep early.
  static void Sleep(unsigned long ms, int alertable);
  // An alertable sleep of 1 ms: a point where an interruption can land.
  static void Pause();
};
