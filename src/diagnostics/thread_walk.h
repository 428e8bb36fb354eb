// Walking the stack of another thread of the process (private to the
// library; TakeDebugSnapshot and TThreadClass::GetCurrentStack use it).
//
// The thread stands still while it is walked, and the walk allocates, may
// load modules' symbols and calls into the debug-help library. A thread
// suspended while it holds the loader lock, the process environment block's
// lock, a heap's lock or the symbol lock would make the walk wait for it for
// ever. So the engine is started first, then the symbol lock and the process
// locks are taken (waiting, if need be, for the thread to let them go), and
// only then is the thread suspended: it cannot be holding any of them.
//
// Thread safety: any thread but `thread` itself.
#pragma once

#include <windows.h>

// What to do with a thread that is suspended already when the walk starts.
enum class suspended_thread { walk, skip };

// Suspends `thread` (opened with suspend, resume and get-context rights),
// stores up to `max` frames of its stack in `frames`, resumes it and returns
// how many it stored: 0 when the thread cannot be suspended or read, or when
// it was suspended already and `when_suspended` says skip (the suspension
// made here then stays, as the caller's contract has it).
unsigned int walk_thread(HANDLE thread, unsigned long long* frames, unsigned int max,
                         suspended_thread when_suspended = suspended_thread::walk);

// The same for a caller that holds the engine, the symbol lock and the
// process locks already (a walk of many threads in a row); false when the
// thread cannot be suspended or read.
bool walk_thread_while_locked(HANDLE thread, unsigned long long* frames, unsigned int max,
                              unsigned int& count, suspended_thread when_suspended);
