// Loading and unloading the debug-help library, the user count and the
// symbol lock.
#include "diagnostics/symbol_engine.h"

#include <qz/sync/critical_section.h>

namespace {

struct engine_state {
  TCriticalSection lock;
  volatile LONG users = 0;  // changed under the lock, read without it
  // Cleanups that could not get the lock in time: the next holder of the
  // lock gives their uses up (settle_cleanups).
  volatile LONG pending_cleanups = 0;
  HMODULE library = nullptr;
  bool loaded = false;  // the library is loaded with all required functions and has a session
  dbghelp_api api = {};
  module_snapshot modules;
};

// Made on first use, so that no start-up order can see it unconstructed.
engine_state& engine() {
  static engine_state state;
  return state;
}

template <typename Function>
bool look_up(HMODULE library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  return function != nullptr;
}

bool look_up_all(HMODULE library, dbghelp_api& api) {
  const bool required =
      look_up(library, "SymInitialize", api.SymInitialize) &
      look_up(library, "SymCleanup", api.SymCleanup) &
      look_up(library, "SymGetLineFromAddr64", api.SymGetLineFromAddr64) &
      look_up(library, "SymGetModuleInfo64", api.SymGetModuleInfo64) &
      look_up(library, "SymGetSymFromAddr64", api.SymGetSymFromAddr64) &
      look_up(library, "SymSetOptions", api.SymSetOptions) &
      look_up(library, "SymGetTypeInfo", api.SymGetTypeInfo) &
      look_up(library, "SymSetContext", api.SymSetContext) &
      look_up(library, "SymEnumSymbols", api.SymEnumSymbols) &
      look_up(library, "SymFromAddr", api.SymFromAddr) &
      look_up(library, "StackWalk64", api.StackWalk64) &
      look_up(library, "MiniDumpWriteDump", api.MiniDumpWriteDump);
  look_up(library, "SymRefreshModuleList", api.SymRefreshModuleList);
  look_up(library, "SymUnloadModule64", api.SymUnloadModule64);
  look_up(library, "SymLoadModuleExW", api.SymLoadModuleExW);
  look_up(library, "SymFunctionTableAccess64", api.SymFunctionTableAccess64);
  look_up(library, "SymGetModuleBase64", api.SymGetModuleBase64);
  return required;
}

// Loads the library and opens its session for this process; under the lock.
bool load(engine_state& state) {
  state.library = LoadLibraryW(L"dbghelp.dll");
  if (!state.library) return false;
  if (look_up_all(state.library, state.api)) {
    state.api.SymSetOptions(kSymbolOptions);
    if (state.api.SymInitialize(GetCurrentProcess(), nullptr, TRUE)) {
      state.modules.take();
      state.loaded = true;
      return true;
    }
  }
  FreeLibrary(state.library);
  state.library = nullptr;
  state.api = {};
  return false;
}

void unload(engine_state& state) {
  state.modules.release();
  state.api.SymCleanup(GetCurrentProcess());
  FreeLibrary(state.library);
  state.library = nullptr;
  state.api = {};
  state.loaded = false;
}

// Under the lock: ends `count` uses; the last one unloads the library. A
// cleanup without a start ends nothing, so the count never goes below zero.
void end_uses(engine_state& state, LONG count) {
  for (; count > 0 && state.users > 0; --count)
    if (InterlockedDecrement(&state.users) == 0 && state.loaded) unload(state);
}

// Under the lock: the uses of the cleanups that timed out waiting for it.
void settle_cleanups(engine_state& state) {
  if (state.pending_cleanups) end_uses(state, InterlockedExchange(&state.pending_cleanups, 0));
}

}  // namespace

// A critical section has no timed wait: try, yield a few times (most holds
// are short), then poll once a millisecond until the time-out.
symbol_lock::symbol_lock(DWORD timeout_ms) : held_(false) {
  CRITICAL_SECTION& section = engine().lock;
  const DWORD start = GetTickCount();
  for (int attempt = 0; !(held_ = TryEnterCriticalSection(&section) != FALSE); ++attempt) {
    if (GetTickCount() - start >= timeout_ms) return;
    if (attempt < 64)
      SwitchToThread();
    else
      Sleep(1);
  }
}

// The outermost holder settles the cleanups that timed out while it held
// the lock, so that the library is unloaded when its last user is done even
// then.
symbol_lock::~symbol_lock() {
  if (!held_) return;
  engine_state& state = engine();
  if (state.lock.RecursionCount == 1) settle_cleanups(state);
  LeaveCriticalSection(&state.lock);
}

const dbghelp_api* loaded_dbghelp() {
  engine_state& state = engine();
  return state.loaded ? &state.api : nullptr;
}

module_snapshot& engine_modules() { return engine().modules; }

bool SymInitialize() {
  symbol_lock lock;
  if (!lock) return false;
  engine_state& state = engine();
  InterlockedIncrement(&state.users);  // first: a settled cleanup must not unload what this uses
  settle_cleanups(state);
  if (state.loaded || load(state)) return true;
  InterlockedDecrement(&state.users);
  return false;
}

// The count changes only under the lock: a cleanup that cannot get it in
// time leaves its use to the thread that holds the lock, which gives it up
// when it lets the lock go.
void SymCleanup() {
  engine_state& state = engine();
  symbol_lock lock;
  if (!lock) {
    InterlockedIncrement(&state.pending_cleanups);
    return;
  }
  end_uses(state, 1);
}
