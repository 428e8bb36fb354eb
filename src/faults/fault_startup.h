// The fault machinery's process-wide state, created in one order at load by
// fault_startup.cpp (private to the library).
//
// Thread safety: the slots and the registration are written only while the
// library loads and unloads; everything else is noted per member.
#pragma once

#include <qz/sync/critical_section.h>
#include <qz/sync/event.h>

#include <windows.h>

// Thread-local slot of the vectored handler's re-entry flag.
DWORD vectored_reentry_slot();
// Thread-local slot holding the calling thread's thread_fault_state while it
// translates faults (fault_translator.h).
DWORD fault_translator_slot();

// What a faulting thread hands to the helper thread that builds its
// EStackOverflowException on a fresh stack. `lock` serialises overflows
// (one at a time process-wide), so the two slots need no lock of their own.
struct stack_overflow_handoff {
  TCriticalSection lock;
  TEvent done{false, false};  // automatic reset: the helper has filled the exception
  EXCEPTION_POINTERS* pointers = nullptr;
  unsigned long thread_id = 0;
};
stack_overflow_handoff& overflow_handoff();

// The handler that the library registers first in the process's chain.
LONG CALLBACK qz_vectored_handler(EXCEPTION_POINTERS* pointers);
