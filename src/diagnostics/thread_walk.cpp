#include "diagnostics/thread_walk.h"

#include "diagnostics/process_locks.h"
#include "diagnostics/symbol_engine.h"

// Nothing here may wait for a lock the suspended thread could hold.
bool walk_thread_while_locked(HANDLE thread, unsigned long long* frames, unsigned int max,
                              unsigned int& count, suspended_thread when_suspended) {
  count = 0;
  const DWORD previous = SuspendThread(thread);
  if (previous == static_cast<DWORD>(-1)) return false;
  if (previous != 0 && when_suspended == suspended_thread::skip) return false;
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_FULL;
  const bool readable = GetThreadContext(thread, &context) != FALSE;
  if (readable) count = StackWalk(frames, &context, thread, 0, max);
  ResumeThread(thread);
  return readable;
}

unsigned int walk_thread(HANDLE thread, unsigned long long* frames, unsigned int max,
                         suspended_thread when_suspended) {
  symbol_engine_user engine;  // loads the library before anything is held
  if (!engine) return 0;
  symbol_lock lock;  // first, so that no suspended thread holds it
  if (!lock) return 0;
  process_locks held;
  unsigned int count = 0;
  walk_thread_while_locked(thread, frames, max, count, when_suspended);
  return count;
}
