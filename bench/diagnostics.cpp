// What the library's diagnostics cost, measured in one run. Run it with
// `scripts/bench diagnostics`.
//
//   1. A throw and catch of an EGeneric with the default settings, against
//      the same with the vectored handler switched off (UseVEH false): every
//      throw of the process passes the handler, so it must cost next to
//      nothing when no diagnostics are asked for.
//   2. A processor fault translated into a caught EStructuredException
//      (dumps off), next to a throw and catch of an EStructuredException.
//   3. One StackWalk of 20 frames and the naming of those frames, next to
//      the system's own capture of 20 return addresses; the walk on the
//      system's unwinder against the debug-help walker, and naming from the
//      module reader's cache against the debug-help library.
//   4. A throw with diagnostics (ExtendDebugInformationFromException), with
//      the engine held and not held, next to a plain throw.
//   5. The module reader's first read of qz.dll (run first, on a cold
//      cache), next to a start of the debug-help library, and the private
//      memory it keeps.
//
// Figures are the best of several rounds, which filters out rounds the
// machine spent on something else.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "bench_support.h"

#include <windows.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

using bench::best_ns;

void row(const char* what, double ns) { std::printf("  %-52s %12.1f ns\n", what, ns); }

bench::goals goals;

__attribute__((noinline)) void throw_generic() { throw EGeneric({"Text", "bench"}); }
void (*volatile thrower)() = &throw_generic;

void throw_and_catch(int n) {
  for (int i = 0; i < n; ++i) {
    try {
      thrower();
    } catch (const EGeneric&) {
    }
  }
}

void throw_cost() {
  const int rounds = 7;
  const int count = 2000;
  std::printf("\nThrow and catch of an EGeneric (best of %d rounds of %d):\n", rounds, count);
  // Alternate the two settings round by round, so that both see the same
  // machine.
  double with_handler = 1e300;
  double without = 1e300;
  for (int r = 0; r < rounds; ++r) {
    UseVEH = false;
    without = std::min(without, best_ns(1, count, throw_and_catch));
    UseVEH = true;
    with_handler = std::min(with_handler, best_ns(1, count, throw_and_catch));
  }
  row("UseVEH false (floor)", without);
  row("default settings", with_handler);
  std::printf("  %-52s %12.2f x\n", "default vs UseVEH false", with_handler / without);
  goals.within("throw_with_handler", with_handler / without, 1.10);
}

__attribute__((noinline)) int read_at(std::uintptr_t address) {
  return *reinterpret_cast<volatile int*>(address);
}
int (*volatile reader)(std::uintptr_t) = &read_at;
__attribute__((noinline)) void throw_structured() { throw EStructuredException(); }
void (*volatile structured_thrower)() = &throw_structured;

void fault_cost() {
  const int rounds = 5;
  const int count = 500;
  std::printf("\nA fault caught as EStructuredException, dumps off (best of %d rounds of %d):\n",
              rounds, count);
  const bool saved = SaveMiniDumpOnStructuredException;
  SaveMiniDumpOnStructuredException = false;
  temporary_redirect_structured_exceptions translate;
  const double thrown = best_ns(rounds, count, [](int n) {
    for (int i = 0; i < n; ++i) {
      try {
        structured_thrower();
      } catch (const EStructuredException&) {
      }
    }
  });
  const double faulted = best_ns(rounds, count, [](int n) {
    for (int i = 0; i < n; ++i) {
      try {
        reader(0x10);
      } catch (const EStructuredException&) {
      }
    }
  });
  SaveMiniDumpOnStructuredException = saved;
  row("throw of an EStructuredException (floor)", thrown);
  row("access violation translated and caught", faulted);
  std::printf("  %-52s %12.2f x\n", "fault vs throw", faulted / thrown);
}

volatile int sink;

// Recurses `depth` frames, then runs `at_bottom`. The store after the call
// keeps each frame on the stack (no tail call).
__attribute__((noinline)) void descend(int depth, const std::function<void()>& at_bottom) {
  void (*volatile next)(int, const std::function<void()>&) = &descend;
  if (depth > 0)
    next(depth - 1, at_bottom);
  else
    at_bottom();
  sink = depth;
}

void stack_cost() {
  const int rounds = 5;
  const int count = 50;
  const unsigned int kFrames = 20;
  std::printf("\nA stack of %u frames (best of %d rounds of %d):\n", kFrames, rounds, count);
  unsigned long long frames[kFrames] = {};
  unsigned int walked = 0;
  unsigned int captured_frames = 0;
  const bool engine = SymInitialize();  // held, as a caller naming many stacks would
  double captured = 0;
  double walk = 0;
  double naming = 0;
  descend(kFrames, [&] {
    captured = best_ns(rounds, count, [&](int n) {
      void* raw[kFrames];
      for (int i = 0; i < n; ++i)
        captured_frames = RtlCaptureStackBackTrace(0, kFrames, raw, nullptr);
    });
    walk = best_ns(rounds, count, [&](int n) {
      for (int i = 0; i < n; ++i)
        walked = StackWalk(frames, nullptr, GetCurrentThread(), 0, kFrames);
    });
  });
  double library_walk = 0;
  descend(kFrames, [&] {
    const symbol_sources saved = SymbolSources;
    SymbolSources = symbol_sources::debug_help_only;
    library_walk = best_ns(rounds, 5, [&](int n) {
      for (int i = 0; i < n; ++i) StackWalk(frames, nullptr, GetCurrentThread(), 0, kFrames);
    });
    SymbolSources = saved;
  });
  auto name_all = [&](symbol_sources sources) {
    const symbol_sources saved = SymbolSources;
    SymbolSources = sources;
    const double ns = best_ns(rounds, count, [&](int n) {
      for (int i = 0; i < n; ++i)
        for (unsigned int f = 0; f < walked; ++f) SymGetFullNameFromAddress(frames[f]);
    });
    SymbolSources = saved;
    return ns;
  };
  naming = name_all(SymbolSources);
  const double library_naming = name_all(symbol_sources::debug_help_only);
  const double reader_naming = name_all(symbol_sources::own_reader_first);
  if (engine) SymCleanup();
  row("RtlCaptureStackBackTrace (floor)", captured);
  row("StackWalk (system unwinder)", walk);
  row("StackWalk, debug-help walker alone", library_walk);
  std::printf("  %-52s %12u of %u\n", "frames captured, walked", captured_frames, walked);
  row("naming every frame walked, default order", naming);
  row("naming every frame, debug-help library alone", library_naming);
  row("naming every frame, module reader (cached)", reader_naming);
  goals.within("stack_walk_vs_debug_help_walker", walk / library_walk, 0.5);
  goals.within("reader_naming_vs_debug_help", reader_naming / library_naming, 1.0);
}

__attribute__((noinline)) void throw_extended() { throw EGeneric(true); }
void (*volatile extended_thrower)() = &throw_extended;

void throw_with_diagnostics_cost() {
  std::printf("\nA throw with diagnostics (ExtendDebugInformationFromException):\n");
  const double plain = best_ns(5, 200, throw_and_catch);
  ExtendDebugInformationFromException = true;
  auto extended = [](int n) {
    for (int i = 0; i < n; ++i) {
      try {
        extended_thrower();
      } catch (const EGeneric&) {
      }
    }
  };
  const double not_held = best_ns(2, 1, extended);
  const bool engine = SymInitialize();
  extended(1);  // the modules' symbols loaded once
  const double held = best_ns(5, 20, extended);
  if (engine) SymCleanup();
  ExtendDebugInformationFromException = false;
  row("plain throw and catch (floor)", plain);
  row("with diagnostics, engine not held", not_held);
  row("with diagnostics, engine held", held);
  std::printf("  %-52s %12.3f ms\n", "engine held", held / 1e6);
  goals.within("throw_with_diagnostics_held_vs_2ms", held / 2e6, 1.0);
}

// Bytes in use in the C runtime's heap, where operator new allocates.
std::size_t heap_bytes() {
  HANDLE heap = reinterpret_cast<HANDLE>(_get_heap_handle());
  std::size_t total = 0;
  if (!HeapLock(heap)) return 0;
  PROCESS_HEAP_ENTRY entry = {};
  while (HeapWalk(heap, &entry))
    if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) total += entry.cbData;
  HeapUnlock(heap);
  return total;
}

// Every function start of a module, from its exception directory.
std::vector<unsigned long long> function_starts(HMODULE module) {
  std::vector<unsigned long long> starts;
  const auto* base = reinterpret_cast<const std::uint8_t*>(module);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
      base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXCEPTION];
  const auto* functions = reinterpret_cast<const RUNTIME_FUNCTION*>(base + directory.VirtualAddress);
  for (std::size_t i = 0; i < directory.Size / sizeof(RUNTIME_FUNCTION); ++i)
    starts.push_back(reinterpret_cast<std::uintptr_t>(base) + functions[i].BeginAddress);
  return starts;
}

// Before anything else names an address: the reader's cache is cold.
void first_read_cost() {
  std::printf("\nFirst read of qz.dll by the module reader (cold, once):\n");
  const auto library = reinterpret_cast<unsigned long long>(
      reinterpret_cast<void*>(static_cast<void (*)()>(&SymCleanup)));
  const __int64 start_engine = bench::now();
  const bool engine = SymInitialize();
  const double engine_ms = static_cast<double>(bench::now() - start_engine) / bench::ticks_per_ns() / 1e6;
  const symbol_sources saved = SymbolSources;
  SymbolSources = symbol_sources::own_reader_first;
  const std::size_t before = heap_bytes();
  const __int64 start = bench::now();
  const std::string name = SymGetFullNameFromAddress(library + 4);
  const double first_ms = static_cast<double>(bench::now() - start) / bench::ticks_per_ns() / 1e6;
  const std::size_t kept = heap_bytes() - before;
  // Then every unit of it: the most the reader keeps for one module.
  const std::vector<unsigned long long> starts = function_starts(GetModuleHandleW(L"qz.dll"));
  const __int64 start_all = bench::now();
  for (unsigned long long address : starts) SymGetFullNameFromAddress(address);
  const double all_ms = static_cast<double>(bench::now() - start_all) / bench::ticks_per_ns() / 1e6;
  const std::size_t kept_all = heap_bytes() - before;
  SymbolSources = saved;
  if (engine) SymCleanup();
  std::printf("  %-52s %12.1f ms\n", "SymInitialize, debug-help library (floor)", engine_ms);
  std::printf("  %-52s %12.1f ms\n", "first name from qz.dll's own DWARF", first_ms);
  std::printf("  %-52s %12.1f KiB\n", "heap memory kept by that read", kept / 1024.0);
  std::printf("  %-52s %12.1f ms\n", ("naming all " + std::to_string(starts.size()) +
                                        " functions (every unit read)").c_str(), all_ms);
  std::printf("  %-52s %12.1f KiB\n", "heap memory kept then", kept_all / 1024.0);
  std::printf("  %-52s %s\n", "named", name.c_str());
}

}  // namespace

int main() {
  std::printf("Diagnostics benchmark\n");
  throw_cost();
  fault_cost();
  first_read_cost();
  stack_cost();
  throw_with_diagnostics_cost();
  std::printf("\n");
  goals.print();
  return 0;
}
