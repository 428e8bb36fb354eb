// The symbol engine: return addresses turned into module, function and
// source-line names through the system's debug-help library, loaded on first
// use and unloaded when its last user is done.
//
// Every function here starts the engine for its own call when it needs it,
// so each works on its own; a caller that names many addresses brackets
// them with SymInitialize() ... SymCleanup(), which keeps the library loaded
// in between (it does not keep the lock).
//
// The engine sets the symbol options 6 (undecorated names, deferred loading)
// together with line loading (SYMOPT_LOAD_LINES): the library reads source
// lines only for modules whose symbols it loaded with that option, so without
// it every source text would be empty. Names and lines need the modules' own
// debug information (GCC: a plain -g; where the debug-help library reads no
// such DWARF, the library's own reader of each module's file gives them, as
// `SymbolSources` in <qz/errors/tuning.h> chooses).
//
// Texts, as the functions below return them:
//
//   SymGetNameFromAddress      "outer::function+1c"      (no symbol: "0x401a2c",
//                                                         the low 32 bits)
//   SymGetSourceFromAddress    "file.cpp#42"             (no line: "")
//   SymGetFullNameFromAddress  "outer::function+1c[file.cpp#42]"; a name
//                              longer than 80 characters keeps its first and
//                              last 40 around ".." when it has a source
//   SymGetModuleFromAddress    "qz", "kernel32", the program's base name
//   SymGetStackTrace           "\n-> <full name>" per frame
//   GetMyDebugStack            "Thread 1234" then the frames, as above
//   TakeDebugSnapshot          one such block per thread, the calling thread
//                              first, blocks separated by an empty line
//
// Including <dbghelp.h> as well is fine, before or after this header: its
// StackWalk macro then names the StackWalk64 overload below, which forwards
// to the engine's StackWalk.
//
// Thread safety: every function may be called from any thread. Calls into
// the debug-help library are serialised by one process-wide symbol lock; a
// call that cannot get the lock within 20 seconds gives up and returns its
// failure value (false, 0 frames, "" or the address form of a name).
#pragma once

#include <qz/export.h>

#include <string>

#pragma push_macro("StackWalk")
#undef StackWalk

struct _CONTEXT;

// Starts the engine for one more user (loads the library for the first);
// false when it cannot start. Pair every true result with SymCleanup().
QZ_API bool SymInitialize();
// Ends one user's use; the last one unloads the library.
QZ_API void SymCleanup();

// Makes sure the module holding `address` has its symbols loaded (a module
// loaded since the engine started is looked up again); true when symbols can
// be asked for.
QZ_API bool EnsureModuleSymbolsLoaded(unsigned long long address);

// Walks `thread`'s stack (null: the calling thread) from `context`, drops the
// first `skip` frames and stores at most `max` addresses in `frames`: the
// context's own instruction first, then return addresses. Returns how many
// it stored (0 when the engine cannot start). A null `context` starts at the
// caller of StackWalk: with `skip` 0 the caller's own function comes first.
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

// The first frame outside the modules of SkipModulesForError (compared
// without case), or 0 when every frame lies in one of them. When the engine
// cannot start: the first frame.
QZ_API unsigned long long SymGetActualErrorAddress(const unsigned long long* frames,
                                                   unsigned int count);
// "\n-> <full name>" for each frame; "" when the engine cannot start.
QZ_API std::string SymGetStackTrace(const unsigned long long* frames, unsigned int count);

// The calling thread's stack as text, starting at the caller.
QZ_API std::string GetMyDebugStack();
// The stacks of every thread of the process as text. Each other thread is
// suspended only while its stack is walked, with the loader, heap and symbol
// locks held so that it cannot be holding one of them.
QZ_API std::string TakeDebugSnapshot();

// The engine's StackWalk under the name <dbghelp.h>'s macro gives it.
inline unsigned int StackWalk64(unsigned long long* frames, _CONTEXT* context, void* thread,
                                unsigned int skip, unsigned int max) {
  return StackWalk(frames, context, thread, skip, max);
}

#pragma pop_macro("StackWalk")
