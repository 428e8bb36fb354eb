// A stack walk on the system's own function table and unwinder
// (RtlLookupFunctionEntry / RtlVirtualUnwind), in this process.
//
// x64 code built by GCC or MSVC describes every non-leaf function in its
// image's exception directory, so the system's unwinder steps through such a
// stack in microseconds, where the debug-help walker under Wine costs
// milliseconds a frame. A frame the table does not describe (code without
// unwind data, JIT code, a leaf in a module without the directory) is where
// the two could disagree, so the walk stops there and reports it: the caller
// goes on with the debug-help walker from the returned context.
//
// Thread safety: pure functions over the caller's context; the walked stack
// must stay put while it is read (the current thread, or a suspended one).
#pragma once

#include <windows.h>

namespace debug_info {

enum class unwind_result {
  stepped,  // `context` now holds the caller's frame
  end,      // the stack ends here (no caller)
  unknown,  // the function table does not describe this frame
};

// The reservation a thread's stack lives in: the unwinder reads saved
// registers and return addresses straight from memory, so a frame whose
// stack pointer (or frame register) lies outside it is left to the
// debug-help walker, which reads through ReadProcessMemory and survives a
// corrupt stack.
struct stack_bounds {
  DWORD64 low = 0;
  DWORD64 high = 0;  // one past the end
  bool holds(DWORD64 address) const { return address >= low && address < high; }
};
// The bounds of the stack that holds `stack_pointer`; empty when it lies in
// no reserved memory.
stack_bounds stack_bounds_of(DWORD64 stack_pointer);

// Moves `context` one frame up its stack.
unwind_result unwind_one(CONTEXT& context, const stack_bounds& stack);

// Fills `frames` like the debug-help walker does: the context's own
// instruction first, then one return address per caller, dropping the first
// `skip`; at most `max`.
struct unwind_walk_result {
  unsigned int stored = 0;          // addresses stored in `frames`
  unsigned long long steps = 0;     // frames seen, the skipped ones included
  bool reached_end = false;         // the stack ended; else `max` was reached, or the
                                    // unwinder stopped at a frame it cannot step: then
                                    // `context` holds that frame, already seen
};
unwind_walk_result unwind_walk(CONTEXT& context, unsigned long long* frames, unsigned long long skip,
                               unsigned int max);

}  // namespace debug_info
