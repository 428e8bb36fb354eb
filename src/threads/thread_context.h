// TThreadContext: a thread pool's worker, a TThreadClass whose body asks its
// owner for jobs until told to end (private to the library; users reach it
// as IThreadContext through CreateNewThreadContext).
//
// Thread safety: as IThreadContext. The owner reference is handed over
// under a lock: Start reads it on any thread, the ending loop drops it.
#pragma once

#include <qz/threads/thread_class.h>
#include <qz/threads/thread_context.h>

#include <windows.h>

#include <atomic>

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

 protected:
  void DynamicThreadEntry() override;

 private:
  // Runs one job; true when an interruption ended it.
  bool RunJob(IThreadJob& job, const SmartPtr<IThreadContext>& self);
  SmartPtr<IThreadOwner> Owner() const;
  // The loop ended for good: the owner is let go, so that neither keeps
  // the other alive.
  void DropOwner();

  SmartPtr<IThreadOwner> owner_;
  mutable SRWLOCK owner_lock_;
  // Two Cancels that replace the same worker at once start one thread.
  SRWLOCK start_lock_;
  // A job was handed out and the owner not yet told it is done. Whoever
  // clears it tells the owner: the worker, or the interrupter that had to
  // terminate the worker inside the job.
  std::atomic<bool> job_pending_{false};
};
