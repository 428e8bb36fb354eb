// EnsureModuleSymbolsLoaded: the module snapshot tells which module holds an
// address; a module the snapshot misses was loaded after the engine started,
// and one the snapshot holds may have been unloaded since, another module
// perhaps loaded over its range. Either way the debug-help library's module
// list and the snapshot are refreshed once.
#include "diagnostics/symbol_engine.h"

namespace {

// Asks the library for the module at `base`, which loads its symbols under
// deferred loading.
bool library_knows_module(const dbghelp_api& api, DWORD64 base) {
  IMAGEHLP_MODULE64 info = {};
  info.SizeOfStruct = sizeof(info);
  return api.SymGetModuleInfo64(GetCurrentProcess(), base, &info) != FALSE;
}

// Registers `module` with the library when a refresh of its list did not.
bool register_module(const dbghelp_api& api, const module_snapshot::module_range& module) {
  if (library_knows_module(api, module.base)) return true;
  return api.SymLoadModuleExW &&
         api.SymLoadModuleExW(GetCurrentProcess(), nullptr, module.path.c_str(), nullptr, module.base,
                              static_cast<DWORD>(module.size), nullptr, 0) != 0 &&
         library_knows_module(api, module.base);
}

// Drops what the library and the snapshot know of a module that is gone, so
// that a refresh registers whatever is loaded at its base now.
void forget_module(const dbghelp_api& api, module_snapshot& modules, DWORD64 base) {
  if (api.SymUnloadModule64) api.SymUnloadModule64(GetCurrentProcess(), base);
  modules.forget_symbols(base);
}

}  // namespace

bool EnsureModuleSymbolsLoaded(unsigned long long address) {
  symbol_lock lock;
  if (!lock) return false;
  const dbghelp_api* api = loaded_dbghelp();
  if (!api) return false;
  module_snapshot& modules = engine_modules();
  const module_snapshot::module_range* module = modules.find(address);
  if (module && !module_snapshot::still_loaded(*module)) {
    forget_module(*api, modules, module->base);
    module = nullptr;
  }
  if (!module) {
    if (api->SymRefreshModuleList) api->SymRefreshModuleList(GetCurrentProcess());
    modules.take();
    module = modules.find(address);
    if (!module) return false;  // in no module at all
  }
  if (modules.symbols_loaded(module->base)) return true;
  if (!register_module(*api, *module)) return false;
  modules.mark_symbols_loaded(module->base);
  return true;
}
