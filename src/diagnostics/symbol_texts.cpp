// The name, source, full-name and module texts of an address. Each holds an
// engine user for its own call, so it works whether or not the caller has
// started the engine (a caller that names many addresses starts it once
// around them, which keeps the library loaded in between).
#include "diagnostics/symbol_engine.h"
#include "diagnostics/symbol_text_rules.h"

#include <cstring>
#include <vector>

namespace {

constexpr DWORD kMaxSymbolName = 1960;

// The symbol at `address` and the displacement from its start, or false.
bool symbol_at(unsigned long long address, std::string& symbol, DWORD64& displacement) {
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return false;
  std::vector<char> buffer(sizeof(SYMBOL_INFO) + kMaxSymbolName);
  auto* info = reinterpret_cast<SYMBOL_INFO*>(buffer.data());
  info->SizeOfStruct = sizeof(SYMBOL_INFO);
  info->MaxNameLen = kMaxSymbolName;
  if (!api->SymFromAddr(GetCurrentProcess(), address, &displacement, info)) return false;
  symbol.assign(info->Name, strnlen(info->Name, kMaxSymbolName));
  return true;
}

}  // namespace

std::string SymGetNameFromAddress(unsigned long long address) {
  symbol_engine_user engine;
  std::string symbol;
  DWORD64 displacement = 0;
  const bool found = engine && EnsureModuleSymbolsLoaded(address) &&
                     symbol_at(address, symbol, displacement);
  return symbol_text::name(found ? symbol.c_str() : nullptr, address, found ? displacement : 0);
}

std::string SymGetSourceFromAddress(unsigned long long address) {
  symbol_engine_user engine;
  if (!engine || !EnsureModuleSymbolsLoaded(address)) return {};
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return {};
  IMAGEHLP_LINE64 line = {};
  line.SizeOfStruct = sizeof(line);
  DWORD displacement = 0;
  if (!api->SymGetLineFromAddr64(GetCurrentProcess(), address, &displacement, &line) ||
      !line.FileName)
    return {};
  return symbol_text::source(line.FileName, static_cast<int>(line.LineNumber));
}

std::string SymGetFullNameFromAddress(unsigned long long address) {
  symbol_engine_user engine;  // one load for both look-ups
  return symbol_text::full_name(SymGetNameFromAddress(address), SymGetSourceFromAddress(address));
}

std::string SymGetModuleFromAddress(unsigned long long address) {
  symbol_engine_user engine;
  if (!engine || !EnsureModuleSymbolsLoaded(address)) return {};
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return {};
  IMAGEHLP_MODULE64 info = {};
  info.SizeOfStruct = sizeof(info);
  if (!api->SymGetModuleInfo64(GetCurrentProcess(), address, &info)) return {};
  return std::string(info.ModuleName, strnlen(info.ModuleName, sizeof(info.ModuleName)));
}
