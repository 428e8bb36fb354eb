#include "diagnostics/debug_info/unwind_walk.h"

namespace debug_info {

namespace {

// The value of x64 register `number` (0 rax ... 15 r15, the numbering of
// unwind data) in `context`.
DWORD64 register_value(const CONTEXT& context, unsigned int number) {
  static constexpr DWORD64 CONTEXT::*kRegisters[16] = {
      &CONTEXT::Rax, &CONTEXT::Rcx, &CONTEXT::Rdx, &CONTEXT::Rbx, &CONTEXT::Rsp, &CONTEXT::Rbp,
      &CONTEXT::Rsi, &CONTEXT::Rdi, &CONTEXT::R8,  &CONTEXT::R9,  &CONTEXT::R10, &CONTEXT::R11,
      &CONTEXT::R12, &CONTEXT::R13, &CONTEXT::R14, &CONTEXT::R15};
  return context.*kRegisters[number & 15];
}

// The frame register a function's unwind data names (0: none). Chained
// unwind data is left alone: GCC does not write it.
unsigned int frame_register(DWORD64 image_base, const RUNTIME_FUNCTION& function) {
  const auto* unwind_info = reinterpret_cast<const BYTE*>(image_base + function.UnwindData);
  return unwind_info[3] & 0x0f;
}

}  // namespace

stack_bounds stack_bounds_of(DWORD64 stack_pointer) {
  stack_bounds bounds;
  MEMORY_BASIC_INFORMATION region;
  if (!VirtualQuery(reinterpret_cast<void*>(stack_pointer), &region, sizeof(region)) ||
      region.State != MEM_COMMIT)
    return bounds;
  bounds.low = reinterpret_cast<DWORD64>(region.AllocationBase);
  // The reservation ends where a region of another allocation begins.
  DWORD64 end = reinterpret_cast<DWORD64>(region.BaseAddress) + region.RegionSize;
  while (VirtualQuery(reinterpret_cast<void*>(end), &region, sizeof(region)) &&
         reinterpret_cast<DWORD64>(region.AllocationBase) == bounds.low &&
         region.State == MEM_COMMIT)
    end += region.RegionSize;
  bounds.high = end;
  return bounds;
}

unwind_result unwind_one(CONTEXT& context, const stack_bounds& stack) {
  if (!stack.holds(context.Rsp)) return unwind_result::unknown;
  DWORD64 image_base = 0;
  PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &image_base, nullptr);
  if (!function) return unwind_result::unknown;
  const unsigned int frame = frame_register(image_base, *function);
  if (frame != 0 && !stack.holds(register_value(context, frame))) return unwind_result::unknown;
  const DWORD64 old_sp = context.Rsp;
  void* handler_data = nullptr;
  DWORD64 establisher = 0;
  RtlVirtualUnwind(UNW_FLAG_NHANDLER, image_base, context.Rip, function, &context, &handler_data,
                   &establisher, nullptr);
  if (context.Rip == 0) return unwind_result::end;
  // A stack only grows towards its caller; anything else is a corrupt frame,
  // which the debug-help walker may judge differently.
  if (context.Rsp <= old_sp || !stack.holds(context.Rsp)) return unwind_result::unknown;
  return unwind_result::stepped;
}

unwind_walk_result unwind_walk(CONTEXT& context, unsigned long long* frames, unsigned long long skip,
                               unsigned int max) {
  unwind_walk_result walk;
  if (max == 0 || context.Rip == 0) {
    walk.reached_end = context.Rip == 0;
    return walk;
  }
  const stack_bounds stack = stack_bounds_of(context.Rsp);
  for (;;) {
    if (walk.steps++ >= skip) frames[walk.stored++] = context.Rip;
    if (walk.stored == max) return walk;
    CONTEXT before = context;
    switch (unwind_one(context, stack)) {
      case unwind_result::stepped:
        break;
      case unwind_result::end:
        walk.reached_end = true;
        return walk;
      case unwind_result::unknown:
        context = before;
        return walk;
    }
  }
}

}  // namespace debug_info
