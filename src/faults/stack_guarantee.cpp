#include "faults/stack_guarantee.h"

#include <windows.h>

namespace {

using set_guarantee_fn = BOOL(WINAPI*)(PULONG);

// Looked up once at load: systems before Windows Server 2003 SP1 lack it.
const set_guarantee_fn set_thread_stack_guarantee = reinterpret_cast<set_guarantee_fn>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"),
                                           "SetThreadStackGuarantee")));

}  // namespace

bool GuaranteeStackForOverflow(unsigned long bytes) {
  if (!set_thread_stack_guarantee) return true;
  ULONG size = bytes;
  return set_thread_stack_guarantee(&size) != FALSE;
}
