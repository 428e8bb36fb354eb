// Continuing a faulting thread in its translator (private to the library).
//
// The toolchain decides how a C++ exception can start at a faulting
// instruction, so this is the one seam that a build with another compiler
// replaces (internal/fault_redirect_<toolchain>.cpp).
#pragma once

#include "faults/fault_translator.h"

// Called by the vectored handler for a fault that `state`'s thread
// translates: copies the fault into `state` and rewrites the faulting
// context so that the thread, once the handler returns
// EXCEPTION_CONTINUE_EXECUTION, calls state.translator as if the faulting
// instruction had called it. Exceptions the translator throws unwind through
// the faulting function's own handlers and destructors.
void redirect_fault_to_translator(EXCEPTION_POINTERS* pointers, thread_fault_state& state);
