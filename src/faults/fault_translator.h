// The per-thread fault translator (private to the library).
//
// A thread turns processor faults into C++ exceptions while its translator
// slot holds a translator; the guards of structured_exceptions.h fill and
// restore that slot. The vectored handler looks at the faulting thread's
// slot and, when it is set, copies the fault into the thread's state and lets
// the thread continue in the translator instead of at the faulting
// instruction (internal/fault_redirect_mingw.cpp), where the translator
// throws as if the faulting instruction had called it.
//
// Thread safety: every function acts on the calling thread only.
#pragma once

#include <windows.h>

// Called on the faulting thread with the fault as it was met; never returns.
using fault_translator = void (*)(unsigned int code, EXCEPTION_POINTERS* pointers);

// The library's translator: EStackOverflowException::Throw for a stack
// overflow, an EStructuredException for any other fault.
[[noreturn]] void translate_fault(unsigned int code, EXCEPTION_POINTERS* pointers);

// The mailbox from the vectored handler to the faulting thread's
// translator. One per thread that ever installed a translator, freed when
// the thread ends.
struct thread_fault_state {
  fault_translator translator = nullptr;
  EXCEPTION_RECORD record;
  CONTEXT context;
};

// Installs `next` for the calling thread (null: its faults are left alone)
// and returns the translator it replaces.
fault_translator exchange_fault_translator(fault_translator next);

// The calling thread's state when it has a translator installed, else null.
// Never allocates, never changes the thread's last error: safe inside the
// vectored handler.
thread_fault_state* translating_thread_state();

// Whether `record` is a processor fault that a translating thread turns into
// an exception: the faults a program can meet in its own code (access
// violation, in-page error, illegal or privileged instruction, misalignment,
// integer and floating-point errors, array bounds, stack overflow). Debugger
// events (breakpoints, single steps), exceptions raised by software and
// non-continuable ones are left to the usual search.
bool is_translatable_fault(const EXCEPTION_RECORD& record);
