// Faults on demand for the tests of fault translation.
//
// Every fault happens in a function of its own, called through a volatile
// pointer: the compiler can then neither prove the call free of exceptions
// (and drop the catch around it) nor fold the fault away.
#pragma once

#include <qz/errors/exceptions.h>
#include <qz/errors/tuning.h>

#include "support/scoped_setting.h"

#include <windows.h>

#include <string>

namespace fault_test {

__attribute__((noinline)) inline int ReadAt(std::uintptr_t address) {
  return *reinterpret_cast<volatile int*>(address);
}
__attribute__((noinline)) inline int WriteAt(std::uintptr_t address) {
  *reinterpret_cast<volatile int*>(address) = 1;
  return 0;
}
__attribute__((noinline)) inline int DivideBy(std::uintptr_t divisor) {
  volatile int dividend = 7;
  return dividend / static_cast<int>(divisor);
}

using FaultFunction = int (*)(std::uintptr_t);
inline FaultFunction volatile read_at = &ReadAt;
inline FaultFunction volatile write_at = &WriteAt;
inline FaultFunction volatile divide_by = &DivideBy;

// Recursions until the stack runs out: with a small frame, and with one
// above a page, whose stack the runtime's stack-check helper probes before
// the function's body runs.
__attribute__((noinline)) inline int RecurseSmall(int depth) {
  int (*volatile next)(int) = &RecurseSmall;
  return next(depth + 1) + depth;
}
__attribute__((noinline)) inline int RecurseLarge(int depth) {
  volatile char frame[8192];
  frame[depth % 8192] = static_cast<char>(depth);
  int (*volatile next)(int) = &RecurseLarge;
  return next(depth + 1) + frame[0];
}

inline bool UnderWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Test set-up for an overflow under Wine, which otherwise raises it with no
// stack left to handle it: a guard page 128 KB above the bottom of the
// calling thread's stack, from which Wine grows the stack page by page and
// raises the overflow with the thread's guarantee still free. Call again
// after ResetStack() before the next overflow. Does nothing on Windows.
inline void ArmStackGuardPage() {
  if (!UnderWine()) return;
  MEMORY_BASIC_INFORMATION info;
  VirtualQuery(&info, &info, sizeof info);
  char* page = static_cast<char*>(info.AllocationBase) + 128 * 1024;
  DWORD old;
  VirtualProtect(page, 4096, PAGE_READWRITE | PAGE_GUARD, &old);
}

// Overflows the calling thread's stack; the caught exception's "Text" and
// "Code".
inline std::string OverflowStack(int (*recurse)(int) = &RecurseSmall) {
  ArmStackGuardPage();
  try {
    recurse(0);
  } catch (const EStackOverflowException& e) {
    _value_t text = e.get_value("Text");
    return text.as_string() + " " + std::to_string(static_cast<int>(e.get_value("Code")));
  }
  return "no exception";
}

// Crash dumps off while it lives: a dump costs seconds under Wine.
class NoDumps : qz_test::ScopedSetting<bool> {
 public:
  NoDumps() : ScopedSetting(SaveMiniDumpOnStructuredException, false) {}
};

}  // namespace fault_test
