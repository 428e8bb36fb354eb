// Helpers shared by the diagnostics tests: deep stacks to walk and name, and
// the function table of a loaded module.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace diagnostics_test {

inline volatile int sink;

// Recurses `depth` frames, then runs `at_bottom`; the call through a volatile
// pointer and the store after it keep every frame on the stack.
__attribute__((noinline)) inline void descend(int depth, const std::function<void()>& at_bottom) {
  void (*volatile next)(int, const std::function<void()>&) = &descend;
  if (depth > 0)
    next(depth - 1, at_bottom);
  else
    at_bottom();
  sink = depth;
}

// The offsets from the module's base of the start of every function its
// exception directory lists.
inline std::vector<std::uint32_t> function_begins(HMODULE module) {
  std::vector<std::uint32_t> begins;
  const auto* base = reinterpret_cast<const std::uint8_t*>(module);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
      base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXCEPTION];
  const auto* functions = reinterpret_cast<const RUNTIME_FUNCTION*>(base + directory.VirtualAddress);
  for (std::size_t i = 0; i < directory.Size / sizeof(RUNTIME_FUNCTION); ++i)
    begins.push_back(functions[i].BeginAddress);
  return begins;
}

}  // namespace diagnostics_test
