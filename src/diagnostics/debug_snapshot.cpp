// GetMyDebugStack and TakeDebugSnapshot. Layout of both: one block per
// thread, a header line "Thread <id>" followed by its frames as
// SymGetStackTrace writes them ("\n-> <full name>"); blocks are separated by
// an empty line, the calling thread's block first.
#include "diagnostics/process_locks.h"
#include "diagnostics/symbol_engine.h"
#include "diagnostics/thread_walk.h"

#include <tlhelp32.h>

#include <vector>

namespace {

constexpr unsigned int kMaxFrames = 64;

struct walked_stack {
  DWORD thread_id = 0;
  bool readable = false;
  unsigned int count = 0;
  unsigned long long frames[kMaxFrames] = {};
};

std::string block(const walked_stack& stack) {
  std::string text = "Thread " + std::to_string(stack.thread_id);
  if (!stack.readable) return text + " (stack not readable)";
  return text + SymGetStackTrace(stack.frames, stack.count);
}

std::vector<DWORD> other_threads() {
  std::vector<DWORD> ids;
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return ids;
  THREADENTRY32 entry;
  entry.dwSize = sizeof(entry);
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    if (entry.th32OwnerProcessID == GetCurrentProcessId() &&
        entry.th32ThreadID != GetCurrentThreadId())
      ids.push_back(entry.th32ThreadID);
  CloseHandle(snapshot);
  return ids;
}

// The caller holds the symbol lock and the process locks for the whole time.
void walk_suspended(walked_stack& stack) {
  HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION,
                             FALSE, stack.thread_id);
  if (!thread) return;
  stack.readable = walk_thread_while_locked(thread, stack.frames, kMaxFrames, stack.count,
                                            suspended_thread::walk);
  CloseHandle(thread);
}

}  // namespace

std::string GetMyDebugStack() {
  symbol_engine_user engine;
  walked_stack mine;
  mine.thread_id = GetCurrentThreadId();
  mine.readable = true;
  mine.count = StackWalk(mine.frames, nullptr, nullptr, 1, kMaxFrames);  // from our caller
  return block(mine);
}

std::string TakeDebugSnapshot() {
  symbol_engine_user engine;
  if (!engine) return {};
  walked_stack mine;
  mine.thread_id = GetCurrentThreadId();
  mine.readable = true;
  mine.count = StackWalk(mine.frames, nullptr, nullptr, 1, kMaxFrames);
  const std::vector<DWORD> ids = other_threads();
  std::vector<walked_stack> others(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) others[i].thread_id = ids[i];
  {
    symbol_lock lock;  // first, so that no suspended thread holds it
    if (lock) {
      process_locks held;
      for (walked_stack& stack : others) walk_suspended(stack);
    }
  }
  std::string text = block(mine);
  for (const walked_stack& stack : others) text += "\n\n" + block(stack);
  return text;
}
