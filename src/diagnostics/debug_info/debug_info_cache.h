// The process-wide cache of what the modules' own files say about their
// code: names and source lines of addresses in loaded modules, read by
// module_debug_info and kept per module.
//
// A module is known by its load address, image size, link time stamp and
// path, so a module unloaded and another loaded at the same address is read
// afresh; a file on disk that no longer matches its loaded image (rebuilt
// since) is not read at all. Memory is bounded: at most kCachedModules
// modules (least recently used dropped first), each keeping at most
// kModuleBudget bytes of units read, besides its file mapping.
//
// Thread safety: every function may be called from any thread; one lock
// serialises the cache. The module is pinned (its reference count held)
// while its file is read, so it cannot be unloaded under the look-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace debug_info {

// Every unit of qz.dll itself would keep about 14 MiB; a stack touches a
// handful of units of a few modules, a few hundred KiB.
constexpr std::size_t kCachedModules = 8;
constexpr std::size_t kModuleBudget = 8u << 20;

// The qualified name of the function whose code holds `address` and the
// offset from its start; false when the module's file names nothing there.
bool function_name(std::uint64_t address, std::string& name, std::uint64_t& displacement);
// The source file (as the line table names it, directories and all) and the
// line of `address`.
bool source_line(std::uint64_t address, std::string& file, unsigned int& line);

struct cache_figures {
  std::size_t modules = 0;
  std::size_t bytes = 0;         // kept in the heap: indices, units, symbols
  std::uint64_t mapped = 0;      // of the module files mapped
};
cache_figures cache_state();
// Forgets every module (tests and benchmarks measure a first read).
void clear_cache();

}  // namespace debug_info
