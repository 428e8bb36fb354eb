// The modules of the process as the symbol engine knows them (private to the
// library): a tool-help snapshot taken when the engine starts, and the set of
// modules whose symbols the debug-help library has been asked to load.
//
// Thread safety: none of its own; the engine uses it under the symbol lock.
#pragma once

#include <windows.h>

#include <set>
#include <string>
#include <vector>

class module_snapshot {
 public:
  struct module_range {
    DWORD64 base;
    DWORD64 size;
    std::wstring path;  // tells a module from another loaded later at its base
  };

  module_snapshot() = default;
  ~module_snapshot() { release(); }
  module_snapshot(const module_snapshot&) = delete;
  module_snapshot& operator=(const module_snapshot&) = delete;

  // Takes a new snapshot of the process's modules (an empty one when the
  // system refuses); the modules already loaded stay marked.
  void take();
  // Closes the snapshot and forgets which modules were loaded.
  void release();

  // The module holding `address` in the snapshot, or null.
  const module_range* find(DWORD64 address) const;
  // Whether `module` is still loaded at its base: false once it was
  // unloaded, whether or not another module took its place.
  static bool still_loaded(const module_range& module);

  bool symbols_loaded(DWORD64 base) const { return loaded_.count(base) != 0; }
  void mark_symbols_loaded(DWORD64 base) { loaded_.insert(base); }
  void forget_symbols(DWORD64 base) { loaded_.erase(base); }

 private:
  void close_snapshot();

  HANDLE snapshot_ = INVALID_HANDLE_VALUE;
  std::vector<module_range> modules_;  // sorted by base
  std::set<DWORD64> loaded_;
};
