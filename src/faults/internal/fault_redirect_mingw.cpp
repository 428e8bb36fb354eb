// Faults as C++ exceptions for GCC on x86-64.
//
// GCC's exceptions unwind through the system's table-based unwinder, so a
// throw can start anywhere the unwinder can step out of. The vectored handler
// makes the faulting thread continue in qz_fault_trampoline, whose unwind
// information begins with a machine frame: to the unwinder the trampoline
// was entered by an interrupt at the faulting instruction, with the faulting
// stack pointer. It calls qz_raise_translated_fault, which throws; the throw
// unwinds through the trampoline into the faulting function and on through
// its try blocks and destructors (the code is built with
// -fnon-call-exceptions, which gives a faulting load or store its own
// call-site entry).
//
// The machine frame holds the faulting address + 1: GCC's language handler
// looks up "return address - 1" in the call-site table, and the faulting
// address itself could then fall into the previous instruction's range. Any
// byte inside the faulting instruction is inside its range. A fault inside a
// function's prologue (a push that overflows the stack) is the exception:
// there the unwinder undoes the prologue steps that end at or before the
// address it is given, and no language handler runs, so it gets the faulting
// address itself, or it would undo the push that never happened.
#include "faults/fault_redirect.h"

#include <cstdint>
#include <exception>

extern "C" {
void qz_fault_trampoline();
[[noreturn]] void qz_raise_translated_fault();
}

// The machine frame lies on the faulting stack, 128 bytes below its pointer
// and 16-aligned: five quadwords (RIP, CS, EFLAGS, RSP, SS) leave the stack
// pointer at 8 modulo 16, as on entry to any function; the 40 bytes the
// trampoline allocates restore the alignment and the callee's shadow space.
asm(R"(
    .text
    .p2align 4
    .globl qz_fault_trampoline
    .def qz_fault_trampoline; .scl 2; .type 32; .endef
    .seh_proc qz_fault_trampoline
qz_fault_trampoline:
    .seh_pushframe
    sub $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    call qz_raise_translated_fault
    int3
    .seh_endproc
)");

namespace {

const std::uint64_t kRedZone = 128;

// The fault as the handler saw it, copied onto the translating stack at once:
// a second fault on this thread (inside the translator's own work) reuses
// the thread's state, and must not change what this translation reports.
struct fault_copy {
  EXCEPTION_RECORD record;
  CONTEXT context;
};

// Whether `address` lies in the prologue of a function with unwind
// information (the second byte of that information is the prologue's size).
bool in_prologue(std::uint64_t address) {
  DWORD64 image_base = 0;
  const RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(address, &image_base, nullptr);
  if (!function) return false;
  const auto* unwind_info =
      reinterpret_cast<const unsigned char*>(image_base + function->UnwindData);
  return address - (image_base + function->BeginAddress) < unwind_info[1];
}

}  // namespace

void redirect_fault_to_translator(EXCEPTION_POINTERS* pointers, thread_fault_state& state) {
  CONTEXT& context = *pointers->ContextRecord;
  state.record = *pointers->ExceptionRecord;
  state.record.ExceptionRecord = nullptr;  // a nested record does not outlive the dispatch
  state.context = context;

  const std::uint64_t top = (context.Rsp - kRedZone) & ~std::uint64_t{15};
  auto* frame = reinterpret_cast<std::uint64_t*>(top) - 5;
  frame[0] = in_prologue(context.Rip) ? context.Rip : context.Rip + 1;
  frame[1] = context.SegCs;
  frame[2] = context.EFlags;
  frame[3] = context.Rsp;
  frame[4] = context.SegSs;
  context.Rsp = reinterpret_cast<std::uint64_t>(frame);
  context.Rip = reinterpret_cast<std::uint64_t>(&qz_fault_trampoline);
}

extern "C" void qz_raise_translated_fault() {
  const thread_fault_state& state = *translating_thread_state();
  const fault_translator translator = state.translator;
  fault_copy fault{state.record, state.context};
  EXCEPTION_POINTERS pointers{&fault.record, &fault.context};
  translator(fault.record.ExceptionCode, &pointers);
  std::terminate();  // a translator does not return
}
