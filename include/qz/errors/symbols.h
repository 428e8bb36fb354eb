// The symbol engine: return addresses turned into module, function and
// source-line names through the system's debug-help library, loaded on first
// use and unloaded when its last user is done.
//
// Thread safety: every function may be called from any thread; calls into
// the debug-help library are serialised by one process-wide lock.
#pragma once

#include <qz/export.h>

#include <string>

struct _CONTEXT;

// Starts the engine for one more user (loads the library for the first);
// false when it cannot start. Pair every true result with SymCleanup().
QZ_API bool SymInitialize();
// Ends one user's use; the last one unloads the library.
QZ_API void SymCleanup();

// Makes sure the module holding `address` has its symbols loaded; true when
// symbols can be asked for.
QZ_API bool EnsureModuleSymbolsLoaded(unsigned long long address);

// Walks `thread`'s stack from `context` (null: the caller's position),
// drops the first `skip` frames and stores at most `max` return addresses in
// `frames`; returns how many it stored (0 when the engine cannot start).
QZ_API unsigned int StackWalk(unsigned long long* frames, _CONTEXT* context, void* thread,
                              unsigned int skip, unsigned int max);

// "name" or "0x<low 32 bits>", then "+<displacement>" when not 0.
QZ_API std::string SymGetNameFromAddress(unsigned long long address);
// "file.cpp#line", or "" without line information.
QZ_API std::string SymGetSourceFromAddress(unsigned long long address);
// The name, and "[file.cpp#line]" when there is a line (a name longer than
// 80 characters shortened to 40 + ".." + 40 then).
QZ_API std::string SymGetFullNameFromAddress(unsigned long long address);
// The base name of the module holding `address`, or "".
QZ_API std::string SymGetModuleFromAddress(unsigned long long address);

// The first frame outside the modules of SkipModulesForError, or 0.
QZ_API unsigned long long SymGetActualErrorAddress(const unsigned long long* frames,
                                                   unsigned int count);
// "\n-> <full name>" for each frame.
QZ_API std::string SymGetStackTrace(const unsigned long long* frames, unsigned int count);

// The calling thread's stack as text.
QZ_API std::string GetMyDebugStack();
// The stacks of every thread of the process as text.
QZ_API std::string TakeDebugSnapshot();
