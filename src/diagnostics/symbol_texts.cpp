// The name, source, full-name and module texts of an address. Each holds an
// engine user for its own call, so it works whether or not the caller has
// started the engine (a caller that names many addresses starts it once
// around them, which keeps the library loaded in between).
#include "diagnostics/debug_info/debug_info_cache.h"
#include "diagnostics/symbol_engine.h"
#include "diagnostics/symbol_text_rules.h"

#include <qz/errors/tuning.h>

#include <cstring>
#include <vector>

namespace {

constexpr DWORD kMaxSymbolName = 1960;
constexpr ULONG kPublicSymbolTag = 10;  // SymTagPublicSymbol, which mingw's header lacks

// The symbol at `address` and the displacement from its start, or false.
// `public_only`: the library knows no function there, only a public (export
// or symbol-table) name, which the own reader can usually better.
bool symbol_at(unsigned long long address, std::string& symbol, DWORD64& displacement,
               bool& public_only) {
  symbol_lock lock;
  const dbghelp_api* api = loaded_dbghelp();
  if (!lock || !api) return false;
  std::vector<char> buffer(sizeof(SYMBOL_INFO) + kMaxSymbolName);
  auto* info = reinterpret_cast<SYMBOL_INFO*>(buffer.data());
  info->SizeOfStruct = sizeof(SYMBOL_INFO);
  info->MaxNameLen = kMaxSymbolName;
  if (!api->SymFromAddr(GetCurrentProcess(), address, &displacement, info)) return false;
  symbol.assign(info->Name, strnlen(info->Name, kMaxSymbolName));
  public_only = info->Tag == kPublicSymbolTag;
  return true;
}

bool reader_used() { return SymbolSources != symbol_sources::debug_help_only; }
bool reader_first() { return SymbolSources == symbol_sources::own_reader_first; }

bool reader_symbol(unsigned long long address, std::string& symbol, DWORD64& displacement) {
  std::uint64_t offset = 0;
  if (!debug_info::function_name(address, symbol, offset)) return false;
  displacement = offset;
  return true;
}

std::string reader_source(unsigned long long address) {
  std::string file;
  unsigned int line = 0;
  if (!debug_info::source_line(address, file, line)) return {};
  return symbol_text::source(file, static_cast<int>(line));
}

std::string library_source(unsigned long long address) {
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

}  // namespace

// The own reader needs neither the debug-help library nor its lock: it
// serves also where the engine cannot start.
std::string SymGetNameFromAddress(unsigned long long address) {
  symbol_engine_user engine;
  std::string symbol;
  DWORD64 displacement = 0;
  bool found = reader_first() && reader_symbol(address, symbol, displacement);
  if (!found && engine && EnsureModuleSymbolsLoaded(address)) {
    bool public_only = false;
    found = symbol_at(address, symbol, displacement, public_only);
    if (found && public_only && reader_used()) reader_symbol(address, symbol, displacement);
  }
  if (!found && reader_used() && !reader_first())
    found = reader_symbol(address, symbol, displacement);
  return symbol_text::name(found ? symbol.c_str() : nullptr, address, found ? displacement : 0);
}

std::string SymGetSourceFromAddress(unsigned long long address) {
  symbol_engine_user engine;
  std::string text = reader_first() ? reader_source(address) : std::string();
  if (text.empty() && engine && EnsureModuleSymbolsLoaded(address)) text = library_source(address);
  if (text.empty() && reader_used() && !reader_first()) text = reader_source(address);
  return text;
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
