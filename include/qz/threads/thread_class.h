// TThreadClass: a thread whose body is the object's own Execute(), with a
// managed start, a bounded stop and cooperative interruption.
//
//   class Poller : public TThreadClass {
//     ~Poller() override { InterruptThread(0, 5000); }  // before `wake` goes
//     void Execute() override {
//       for (;;) { wake.Signaled(1000); Poll(); }   // every wait is a way out
//     }
//     TEvent wake;
//   };
//   Poller p;
//   p.StartThread();
//   ...
//   p.InterruptThread(0, 5000);   // EThreadInterrupt unwinds Execute()
//
// Every thread starts by installing the fault translator (processor faults
// become EStructuredException) and asking for the library's stack guarantee
// for overflow handling, then runs the body.
//
// Interruption. InterruptThread queues a user procedure call to the thread
// that throws EThreadInterrupt at the body's next alertable wait (the waits
// of TEvent, TMutex, TSemaphore and TMultiLock, TThread::Sleep(ms, 1) and
// Pause; not TCriticalSection::Lock, which the system does not make
// alertable), so the body unwinds through its destructors and leaves every
// lock whole. A body that never waits alertably cannot be interrupted: it is
// terminated when the stop time-out passes. An interruption asked for
// before the body runs (or before StartThread) means the body never runs.
//
// thread_state, as derived classes may read it:
//   0  idle: not started, or the body has returned (by any way)
//   1  the body is running
//   2  an interruption came while no body ran; the body is skipped, for good
//
// An exception escaping the body is caught and logged to Debug, byte for
// byte:
//   "(!) Thread runaway with exception " <type>":" ["\n" when the message
//       has several lines] <message> "\n"          (a std::exception)
//   "(!) Thread runaway with unknown exception\n"   (anything else)
// and OnException() runs. EThreadInterrupt is the normal way out and is
// neither logged nor reported.
//
// Lifetime. The object must outlive its thread. The destructor waits 1000 ms
// for it and then terminates it; but by then the derived object is already
// destroyed while its Execute() may still run, so a derived class stops its
// thread in its own destructor (StopThread or InterruptThread). Destroying
// the object on its own thread closes the handle without waiting. Failed
// system calls throw ESystemException, from the destructor too.
//
// Thread safety: StartThread, StopThread and the destructor belong to one
// controlling thread; InterruptThread, SuspendThread, ResumeThread,
// SetThreadPriority and GetCurrentStack may be called from any other thread
// while the body runs. GetCurrentStack on the thread itself returns "" (it
// cannot suspend itself to read its own registers).
#pragma once

#include <qz/export.h>
#include <qz/threads/thread.h>

#include <atomic>
#include <string>

class QZ_API TThreadClass : public TThread {
 public:
  TThreadClass() noexcept;
  TThreadClass(const TThreadClass&) = delete;
  TThreadClass& operator=(const TThreadClass&) = delete;

  // The thread's body.
  virtual void Execute() = 0;
  // Starts a thread (default stack size) that runs the body. Throws
  // EGeneric "Thread is already running" while a thread started before is
  // still alive.
  virtual void StartThread();
  // Waits alertably up to `timeout` ms for the thread to end, then
  // terminates it. Returns at once without a thread, or on the thread itself.
  virtual void StopThread(unsigned int timeout);
  // The previous suspend count.
  virtual unsigned long SuspendThread();
  virtual unsigned long ResumeThread();
  virtual void SetThreadPriority(int priority);
  // Waits alertably up to `wait_ms` for the thread to end on its own; then
  // interrupts the body (or marks it never to run) and stops the thread
  // with `stop_timeout`.
  virtual void InterruptThread(unsigned int wait_ms, unsigned int stop_timeout);
  // The thread's stack, up to 64 frames, as the symbol engine writes it;
  // "" when the thread cannot be suspended and read (or was suspended
  // already, in which case the suspension made here stays).
  virtual std::string GetCurrentStack();
  // Called on the thread after the body ended with an exception other than
  // EThreadInterrupt. Does nothing unless overridden.
  virtual void OnException();

  // Procedure-call routine: on the thread, throws EThreadInterrupt while the
  // body of the TThreadClass at `object` runs, else marks it never to run.
  static void ThrowEThreadInterrupt(unsigned long long object);
  void ThrowEThreadInterrupt();

 protected:
  // Runs the body with the bookkeeping above; called by StaticThreadEntry.
  virtual void DynamicThreadEntry();
  // The entry of every thread StartThread makes; `object` is the
  // TThreadClass.
  static unsigned int StaticThreadEntry(void* object);
  // The middle step of InterruptThread, without waiting: queues the
  // interruption to a running body, or marks a body that has not started
  // never to run. The caller owns the handle meanwhile (no StartThread).
  void RequestInterrupt();

  std::atomic<int> thread_state;

 public:
  virtual ~TThreadClass() noexcept(false);

 private:
  bool IsOwnThread() const noexcept;
  void Terminate();
  void LogRunaway(const std::exception* e) noexcept;
};
