// TThreadContext: a thread pool's worker, a TThreadClass whose body asks its
// owner for jobs until told to end (private to the library; users reach it
// as IThreadContext through CreateNewThreadContext).
//
// Thread safety: as IThreadContext. One lock serialises everything that
// reads or replaces the thread handle or the owner: Start, the asking step
// of Interrupt and BeginStop, and the copy of the handle a stop waits on.
// No wait for a thread happens under it. The controls (Suspend, Resume,
// SetPriority, GetStack) share a second lock, which only the replacement
// of a thread by Start takes besides them: the worker's own thread never
// waits for it, so a control never waits behind a thread it suspended.
#pragma once

#include <qz/threads/thread_class.h>
#include <qz/threads/thread_context.h>

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

class TThreadContext : public TThreadClass, public IThreadContext {
 public:
  explicit TThreadContext(SmartPtr<IThreadOwner> owner);
  ~TThreadContext() noexcept override;

  void Execute() override;

  void Interrupt() override;
  std::string GetStack() override;
  void Suspend() override;
  void Resume() override;
  void SetPriority(int priority) override;
  void Start() override;
  void BeginStop() override;
  void FinishStop(unsigned long deadline) override;

 protected:
  void DynamicThreadEntry() override;

 private:
  // Runs one job; true when an interruption ended it.
  bool RunJob(IThreadJob& job);
  SmartPtr<IThreadOwner> Owner() const;
  // The loop ended for good: the owner is let go, so that neither keeps
  // the other alive.
  void DropOwner();
  // Under the lock: asks the current thread to end (retiring the worker
  // when `retire`), and returns a handle of its own to that thread; an
  // empty one when there is nothing to wait for.
  THandle AskToEnd(bool retire);
  // Waits for `thread` until `deadline`, terminates it then, and settles
  // the job a terminated thread left.
  void AwaitEnd(const THandle& thread, DWORD deadline);
  void SettleAbandonedJob();
  // Runs `control` on the current thread, under handle_lock_; nothing
  // when there is no live thread, also when it ends during the control.
  void ControlLiveThread(const std::function<void()>& control);

  SmartPtr<IThreadOwner> owner_;
  mutable SRWLOCK lock_;
  // Held shared by the controls, exclusive while Start replaces the thread.
  SRWLOCK handle_lock_;
  // Set by BeginStop: no Start revives the worker.
  bool retired_ = false;
  // A job was handed out and the owner not yet told it is done. Whoever
  // clears it tells the owner: the worker, or the interrupter that had to
  // terminate the worker inside the job.
  std::atomic<bool> job_pending_{false};
  // The job while job_pending_ is set: written by the worker before it sets
  // the flag; read by an interrupter only after the thread is gone.
  SmartPtr<IThreadJob> current_job_;
};
