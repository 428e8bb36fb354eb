// StackWalk: the system's unwinder where the function table describes every
// frame, the debug-help library's x64 walker (one step at a time under the
// symbol lock) from the first frame it does not.
#include "diagnostics/debug_info/unwind_walk.h"
#include "diagnostics/symbol_engine.h"

#include <qz/errors/tuning.h>

namespace {

STACKFRAME64 first_frame(const CONTEXT& context) {
  STACKFRAME64 frame = {};
  frame.AddrPC.Offset = context.Rip;
  frame.AddrPC.Mode = AddrModeFlat;
  frame.AddrFrame.Offset = context.Rbp;
  frame.AddrFrame.Mode = AddrModeFlat;
  frame.AddrStack.Offset = context.Rsp;
  frame.AddrStack.Mode = AddrModeFlat;
  return frame;
}

// One step of the walker; false at the end of the stack or on any failure.
bool step(STACKFRAME64& frame, CONTEXT& context, HANDLE thread) {
  EnsureModuleSymbolsLoaded(frame.AddrPC.Offset);  // the walker unwinds without symbols too
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return false;
  return api->StackWalk64(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), thread, &frame, &context,
                          nullptr, api->SymFunctionTableAccess64, api->SymGetModuleBase64,
                          nullptr) != FALSE &&
         frame.AddrPC.Offset != 0;
}

}  // namespace

// Not inlined: with a null context the walk starts at this function's own
// frame, which is dropped, so that it yields the caller's position first.
__attribute__((noinline)) unsigned int StackWalk(unsigned long long* frames, _CONTEXT* context,
                                                 void* thread, unsigned int skip,
                                                 unsigned int max) {
  if (!frames) max = 0;
  symbol_engine_user engine;
  if (!engine || max == 0) return 0;
  CONTEXT copy;
  unsigned long long to_skip = skip;
  if (context) {
    copy = *context;
  } else {
    RtlCaptureContext(&copy);
    ++to_skip;  // this function's own frame
  }
  STACKFRAME64 frame = first_frame(copy);
  HANDLE walked = thread ? thread : GetCurrentThread();
  unsigned int stored = 0;
  unsigned long long steps = 0;
  if (SymbolSources != symbol_sources::debug_help_only) {
    const debug_info::unwind_walk_result fast = debug_info::unwind_walk(copy, frames, to_skip, max);
    if (fast.reached_end || fast.stored == max) return fast.stored;
    // The debug-help walker starts again at the frame the unwinder could not
    // step, which yields that frame once more.
    stored = fast.stored;
    steps = fast.steps - 1;
    if (steps >= to_skip) --stored;
    frame = first_frame(copy);
  }
  for (; stored < max && step(frame, copy, walked); ++steps)
    if (steps >= to_skip) frames[stored++] = frame.AddrPC.Offset;
  return stored;
}
