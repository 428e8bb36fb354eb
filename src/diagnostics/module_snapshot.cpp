#include "diagnostics/module_snapshot.h"

#include <tlhelp32.h>

#include <algorithm>
#include <iterator>

void module_snapshot::take() {
  close_snapshot();
  snapshot_ = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
  if (snapshot_ == INVALID_HANDLE_VALUE) return;  // no snapshot: every look-up misses
  MODULEENTRY32W entry;
  entry.dwSize = sizeof(entry);
  for (BOOL more = Module32FirstW(snapshot_, &entry); more; more = Module32NextW(snapshot_, &entry))
    modules_.push_back({reinterpret_cast<DWORD64>(entry.modBaseAddr), entry.modBaseSize, entry.szExePath});
  std::sort(modules_.begin(), modules_.end(),
            [](const module_range& a, const module_range& b) { return a.base < b.base; });
  // A module gone from the process takes its mark along: whatever is loaded
  // at its base later is another module.
  for (auto base = loaded_.begin(); base != loaded_.end();)
    base = find(*base) ? std::next(base) : loaded_.erase(base);
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

bool module_snapshot::still_loaded(const module_range& module) {
  wchar_t path[MAX_PATH + 1];
  const DWORD length = GetModuleFileNameW(reinterpret_cast<HMODULE>(module.base), path, MAX_PATH + 1);
  return length != 0 && length <= MAX_PATH && _wcsicmp(path, module.path.c_str()) == 0;
}
