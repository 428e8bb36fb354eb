// What an exception gets where it is raised: the one policy for the crash
// dump and the "ModuleName", "AddressName" and "Stack" values, whether the
// error is a processor fault, an EGeneric(true) being built, or a C++ throw
// seen by the vectored handler (private to the library).
//
// Each raise is walked once; the dump is named after that walk's error
// address, and the values are read off the same frames. The thread that
// raised the error is passed along, so that a dump written on another
// thread (a stack overflow's helper) records the fault on the right one.
// The settings are those of <qz/errors/tuning.h>, read at every raise.
// Diagnostics never replace the error they describe: their own failures are
// swallowed.
//
// Thread safety: any thread; each call works on an exception object that
// only the calling thread uses.
#pragma once

#include <qz/errors/generic.h>

#include <windows.h>

// Static members only; a friend of EGeneric, whose protected edits it uses.
class exception_diagnostics {
 public:
  // A processor fault on thread `thread_id`: a dump when
  // SaveMiniDumpOnStructuredException is set, the location and stack when
  // ExtendDebugInformationFromException is. Without a context in
  // `pointers` the walk starts at the caller, `skip` frames dropped.
  static void at_fault(EGeneric& e, EXCEPTION_POINTERS* pointers, unsigned long thread_id,
                       unsigned int skip);

  // An exception built with its location asked for, on the calling thread:
  // a dump when SaveMiniDumpOnCppException is set and `e` is no
  // EStructuredException, the location and stack when
  // ExtendDebugInformationFromException is set; the walk starts at
  // `context`, or at the caller with `skip` frames dropped. While the
  // vectored handler is at work, a caller's position (null `context`) gets
  // neither: the handler adds both at the throw.
  static void at_construction(EGeneric& e, CONTEXT* context, unsigned int skip);

  // Whether the settings ask anything of the handler at a C++ throw.
  static bool wanted_at_throw();
  // A C++ throw, from the vectored handler: unless the thrown object is
  // catchable as an EStructuredException (it carries its fault already) or
  // an EThreadInterrupt (no error), an EGeneric without a "Stack" gets the
  // location and stack of the throw, and a thrown type that
  // MiniDumpExcludedTypes does not name writes a dump, carried as the
  // EGeneric's "MiniDump" (a rethrow of one that has it writes no second).
  static void at_throw(EXCEPTION_POINTERS* pointers);
};
