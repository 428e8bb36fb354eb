#include "diagnostics/debug_info/unwind_walk.h"

namespace debug_info {

unwind_result unwind_one(CONTEXT& context) {
  DWORD64 image_base = 0;
  PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &image_base, nullptr);
  if (!function) return unwind_result::unknown;
  const DWORD64 old_sp = context.Rsp;
  void* handler_data = nullptr;
  DWORD64 establisher = 0;
  RtlVirtualUnwind(UNW_FLAG_NHANDLER, image_base, context.Rip, function, &context, &handler_data,
                   &establisher, nullptr);
  if (context.Rip == 0) return unwind_result::end;
  // A stack only grows towards its caller; anything else is a corrupt frame,
  // which the debug-help walker may judge differently.
  if (context.Rsp <= old_sp) return unwind_result::unknown;
  return unwind_result::stepped;
}

unwind_walk_result unwind_walk(CONTEXT& context, unsigned long long* frames, unsigned long long skip,
                               unsigned int max) {
  unwind_walk_result walk;
  if (max == 0 || context.Rip == 0) {
    walk.reached_end = context.Rip == 0;
    return walk;
  }
  for (;;) {
    if (walk.steps++ >= skip) frames[walk.stored++] = context.Rip;
    if (walk.stored == max) return walk;
    CONTEXT before = context;
    switch (unwind_one(context)) {
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
