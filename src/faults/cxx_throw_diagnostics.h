// What the vectored handler adds to a C++ exception at its throw (private to
// the library).
//
// Thread safety: runs on the throwing thread, inside the vectored handler.
#pragma once

#include <windows.h>

// Whether `record` is a C++ throw of this toolchain's runtime.
bool is_cxx_throw(const EXCEPTION_RECORD& record);

// Whether the settings ask for anything at a throw: the stack and location
// (ExtendDebugInformationFromException) or a dump (SaveMiniDumpOnCppException).
// When neither is set a throw costs the handler nothing more.
bool cxx_throw_diagnostics_wanted();

// For the throw of `pointers`: unless the thrown object is catchable as an
// EStructuredException (it already carries its fault) or an
// EThreadInterrupt (not an error), adds "ModuleName", "AddressName" and
// "Stack" as seen at the throw to an EGeneric without a "Stack" yet, and
// writes a dump for a thrown type that MiniDumpExcludedTypes does not name,
// with its path as the EGeneric's "MiniDump" (a rethrow of an EGeneric that
// already has one writes no second dump).
void add_cxx_throw_diagnostics(EXCEPTION_POINTERS* pointers);
