// The symbol engine's shared state, as its own sources see it (private to
// the library): the one symbol lock and the loaded debug-help library.
//
// Every call into the debug-help library happens while the calling thread
// holds a symbol_lock and the engine has a user (SymInitialize), so the
// library cannot be unloaded under the call.
#pragma once

#include "diagnostics/dbghelp_api.h"
#include "diagnostics/module_snapshot.h"

#include <qz/diagnostics/symbols.h>

// How long an engine entry point waits for the symbol lock before it gives
// up and returns its failure value: a thread stuck in the debug-help library
// must not stall every other thread's error reporting for ever.
constexpr DWORD kSymbolLockTimeoutMs = 20000;

// Options 6 (undecorated names, deferred loading) plus line loading: the
// debug-help library reads source lines only for modules whose symbols were
// loaded while SYMOPT_LOAD_LINES was set.
constexpr DWORD kSymbolOptions = SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES;

// Holds the process-wide symbol lock (recursive) for one scope, or fails
// after `timeout_ms`; test with operator bool.
class symbol_lock {
 public:
  explicit symbol_lock(DWORD timeout_ms = kSymbolLockTimeoutMs);
  ~symbol_lock();
  symbol_lock(const symbol_lock&) = delete;
  symbol_lock& operator=(const symbol_lock&) = delete;
  explicit operator bool() const { return held_; }

 private:
  bool held_;
};

// One user of the engine for one scope: SymInitialize() now, SymCleanup()
// at the end when the start succeeded.
class symbol_engine_user {
 public:
  symbol_engine_user() : started_(SymInitialize()) {}
  ~symbol_engine_user() {
    if (started_) SymCleanup();
  }
  symbol_engine_user(const symbol_engine_user&) = delete;
  symbol_engine_user& operator=(const symbol_engine_user&) = delete;
  explicit operator bool() const { return started_; }

 private:
  bool started_;
};

// The loaded library's functions, or null when it is not loaded. Call only
// under a symbol_lock, with the engine started.
const dbghelp_api* loaded_dbghelp();

// The modules known to the engine. Use only where loaded_dbghelp() is valid.
module_snapshot& engine_modules();
