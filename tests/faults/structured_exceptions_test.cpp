// Processor faults arriving as EStructuredException and
// EStackOverflowException on threads that translate them, and the dump a
// fault writes.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/errors/tuning.h>

#include "support/errors_test_support.h"
#include "support/error_code.h"
#include "support/scoped_setting.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace {

using errors_test::TextOf;

// Every fault happens in a function of its own, called through a volatile
// pointer: the compiler can then neither prove the call free of exceptions
// (and drop the catch around it) nor fold the fault away.
__attribute__((noinline)) int ReadAt(std::uintptr_t address) { return *reinterpret_cast<volatile int*>(address); }
__attribute__((noinline)) int WriteAt(std::uintptr_t address) {
  *reinterpret_cast<volatile int*>(address) = 1;
  return 0;
}
__attribute__((noinline)) int DivideBy(std::uintptr_t divisor) {
  volatile int dividend = 7;
  return dividend / static_cast<int>(divisor);
}
using FaultFunction = int (*)(std::uintptr_t);
FaultFunction volatile read_at = &ReadAt, write_at = &WriteAt, divide_by = &DivideBy;

// Recursions until the stack runs out: with a small frame, and with one
// above a page, whose stack the runtime's stack-check helper probes before
// the function's body runs.
__attribute__((noinline)) int RecurseSmall(int depth) {
  int (*volatile next)(int) = &RecurseSmall;
  return next(depth + 1) + depth;
}
__attribute__((noinline)) int RecurseLarge(int depth) {
  volatile char frame[8192];
  frame[depth % 8192] = static_cast<char>(depth);
  int (*volatile next)(int) = &RecurseLarge;
  return next(depth + 1) + frame[0];
}

// Test set-up for an overflow under Wine, which otherwise raises it with no
// stack left to handle it: a guard page 128 KB above the bottom of the
// calling thread's stack, from which Wine grows the stack page by page and
// raises the overflow with the thread's guarantee still free. Call again
// after ResetStack() before the next overflow. Does nothing on Windows.
void ArmStackGuardPage() {
  if (!GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) return;
  MEMORY_BASIC_INFORMATION info;
  VirtualQuery(&info, &info, sizeof info);
  DWORD old;
  VirtualProtect(static_cast<char*>(info.AllocationBase) + 128 * 1024, 4096, PAGE_READWRITE | PAGE_GUARD, &old);
}

// Overflows the calling thread's stack; the caught exception's "Text" and
// "Code".
std::string OverflowStack(int (*recurse)(int) = &RecurseSmall) {
  ArmStackGuardPage();
  try {
    recurse(0);
  } catch (const EStackOverflowException& e) {
    return TextOf(e, "Text") + " " + std::to_string(static_cast<int>(e.get_value("Code")));
  }
  return "no exception";
}

// Crash dumps off while it lives: a dump costs seconds under Wine.
struct NoDumps : qz_test::ScopedSetting<bool> {
  NoDumps() : ScopedSetting(SaveMiniDumpOnStructuredException, false) {}
};

// A fault's values but "Address", which goes between the head and the tail.
struct FaultCase {
  const char* name;
  FaultFunction volatile* function;
  std::uintptr_t argument;
  const char* head;
  const char* tail;
};
const FaultCase kFaults[] = {
    {"read", &read_at, 0x10, "Text=Access Violation (read from 0x10);Code=-1073741819;",
     "Parameter0=0;Parameter1=16;"},
    {"write", &write_at, 0x20, "Text=Access Violation (write to 0x20);Code=-1073741819;",
     "Parameter0=1;Parameter1=32;"},
    {"divide", &divide_by, 0, "Text=Divide by Zero;Code=-1073741676;", ""},
};

// Runs every fault of the table on the calling thread; what went wrong, or "".
std::string CatchEveryFault() {
  std::string failures;
  for (const FaultCase& fault : kFaults) {
    try {
      (*fault.function)(fault.argument);
      failures += std::string(fault.name) + ": no exception\n";
    } catch (const EStructuredException& e) {
      // "Address" is where the faulting instruction lies: inside the
      // function that faulted.
      const auto start = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(*fault.function));
      const auto address = static_cast<std::uint32_t>(static_cast<int>(e.get_value("Address")));
      const std::string expected =
          fault.head + ("Address=" + std::to_string(static_cast<int>(address)) + ";") + fault.tail;
      if (address < start || address > start + 64 || qz_test::ValuesOf(e) != expected)
        failures += std::string(fault.name) + ": " + qz_test::ValuesOf(e) + " != " + expected + "\n";
    }
  }
  return failures;
}

TEST(FaultTranslation, FaultsArriveWithTheirExactValues) {
  NoDumps no_dumps;
  temporary_redirect_structured_exceptions translate;
  EXPECT_EQ(CatchEveryFault(), "");
}

// A fault in a function that has a try block and a destructor of its own.
__attribute__((noinline)) void FaultInsideCleanups(int& destroyed, int& caught_inside) {
  struct Counter {
    int& count;
    ~Counter() { ++count; }
  } counter{destroyed};
  try {
    volatile std::uintptr_t nowhere = 0x10;
    *reinterpret_cast<volatile int*>(nowhere) = 5;
  } catch (const EStructuredException&) {
    ++caught_inside;
    throw;
  }
}

TEST(FaultTranslation, UnwindsThroughTheFaultingFunctionsOwnTryBlockAndDestructors) {
  NoDumps no_dumps;
  temporary_redirect_structured_exceptions translate;
  void (*volatile call)(int&, int&) = &FaultInsideCleanups;
  int destroyed = 0;
  int caught_inside = 0;
  EXPECT_THROW(call(destroyed, caught_inside), EStructuredException);
  EXPECT_EQ(caught_inside, 1);
  EXPECT_EQ(destroyed, 1);
}

// Recurses without end. Each frame is a return address, two pushes and 40
// bytes: a page boundary falls on the call's store or on the second push,
// which lies in the prologue.
extern "C" int qz_test_push_recurse();
asm(R"(
    .text
    .globl qz_test_push_recurse
    .def qz_test_push_recurse; .scl 2; .type 32; .endef
    .seh_proc qz_test_push_recurse
qz_test_push_recurse:
    push %rbx
    .seh_pushreg %rbx
    push %rsi
    .seh_pushreg %rsi
    sub $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
    call qz_test_push_recurse
    nop
    add $40, %rsp
    pop %rsi
    pop %rbx
    ret
    .seh_endproc
)");

// Overflows from a stack moved down by `shift` bytes; the fault's "Address".
__attribute__((noinline)) std::uint32_t OverflowShiftedBy(int shift) {
  volatile char* pad = static_cast<volatile char*>(alloca(shift + 8));
  pad[0] = 0;
  int (*volatile recurse)() = &qz_test_push_recurse;
  ArmStackGuardPage();
  try {
    recurse();
  } catch (const EStackOverflowException& e) {
    return static_cast<std::uint32_t>(static_cast<int>(e.get_value("Address")));
  }
  return 0;
}

TEST(StackOverflow, AnOverflowAtAPushInAPrologueUnwindsAsWell) {
  NoDumps no_dumps;
  qz_test::WorkerThread worker([] {
    redirect_structured_exceptions translate;
    const auto push =
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&qz_test_push_recurse)) + 1;
    bool at_push = false;
    for (int shift = 0; shift < 64; shift += 16) {  // every place of a 64-byte frame
      const std::uint32_t address = OverflowShiftedBy(shift);
      EXPECT_NE(address, 0u);
      at_push = at_push || address == push;
      EStackOverflowException::ResetStack();
    }
    EXPECT_TRUE(at_push) << "no overflow met the push";
  });
  ASSERT_TRUE(worker.Join(60000));
  EXPECT_EQ(worker.error(), "");
}

TEST(FaultTranslation, SeveralThreadsFaultingAndOverflowingAtOnceAreAllTranslated) {
  NoDumps no_dumps;
  const int kThreads = 4;
  const int kRounds = 100;
  std::atomic<int> translated{0};
  std::atomic<int> overflows{0};
  HANDLE start = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::vector<std::unique_ptr<qz_test::WorkerThread>> workers;
  for (int t = 0; t < kThreads; ++t)
    workers.push_back(std::make_unique<qz_test::WorkerThread>([&] {
      redirect_structured_exceptions translate;
      WaitForSingleObject(start, 10000);
      for (int round = 0; round < kRounds; ++round) {
        try {
          (round % 2 ? read_at : divide_by)(0);
        } catch (const EStructuredException&) {
          ++translated;
        }
      }
      // Overflows in a row, whatever the frame size, with ResetStack between.
      for (int round = 0; round < 4; ++round) {
        if (OverflowStack(round % 2 ? &RecurseLarge : &RecurseSmall) == "Stack Overflow -1073741571") ++overflows;
        if (!EStackOverflowException::ResetStack()) --overflows;
      }
    }));
  SetEvent(start);
  for (auto& worker : workers) {
    ASSERT_TRUE(worker->Join(120000)) << "a faulting thread hangs";
    EXPECT_EQ(worker->error(), "");
  }
  CloseHandle(start);
  EXPECT_EQ(translated, kThreads * kRounds);
  EXPECT_EQ(overflows, kThreads * 4);
}

// Deletes the stack-overflow dumps in "Dumps" (an interrupted overflow's
// dump has no exception left to cancel it).
void DeleteOverflowDumps() {
  WIN32_FIND_DATAA found;
  HANDLE search = FindFirstFileA("Dumps\\*_C00000FD_*.dmp", &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do DeleteFileA((std::string("Dumps\\") + found.cFileName).c_str());
  while (FindNextFileA(search, &found));
  FindClose(search);
}

// An interruption that ends the faulting thread's wait for the overflow
// helper leaves the hand-off as it found it: the next overflow waits for its
// own helper and arrives with its values. The helper of the first overflow
// writes a dump, so it is still at work when the interruption arrives.
TEST(StackOverflow, AnOverflowAfterAnInterruptedOneArrivesWhole) {
  errors_test::DumpDirectory dumps;
  std::string first, second;
  qz_test::WorkerThread worker([&] {
    redirect_structured_exceptions translate;
    // Delivered at the thread's next alertable wait: the wait for the helper.
    QueueUserAPC(&qz_test::ThrowInterrupt, GetCurrentThread(), 0);
    try {
      first = OverflowStack();
    } catch (const EThreadInterrupt&) {
      first = "interrupted";
    }
    EStackOverflowException::ResetStack();
    NoDumps no_dumps;
    second = OverflowStack();
    EStackOverflowException::ResetStack();
  });
  ASSERT_TRUE(worker.Join(120000)) << "an overflowing thread hangs";
  DeleteOverflowDumps();
  EXPECT_EQ(worker.error(), "");
  EXPECT_EQ(first, "interrupted");
  EXPECT_EQ(second, "Stack Overflow -1073741571");
}

// A load through its first argument whose faulting instruction is two bytes
// long, so that a handler can step over it.
extern "C" int qz_test_probe(std::uintptr_t address);
asm(R"(
    .text
    .globl qz_test_probe
qz_test_probe:
    movl (%rcx), %eax
    ret
)");

const int kSteppedOver = 0xBAD;

// Registered last: sees the faults that every other handler passed on, and
// steps over the probe's load.
LONG CALLBACK StepOverProbe(EXCEPTION_POINTERS* pointers) {
  CONTEXT& context = *pointers->ContextRecord;
  if (pointers->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION ||
      context.Rip != reinterpret_cast<DWORD64>(&qz_test_probe))
    return EXCEPTION_CONTINUE_SEARCH;
  context.Rip += 2;
  context.Rax = kSteppedOver;
  return EXCEPTION_CONTINUE_EXECUTION;
}

TEST(FaultTranslation, OnlyWhileAGuardLivesAreAThreadsFaultsTranslated) {
  NoDumps no_dumps;
  void* last = AddVectoredExceptionHandler(0, &StepOverProbe);
  int (*volatile probe)(std::uintptr_t) = &qz_test_probe;
  qz_test::WorkerThread worker([&] {
    EXPECT_EQ(probe(0x10), kSteppedOver);  // left to the next handler
    {
      temporary_redirect_structured_exceptions translate;
      EXPECT_THROW(probe(0x10), EStructuredException);
    }
    EXPECT_EQ(probe(0x10), kSteppedOver);
    redirect_structured_exceptions translate;
    { temporary_redirect_structured_exceptions inner; }
    EXPECT_THROW(probe(0x10), EStructuredException);  // the lasting one is back
  });
  EXPECT_TRUE(worker.Join(30000));
  RemoveVectoredExceptionHandler(last);
  EXPECT_EQ(worker.error(), "");
}

// Open handles of the process, counted by asking the system about every
// possible handle value (GetProcessHandleCount answers 0 under Wine).
int OpenHandles() {
  int count = 0;
  DWORD flags;
  for (std::uintptr_t value = 4; value < 0x10000; value += 4)
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) ++count;
  return count;
}

// Bytes of private memory the process has committed.
size_t CommittedPrivateBytes() {
  size_t total = 0;
  MEMORY_BASIC_INFORMATION info;
  for (char* at = nullptr; VirtualQuery(at, &info, sizeof info) == sizeof info; at += info.RegionSize) {
    if (info.State == MEM_COMMIT && info.Type == MEM_PRIVATE) total += info.RegionSize;
    if (at + info.RegionSize < at) break;
  }
  return total;
}

TEST(FaultTranslation, ThousandFaultsLeaveNoHandleMemoryOrSymbolSessionBehind) {
  NoDumps no_dumps;
  const bool symbols_loaded_before = GetModuleHandleW(L"dbghelp.dll") != nullptr;
  int handles[2] = {};
  size_t memory[2] = {};
  qz_test::WorkerThread worker([&] {
    redirect_structured_exceptions translate;
    for (int pass = 0; pass < 2; ++pass) {  // the first lets first-use allocations settle
      if (pass == 1) handles[0] = OpenHandles(), memory[0] = CommittedPrivateBytes();
      for (int i = 0; i < (pass ? 1000 : 100); ++i) {
        try {
          read_at(0x10);
        } catch (const EStructuredException&) {
        }
      }
      for (int i = 0; i < (pass ? 20 : 2); ++i) {
        OverflowStack();
        EStackOverflowException::ResetStack();
      }
    }
    handles[1] = OpenHandles(), memory[1] = CommittedPrivateBytes();
  });
  ASSERT_TRUE(worker.Join(120000));
  EXPECT_EQ(worker.error(), "");
  EXPECT_EQ(handles[1], handles[0]);
  EXPECT_LT(memory[1], memory[0] + 512 * 1024) << memory[0] << " -> " << memory[1];
  EXPECT_TRUE(symbols_loaded_before || !GetModuleHandleW(L"dbghelp.dll")) << "a symbol session is left";
}

TEST(FaultDumps, AnAccessViolationWritesADumpNamedAfterModuleCodeAndTime) {
  errors_test::DumpDirectory directory;
  ASSERT_TRUE(SaveMiniDumpOnStructuredException);  // the default
  temporary_redirect_structured_exceptions translate;
  try {
    read_at(0x10);
    FAIL() << "no exception";
  } catch (EStructuredException& e) {
    const std::string path = TextOf(e, "MiniDump");
    EXPECT_TRUE(errors_test::NamedAsADumpOf(path, "qz_faults_tests_C0000005")) << path;
    EXPECT_TRUE(errors_test::IsDump(path));
    e.cancel_minidump();
    EXPECT_FALSE(errors_test::FileExists(path));
    EXPECT_EQ(TextOf(e, "MiniDump"), "<none>");
  }
}

}  // namespace
