// The symbol engine: return addresses turned into module, function and
// source-line names through the system's debug-help library, loaded on first
// use and unloaded when its last user is done.
//
// Thread safety: every function may be called from any thread; calls into
// the debug-help library are serialised by one process-wide lock.
#pragma once

#include <qz/export.h>

// Starts the engine for one more user (loads the library for the first);
// false when it cannot start. Pair every true result with SymCleanup().
QZ_API bool SymInitialize();
// Ends one user's use; the last one unloads the library.
QZ_API void SymCleanup();
