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
//      the system's own capture of 20 return addresses.
//
// Figures are the best of several rounds, which filters out rounds the
// machine spent on something else.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "bench_support.h"

#include <windows.h>

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
  naming = best_ns(rounds, count, [&](int n) {
    for (int i = 0; i < n; ++i)
      for (unsigned int f = 0; f < walked; ++f) SymGetFullNameFromAddress(frames[f]);
  });
  if (engine) SymCleanup();
  row("RtlCaptureStackBackTrace (floor)", captured);
  row("StackWalk", walk);
  std::printf("  %-52s %12u of %u\n", "frames captured, walked", captured_frames, walked);
  row("SymGetFullNameFromAddress of every frame walked", naming);
}

}  // namespace

int main() {
  std::printf("Diagnostics benchmark\n");
  throw_cost();
  fault_cost();
  stack_cost();
  std::printf("\n");
  goals.print();
  return 0;
}
