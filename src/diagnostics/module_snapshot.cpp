#include "diagnostics/module_snapshot.h"

#include <tlhelp32.h>

#include <algorithm>

void module_snapshot::take() {
  close_snapshot();
  snapshot_ = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
  if (snapshot_ == INVALID_HANDLE_VALUE) return;  // no snapshot: every look-up misses
  MODULEENTRY32W entry;
  entry.dwSize = sizeof(entry);
  for (BOOL more = Module32FirstW(snapshot_, &entry); more; more = Module32NextW(snapshot_, &entry))
    modules_.push_back({reinterpret_cast<DWORD64>(entry.modBaseAddr), entry.modBaseSize});
  std::sort(modules_.begin(), modules_.end(),
            [](const module_range& a, const module_range& b) { return a.base < b.base; });
}

void module_snapshot::release() {
  close_snapshot();
  loaded_.clear();
}

void module_snapshot::close_snapshot() {
  if (snapshot_ != INVALID_HANDLE_VALUE) CloseHandle(snapshot_);
  snapshot_ = INVALID_HANDLE_VALUE;
  modules_.clear();
}

const module_snapshot::module_range* module_snapshot::find(DWORD64 address) const {
  auto after = std::upper_bound(modules_.begin(), modules_.end(), address,
                                [](DWORD64 a, const module_range& m) { return a < m.base; });
  if (after == modules_.begin()) return nullptr;
  const module_range& candidate = *(after - 1);
  return address - candidate.base < candidate.size ? &candidate : nullptr;
}
