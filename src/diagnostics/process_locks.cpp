#include "diagnostics/process_locks.h"

namespace {

struct native_locks {
  LONG(NTAPI* lock_loader)(ULONG flags, ULONG* disposition, ULONG_PTR* cookie);
  LONG(NTAPI* unlock_loader)(ULONG flags, ULONG_PTR cookie);
  void(NTAPI* acquire_peb)();
  void(NTAPI* release_peb)();
};

template <typename Function>
Function native(const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

const native_locks& natives() {
  static const native_locks functions = {
      native<decltype(native_locks::lock_loader)>("LdrLockLoaderLock"),
      native<decltype(native_locks::unlock_loader)>("LdrUnlockLoaderLock"),
      native<decltype(native_locks::acquire_peb)>("RtlAcquirePebLock"),
      native<decltype(native_locks::release_peb)>("RtlReleasePebLock")};
  return functions;
}

}  // namespace

process_locks::process_locks() {
  const native_locks& n = natives();
  // Everything that allocates happens before the first lock is taken.
  std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr) + 16);
  const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  if (count < heaps.size()) heaps.resize(count);  // more heaps than room: the nulls fail to lock
  locked_heaps_.reserve(heaps.size());
  if (n.lock_loader && n.unlock_loader)
    loader_locked_ = n.lock_loader(0, nullptr, &loader_cookie_) >= 0;
  if (n.acquire_peb && n.release_peb) {
    n.acquire_peb();
    peb_locked_ = true;
  }
  for (HANDLE heap : heaps)
    if (heap && HeapLock(heap)) locked_heaps_.push_back(heap);
}

process_locks::~process_locks() {
  const native_locks& n = natives();
  for (auto heap = locked_heaps_.rbegin(); heap != locked_heaps_.rend(); ++heap) HeapUnlock(*heap);
  if (peb_locked_) n.release_peb();
  if (loader_locked_) n.unlock_loader(0, loader_cookie_);
}
