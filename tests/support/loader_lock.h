// The system's loader lock, for tests that hold it on purpose on a thread
// of their own: ntdll's LdrLockLoaderLock and LdrUnlockLoaderLock, looked up
// at run time (null when missing).
#pragma once

#include <windows.h>

namespace qz_test {

struct LoaderLock {
  using LockFn = LONG(NTAPI*)(ULONG flags, ULONG* disposition, ULONG_PTR* cookie);
  using UnlockFn = LONG(NTAPI*)(ULONG flags, ULONG_PTR cookie);

  LockFn lock = nullptr;
  UnlockFn unlock = nullptr;
};

inline LoaderLock FindLoaderLock() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  LoaderLock found;
  found.lock = reinterpret_cast<LoaderLock::LockFn>(
      reinterpret_cast<void*>(GetProcAddress(ntdll, "LdrLockLoaderLock")));
  found.unlock = reinterpret_cast<LoaderLock::UnlockFn>(
      reinterpret_cast<void*>(GetProcAddress(ntdll, "LdrUnlockLoaderLock")));
  return found;
}

}  // namespace qz_test
