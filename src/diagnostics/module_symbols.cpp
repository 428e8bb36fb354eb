// EnsureModuleSymbolsLoaded: the module snapshot tells which module holds an
// address; a module the snapshot misses was loaded after the engine started,
// so the debug-help library's module list and the snapshot are refreshed once.
#include "diagnostics/symbol_engine.h"

namespace {

// Asks the library for the module at `base`, which loads its symbols under
// deferred loading.
bool library_knows_module(const dbghelp_api& api, DWORD64 base) {
  IMAGEHLP_MODULE64 info = {};
  info.SizeOfStruct = sizeof(info);
  return api.SymGetModuleInfo64(GetCurrentProcess(), base, &info) != FALSE;
}

}  // namespace

bool EnsureModuleSymbolsLoaded(unsigned long long address) {
  symbol_lock lock;
  if (!lock) return false;
  const dbghelp_api* api = loaded_dbghelp();
  if (!api) return false;
  module_snapshot& modules = engine_modules();
  const module_snapshot::module_range* module = modules.find(address);
  if (!module) {
    if (api->SymRefreshModuleList) api->SymRefreshModuleList(GetCurrentProcess());
    modules.take();
    module = modules.find(address);
    if (!module) return false;  // in no module at all
  }
  if (modules.symbols_loaded(module->base)) return true;
  if (!library_knows_module(*api, module->base)) return false;
  modules.mark_symbols_loaded(module->base);
  return true;
}
