// The frames of a GCC throw: the thrower calls __cxa_throw (libstdc++),
// which calls _Unwind_RaiseException (libgcc), which calls the system's
// RaiseException. With the runtime in its DLLs, each lies in a module of its
// own; a runtime linked into the program leaves its frames in the program,
// where they stay (the error address is then still in the right module).
#include "faults/throw_site.h"

#include <initializer_list>

namespace {

// The machinery is at most a handful of frames deep.
const int kMaxMachineryFrames = 8;

HMODULE module_of(DWORD64 address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(address), &module);
  return module;
}

bool in_throw_machinery(DWORD64 address) {
  const HMODULE module = module_of(address);
  if (!module) return false;
  for (const wchar_t* name : {L"ntdll.dll", L"kernelbase.dll", L"kernel32.dll",
                              L"libgcc_s_seh-1.dll", L"libstdc++-6.dll"})
    if (module == GetModuleHandleW(name)) return true;
  return false;
}

// Steps `context` out of its innermost frame; false when it cannot.
bool unwind_one_frame(CONTEXT& context) {
  DWORD64 image_base = 0;
  RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(context.Rip, &image_base, nullptr);
  if (function) {
    void* handler_data = nullptr;
    DWORD64 frame = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, image_base, context.Rip, function, &context, &handler_data,
                     &frame, nullptr);
  } else {  // a leaf function: the return address is on top of the stack
    context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
    context.Rsp += 8;
  }
  return context.Rip != 0;
}

}  // namespace

CONTEXT throw_site_context(const CONTEXT& raised) {
  CONTEXT site = raised;
  for (int i = 0; i < kMaxMachineryFrames && in_throw_machinery(site.Rip); ++i)
    if (!unwind_one_frame(site)) return raised;
  return in_throw_machinery(site.Rip) ? raised : site;
}
