// Processor faults arriving as EStructuredException and
// EStackOverflowException on threads that translate them.
#include <qz/errors/exceptions.h>
#include <qz/errors/structured_exceptions.h>
#include <qz/errors/tuning.h>

#include "errors/fault_test_support.h"
#include "support/error_code.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <atomic>
#include <memory>
#include <vector>

namespace {

using fault_test::FaultFunction;
using fault_test::NoDumps;

struct FaultCase {
  const char* name;
  FaultFunction volatile* function;
  std::uintptr_t argument;
  const char* text;
  int code;
  std::vector<int> parameters;
};

using fault_test::divide_by;
using fault_test::read_at;
using fault_test::write_at;
const int kAccessViolation = -1073741819;  // 0xC0000005

const FaultCase kFaults[] = {
    {"read", &read_at, 0x10, "Access Violation (read from 0x10)", kAccessViolation, {0, 0x10}},
    {"write", &write_at, 0x20, "Access Violation (write to 0x20)", kAccessViolation, {1, 0x20}},
    {"divide", &divide_by, 0, "Divide by Zero", -1073741676, {}},
};

std::string Expected(const FaultCase& fault, int address) {
  std::string all = std::string("Text=") + fault.text + ";Code=" + std::to_string(fault.code) +
                    ";Address=" + std::to_string(address) + ";";
  for (size_t i = 0; i < fault.parameters.size(); ++i)
    all += "Parameter" + std::to_string(i) + "=" + std::to_string(fault.parameters[i]) + ";";
  return all;
}

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
      const auto start = reinterpret_cast<std::uintptr_t>(*fault.function);
      const auto address = static_cast<std::uint32_t>(static_cast<int>(e.get_value("Address")));
      if (address < static_cast<std::uint32_t>(start) ||
          address > static_cast<std::uint32_t>(start) + 64)
        failures += std::string(fault.name) + ": address outside the faulting function\n";
      const std::string values = qz_test::ValuesOf(e);
      const std::string expected = Expected(fault, static_cast<int>(address));
      if (values != expected)
        failures += std::string(fault.name) + ": " + values + " != " + expected + "\n";
    }
  }
  return failures;
}

TEST(FaultTranslation, FaultsArriveWithTheirExactValuesOnTheMainThreadAndOnOthers) {
  NoDumps no_dumps;
  {
    temporary_redirect_structured_exceptions translate;
    EXPECT_EQ(CatchEveryFault(), "");
    // Translation does not depend on the handler's work at throws.
    qz_test::ScopedSetting<bool> handler_off(UseVEH, false);
    EXPECT_EQ(CatchEveryFault(), "");
  }
  std::string on_thread;
  qz_test::WorkerThread worker([&] {
    redirect_structured_exceptions translate;
    on_thread = CatchEveryFault();
  });
  ASSERT_TRUE(worker.Join(30000));
  EXPECT_EQ(worker.error(), "");
  EXPECT_EQ(on_thread, "");
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

TEST(StackOverflow, OverflowsInARowAreCaughtWithResetStackBetweenWhateverTheFrameSize) {
  NoDumps no_dumps;
  qz_test::WorkerThread worker([] {
    redirect_structured_exceptions translate;
    for (auto recurse : {&fault_test::RecurseSmall, &fault_test::RecurseLarge})
      for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(fault_test::OverflowStack(recurse), "Stack Overflow -1073741571");
        EXPECT_TRUE(EStackOverflowException::ResetStack());
      }
  });
  ASSERT_TRUE(worker.Join(60000));
  EXPECT_EQ(worker.error(), "");
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
  fault_test::ArmStackGuardPage();
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

TEST(FaultTranslation, SeveralThreadsFaultingAtOnceAreAllTranslated) {
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
      for (int round = 0; round < 2; ++round) {
        if (fault_test::OverflowStack() == "Stack Overflow -1073741571") ++overflows;
        EStackOverflowException::ResetStack();
      }
    }));
  SetEvent(start);
  for (auto& worker : workers) {
    ASSERT_TRUE(worker->Join(120000)) << "a faulting thread hangs";
    EXPECT_EQ(worker->error(), "");
  }
  CloseHandle(start);
  EXPECT_EQ(translated, kThreads * kRounds);
  EXPECT_EQ(overflows, kThreads * 2);
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
  for (char* at = nullptr; VirtualQuery(at, &info, sizeof info) == sizeof info;
       at += info.RegionSize) {
    if (info.State == MEM_COMMIT && info.Type == MEM_PRIVATE) total += info.RegionSize;
    if (at + info.RegionSize < at) break;
  }
  return total;
}

void FaultAndOverflow(int faults, int overflows) {
  for (int i = 0; i < faults; ++i) {
    try {
      read_at(0x10);
    } catch (const EStructuredException&) {
    }
  }
  for (int i = 0; i < overflows; ++i) {
    fault_test::OverflowStack();
    EStackOverflowException::ResetStack();
  }
}

TEST(FaultTranslation, ThousandFaultsLeaveNoHandleMemoryOrSymbolSessionBehind) {
  NoDumps no_dumps;
  const bool symbols_loaded_before = GetModuleHandleW(L"dbghelp.dll") != nullptr;
  int handles_before = 0;
  int handles_after = 0;
  size_t memory_before = 0;
  size_t memory_after = 0;
  qz_test::WorkerThread worker([&] {
    redirect_structured_exceptions translate;
    FaultAndOverflow(100, 2);  // first-use allocations settle
    handles_before = OpenHandles();
    memory_before = CommittedPrivateBytes();
    FaultAndOverflow(1000, 20);
    handles_after = OpenHandles();
    memory_after = CommittedPrivateBytes();
  });
  ASSERT_TRUE(worker.Join(120000));
  EXPECT_EQ(worker.error(), "");
  EXPECT_EQ(handles_after, handles_before);
  EXPECT_LT(memory_after, memory_before + 512 * 1024) << memory_before << " -> " << memory_after;
  if (!symbols_loaded_before) {
    EXPECT_EQ(GetModuleHandleW(L"dbghelp.dll"), nullptr);
  }
}

}  // namespace
